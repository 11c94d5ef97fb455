#include "utility/platform/posix/mail/MailPortal.h"

#include "tests/support/posix/Environment.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/posix/Script.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/desktop/SendMail.h"
#include "utility/platform/Mail.h"
#include "utility/platform/posix/programs/Start.h"

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/string_file.hpp>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

using boost::filesystem::path;
using support::Environment;
using support::TemporaryFolder;
using utility::platform::posix::HasMailPortal;
using utility::platform::posix::PortalWaits;
using utility::platform::posix::SendByPortal;

namespace
{

/// A program that runs until it is no longer needed.
class Running
{
public:
    explicit Running(std::vector<std::string> arguments)
    {
        std::vector<char*> pointers;
        for (std::string& each : arguments)
            pointers.push_back(each.data());
        pointers.push_back(nullptr);
        // The bus's own words on its limits are nobody's business.
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        EXPECT_EQ(::posix_spawn(&m_process, pointers[0], &actions, nullptr, pointers.data(), environ), 0);
        ::posix_spawn_file_actions_destroy(&actions);
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running()
    {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }

private:
    pid_t m_process = 0;
};

bool Comes(const std::function<bool()>& what)
{
    for (int tries = 0; tries < 2400; ++tries, std::this_thread::sleep_for(std::chrono::milliseconds(25)))
        if (what())
            return true;
    return false;
}

/// A socket without a name, and the address of one that has.
std::pair<int, sockaddr_un> SocketFor(const path& name)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    EXPECT_LT(name.size(), sizeof(address.sun_path));
    std::strncpy(address.sun_path, name.c_str(), sizeof(address.sun_path) - 1);
    return {::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0), address};
}

/// The file of a socket is there before anyone may connect.
bool TakesConnections(const path& name)
{
    const auto [asking, address] = SocketFor(name);
    const bool takes = ::connect(asking, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    ::close(asking);
    return takes;
}

/// A session bus of its own, and a portal on it that does as it is told.
class MailPortalTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        const std::string daemon = utility::platform::posix::InstalledProgram("dbus-daemon");
        if (daemon.empty())
            GTEST_SKIP() << "The machine lacks dbus-daemon";
        const path configuration = m_folder.File("bus.conf", R"(<busconfig><type>session</type><listen>unix:path=)" +
                                                                 m_bus.string() + R"(</listen><policy context="default">
<allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy></busconfig>)");
        m_daemon = std::make_unique<Running>(
            std::vector<std::string>{daemon, "--nofork", "--nopidfile", "--config-file=" + configuration.string()});
        ASSERT_TRUE(Comes([this] { return TakesConnections(m_bus); }));
        m_path.Set("");
        boost::filesystem::create_directory(m_temporary);
        boost::filesystem::save_string_file(m_part, "N10 G01\n");
    }

    void Portal(const std::string& behaviour)
    {
        m_portal.reset();
        boost::filesystem::remove(m_record);
        m_portal =
            std::make_unique<Running>(std::vector<std::string>{UTILITY_MAIL_PORTAL, behaviour, m_record.string()});
        ASSERT_TRUE(Comes([this] { return boost::filesystem::exists(m_record); }));
    }

    std::optional<std::uint32_t> Send(const utility::platform::posix::MailTexts& texts = {}) const
    {
        return SendByPortal(texts, m_part, m_waits);
    }

    std::string Record() const { return TemporaryFolder::BytesOf(m_record); }

    const TemporaryFolder m_folder;
    const path m_bus = m_folder / "bus";
    const path m_record = m_folder / "record";
    const path m_temporary = m_folder / "temporary";
    const path m_part = m_temporary / "Part, '7' \xC3\xBC.nc";
    const PortalWaits m_waits{std::chrono::milliseconds(15000), std::chrono::milliseconds(15000)};
    const PortalWaits m_short{std::chrono::milliseconds(1000), std::chrono::milliseconds(300)};
    const Environment m_address{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + m_bus.string()};
    const Environment m_tmpdir{"TMPDIR", m_temporary.string()};
    const Environment m_display{"DISPLAY", {}};
    const Environment m_wayland{"WAYLAND_DISPLAY", {}};
    const Environment m_path{"PATH", std::getenv("PATH") != nullptr ? std::getenv("PATH") : ""};
    std::unique_ptr<Running> m_daemon;
    std::unique_ptr<Running> m_portal;
};

/// The answers of the bus's own library take as long as asked for, and not longer.
double SecondsOf(const std::function<void()>& work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}

TEST_F(MailPortalTest, GetsAllTextsAndADescriptorOfTheAttachment)
{
    Portal("0");
    EXPECT_TRUE(HasMailPortal(m_waits));
    const std::ptrdiff_t before = support::OpenDescriptors();
    EXPECT_EQ(Send({"-o'neil, \"shop\"@example.com", "Part \"7\", \xC3\xBC", "First, 'this'"}), 0u);
    EXPECT_EQ(support::OpenDescriptors(), before);
    EXPECT_EQ(Record(), "window=\naddress=-o'neil, \"shop\"@example.com\nsubject=Part \"7\", \xC3\xBC\n"
                        "body=First, 'this'\nattachment_fds=" +
                            m_part.string() + " by its path\n");
}

TEST_F(MailPortalTest, EmptyTextsAreLeftOut)
{
    Portal("0");
    EXPECT_EQ(Send(), 0u);
    EXPECT_EQ(Record(), "window=\nattachment_fds=" + m_part.string() + " by its path\n");
}

TEST_F(MailPortalTest, ResponseIsHowTheMailEnded)
{
    Portal("1");
    EXPECT_EQ(Send(), utility::platform::mailCancelled);
    Portal("2");
    EXPECT_EQ(Send(), utility::platform::mailFailed);
    Portal("3");
    EXPECT_EQ(Send(), utility::platform::mailFailed);
}

TEST_F(MailPortalTest, MailThatIsRefusedHasNotBegun)
{
    Portal("refuses");
    EXPECT_EQ(Send(), std::nullopt);
    EXPECT_NE(Record(), "");
}

TEST_F(MailPortalTest, PortalThatDoesNotSeeTheAttachmentIsNotAsked)
{
    for (const char* const behaviour : {"blind", "misled"})
    {
        Portal(behaviour);
        if (Record() == "sees")
            GTEST_SKIP() << "The machine lacks namespaces";
        EXPECT_TRUE(HasMailPortal(m_waits));
        EXPECT_EQ(Send(), std::nullopt) << behaviour;
        EXPECT_EQ(Record(), "") << behaviour;
    }
}

TEST_F(MailPortalTest, AttachmentThatIsNoFileIsNotHandedOver)
{
    Portal("0");
    EXPECT_EQ(SendByPortal({}, m_folder.Path(), m_waits), std::nullopt);
    EXPECT_EQ(SendByPortal({}, m_folder / "missing", m_waits), std::nullopt);
    EXPECT_EQ(Record(), "");
}

TEST_F(MailPortalTest, NoAnswerToAMailIsAFailureInTime)
{
    Portal("silent");
    // On a busy machine the bus itself may not answer in the shorter time, and then nothing was asked.
    std::optional<std::uint32_t> sent;
    for (const int answer : {1000, 4000})
    {
        const PortalWaits waits{std::chrono::milliseconds(answer), m_short.user};
        if (!sent)
        {
            EXPECT_LT(SecondsOf([&] { sent = SendByPortal({}, m_part, waits); }), 12.0);
        }
    }
    EXPECT_EQ(sent, utility::platform::mailFailed);
}

TEST_F(MailPortalTest, UserWhoDoesNotAnswerIsNotAskedForEver)
{
    Portal("patient");
    EXPECT_LT(
        SecondsOf(
            [&] {
                EXPECT_EQ(SendByPortal({}, m_part, {m_waits.answer, m_short.user}), utility::platform::mailFailed);
            }),
        12.0);
    EXPECT_NE(Record().find("\nclosed\n"), std::string::npos) << Record();
}

TEST_F(MailPortalTest, PortalThatDiesIsAFailureAtOnce)
{
    Portal("dies");
    const PortalWaits waits{std::chrono::milliseconds(15000), std::chrono::milliseconds(60000)};
    EXPECT_LT(SecondsOf([&] { EXPECT_EQ(SendByPortal({}, m_part, waits), utility::platform::mailFailed); }), 12.0);
}

TEST_F(MailPortalTest, PortalThatSaysNothingIsNone)
{
    Portal("mute");
    EXPECT_LT(SecondsOf([&] { EXPECT_FALSE(HasMailPortal(m_short)); }), 12.0);
}

TEST_F(MailPortalTest, BusWithoutAPortalIsToldByInit)
{
    EXPECT_FALSE(HasMailPortal(m_short));
    EXPECT_EQ(Send(), std::nullopt);
    CSendMail mail;
    EXPECT_THROW(mail.Init(), std::runtime_error);
}

TEST_F(MailPortalTest, BusThatDiesIsAFailureAndThePortalIsNone)
{
    Portal("0");
    m_daemon.reset();
    EXPECT_FALSE(HasMailPortal(m_short));
    EXPECT_EQ(Send(), std::nullopt);
}

TEST_F(MailPortalTest, BusThatNeverAnswersIsNotWaitedForForEver)
{
    m_daemon.reset();
    boost::filesystem::remove(m_bus);
    const auto [listening, address] = SocketFor(m_bus);
    ASSERT_EQ(::bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    ASSERT_EQ(::listen(listening, 8), 0);
    EXPECT_LT(SecondsOf([&] { EXPECT_FALSE(HasMailPortal(m_short)); }), 12.0);
    ::close(listening);
}

TEST_F(MailPortalTest, MissingLibraryForTheBusIsNoPortal)
{
    Portal("0");
    const support::FailingCall failing("dlopen", ENOENT);
    EXPECT_FALSE(HasMailPortal(m_short));
    EXPECT_TRUE(failing.HasFailed());
}

TEST_F(MailPortalTest, MailOfTheClassGoesToThePortalWithACopyThatStays)
{
    Portal("0");
    CSendMail mail;
    EXPECT_TRUE(mail.Init());
    EXPECT_FALSE(mail.Send(L"a@example.com", L"Part", m_part, L"Other, name.nc", L"Note", false));
    const std::string record = Record();
    const std::string begin = "window=\naddress=a@example.com\nsubject=Part\nbody=Note\nattachment_fds=";
    ASSERT_EQ(record.substr(0, begin.size()), begin);
    const path copy = record.substr(begin.size(), record.find(" by its path") - begin.size());
    EXPECT_EQ(copy.filename(), "Other, name.nc");
    EXPECT_EQ(copy.parent_path().parent_path(), m_temporary);
    EXPECT_EQ(TemporaryFolder::BytesOf(copy), "N10 G01\n");
}

TEST_F(MailPortalTest, CancelledMailLeavesNoCopyAndIsNothingToTell)
{
    Portal("1");
    CSendMail mail;
    EXPECT_TRUE(mail.Init());
    EXPECT_FALSE(mail.Send(L"", L"", m_part, L"Part.nc", L"", false));
    EXPECT_EQ(std::distance(boost::filesystem::directory_iterator(m_temporary), {}), 1);
}

TEST_F(MailPortalTest, MailThatThePortalRefusesGoesToThunderbird)
{
    Portal("refuses");
    support::MakeScript(m_folder / "thunderbird", "echo \"$1\" >'" + (m_folder / "got").string() + "'");
    m_path.Set(m_folder.Path().string());
    m_display.Set(":99");
    CSendMail mail;
    EXPECT_TRUE(mail.Init());
    EXPECT_FALSE(mail.Send(L"", L"", m_part, L"Part.nc", L"", false));
    EXPECT_EQ(TemporaryFolder::BytesOf(m_folder / "got"), "-compose\n");
}

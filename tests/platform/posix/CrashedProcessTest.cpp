#include "utility/platform/CrashedProcess.h"

#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

using support::TemporaryFolder;
using utility::platform::CrashedProcess;

TEST(PosixCrashedProcessTest, ReportIsUtf8WithReplacementsForWhatIsNone)
{
    const TemporaryFolder folder;
    *CrashedProcess().OpenReport(folder / "report.xml")
        << L"\u00DF\u4E2D\U0001F600" << std::wstring(1, L'\0') << static_cast<wchar_t>(0xDCFF)
        << static_cast<wchar_t>(0x110000) << L'|';
    EXPECT_EQ(TemporaryFolder::BytesOf(folder / "report.xml"),
              std::string("\xC3\x9F\xE4\xB8\xAD\xF0\x9F\x98\x80\0\xEF\xBF\xBD\xEF\xBF\xBD|", 17));
}

TEST(PosixCrashedProcessTest, ReportIsWholeHoweverLongItsPieces)
{
    const TemporaryFolder folder;
    std::string expected;
    {
        const auto report = CrashedProcess().OpenReport(folder / "report.xml");
        for (std::size_t length = 1; length < 5000; length += 97)
        {
            *report << std::wstring(length, L'\u00DF') << L'\n';
            for (std::size_t i = 0; i < length; ++i)
                expected += "\xC3\x9F";
            expected += '\n';
        }
    }
    EXPECT_EQ(TemporaryFolder::BytesOf(folder / "report.xml"), expected);
}

TEST(PosixCrashedProcessTest, SystemSaysNothingOfExceptionsNorOfItsVersion)
{
    std::wstring text(128, L'\0');
    EXPECT_FALSE(CrashedProcess().DescribeException(0xC0000005, text));
    EXPECT_NE(utility::platform::LastError(), ERROR_INSUFFICIENT_BUFFER);
    utility::platform::SystemVersion version;
    std::int32_t result = 0;
    EXPECT_FALSE(CrashedProcess().QueryVersion(version, result));
}

TEST(PosixCrashedProcessTest, ReportHarmsNothingElseThatHasItsName)
{
    const TemporaryFolder folder;
    const boost::filesystem::path other = folder.File("other", "precious");
    boost::filesystem::create_symlink(other, folder / "link.xml");
    boost::filesystem::create_hard_link(other, folder / "name.xml");
    ASSERT_EQ(::mkfifo((folder / "pipe.xml").c_str(), 0600), 0);
    for (const char* const each : {"link.xml", "name.xml", "pipe.xml"})
        EXPECT_EQ(CrashedProcess().OpenReport(folder / each), nullptr) << each;
    EXPECT_EQ(TemporaryFolder::BytesOf(other), "precious");
    EXPECT_EQ(CrashedProcess().OpenReport("/dev/null"), nullptr);
    EXPECT_EQ(CrashedProcess().OpenReport(folder.Path()), nullptr);
}

TEST(PosixCrashedProcessTest, ReportHarmsNothingThatGetsItsNameMeanwhile)
{
    const TemporaryFolder folder;
    const boost::filesystem::path other = folder.File("other", "precious");
    boost::filesystem::create_symlink(other, folder / "report.xml");
    const support::FailingCall nothingThere("lstat", ENOENT, support::FailingCall::always);
    EXPECT_EQ(CrashedProcess().OpenReport(folder / "report.xml"), nullptr);
    EXPECT_EQ(TemporaryFolder::BytesOf(other), "precious");
}

TEST(PosixCrashedProcessTest, ReportMakesNothingWhereALinkLeads)
{
    const TemporaryFolder folder;
    boost::filesystem::create_symlink(folder / "nothing", folder / "report.xml");
    EXPECT_EQ(CrashedProcess().OpenReport(folder / "report.xml"), nullptr);
    EXPECT_FALSE(boost::filesystem::exists(folder / "nothing"));
}

TEST(PosixCrashedProcessTest, ReportIsNotTheFileOfAnotherUser)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "The user lacks the right to give files away";
    const TemporaryFolder folder;
    const boost::filesystem::path others = folder.File("report.xml", "precious");
    ASSERT_EQ(::chown(others.c_str(), 65534, 65534), 0);
    EXPECT_EQ(CrashedProcess().OpenReport(others), nullptr);
    EXPECT_EQ(TemporaryFolder::BytesOf(others), "precious");
}

TEST(PosixCrashedProcessTest, FilesAreForTheUserAlone)
{
    const TemporaryFolder folder;
    const boost::filesystem::path earlier = folder.File("earlier.xml", "");
    ASSERT_EQ(::chmod(earlier.c_str(), 0666), 0);
    const mode_t mask = ::umask(0);
    EXPECT_NE(CrashedProcess().OpenReport(earlier), nullptr);
    EXPECT_NE(CrashedProcess().OpenReport(folder / "report.xml"), nullptr);
    EXPECT_NE(CrashedProcess().MakeLog(folder / "report.log.txt"), nullptr);
    ::umask(mask);
    for (const char* const each : {"earlier.xml", "report.xml", "report.log.txt"})
    {
        struct stat status;
        ASSERT_EQ(::stat((folder / each).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600U) << each;
    }
}

TEST(PosixCrashedProcessTest, LogIsAFileOfItsOwnOrNone)
{
    const TemporaryFolder folder;
    const boost::filesystem::path other = folder.File("other", "precious");
    const boost::filesystem::path log = folder / "report.log.txt";
    boost::filesystem::create_symlink(other, log);
    {
        const support::FailingCall kept("unlink", EPERM);
        EXPECT_EQ(CrashedProcess().MakeLog(log), nullptr);
        EXPECT_TRUE(kept.HasFailed());
    }
    *CrashedProcess().MakeLog(log) << "text" << '!';
    EXPECT_EQ(TemporaryFolder::BytesOf(log), "text!");
    EXPECT_EQ(TemporaryFolder::BytesOf(other), "precious");
}

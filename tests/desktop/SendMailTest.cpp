#include "utility/desktop/SendMail.h"

#include "tests/support/RecordingMails.h"
#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/Mail.h"
#include "utility/platform/Modules.h"
#include "utility/text/ResourceString.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

using boost::filesystem::path;
using utility::platform::Mail;

namespace
{

class SendMailTest : public ::testing::Test
{
protected:
    /// Why Init throws; empty if it does not.
    static std::string ReasonOf(CSendMail& mail)
    {
        try
        {
            EXPECT_TRUE(mail.Init());
        }
        catch (const std::runtime_error& failure)
        {
            return failure.what();
        }
        return {};
    }

    /// What Send says where the mail program ends with this status.
    bool IsWorthTelling(std::uint32_t status)
    {
        m_mails.status = status;
        CSendMail mail;
        mail.Init();
        return mail.Send(L"a@example.com", L"Part", L"part.nc", L"Part.nc", L"Note", false);
    }

    std::size_t FilesInFolder() const
    {
        return static_cast<std::size_t>(std::distance(boost::filesystem::directory_iterator(m_folder.Path()), {}));
    }

    const support::TemporaryFolder m_folder;
    support::RecordingMails m_mails;
    const support::Substitute<utility::platform::MailService> m_scope{utility::platform::MailsSlot(), m_mails};
};

/// What a writer was called with.
std::vector<std::pair<std::int64_t, path>> written;

bool WritePart(std::int64_t context, const path& file)
{
    written.emplace_back(context, file);
    std::ofstream(file.string(), std::ios::binary) << "N10 G01\n";
    return true;
}

bool WriteHalf(std::int64_t context, const path& file)
{
    WritePart(context, file);
    return false;
}

bool WriteNothing(std::int64_t, const path&) { return false; }

bool WriteAndThrow(std::int64_t context, const path& file)
{
    WritePart(context, file);
    throw std::length_error("writer");
}

}

TEST_F(SendMailTest, LibraryIsLoadedByTheConstructorAndReleasedByTheDestructor)
{
    {
        const CSendMail mail;
        EXPECT_EQ(m_mails.record.loaded, 1);
        EXPECT_EQ(m_mails.record.prepared, 0);
        EXPECT_EQ(m_mails.record.released, 0);
    }
    EXPECT_EQ(m_mails.record.released, 1);
}

TEST_F(SendMailTest, MissingLibraryIsToldByInitAlone)
{
    m_mails.isThere = false;
    CSendMail mail;
    EXPECT_EQ(ReasonOf(mail), "No mail program was found.");
}

TEST_F(SendMailTest, LibraryThatSendsNothingIsToldByInit)
{
    m_mails.sends = false;
    CSendMail mail;
    EXPECT_EQ(ReasonOf(mail), "The mail program cannot be used to send messages.");
}

TEST_F(SendMailTest, TextsOfInitHaveTheFrameworksNumbers)
{
    EXPECT_EQ(utility::framework::FrameworkString(61840), L"No mail program was found.");
    EXPECT_EQ(utility::framework::FrameworkString(61841), L"The mail program cannot be used to send messages.");
}

TEST_F(SendMailTest, TextOfInitIsInTheNarrowEncodingOfTheSystem)
{
    static const std::wstring german = L"Es wurde kein Programm f\u00FCr E-Mails gefunden.";
    struct German : support::TableModules
    {
        std::wstring_view StringOf(HINSTANCE, UINT id) override { return id == 61840 ? german : std::wstring_view(); }
    } modules;
    m_mails.isThere = false;
    CSendMail mail;
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    EXPECT_EQ(ReasonOf(mail), from_utf(german, 0));
}

TEST_F(SendMailTest, MailHasAllThatWasGiven)
{
    CSendMail mail;
    EXPECT_TRUE(mail.Init());
    mail.Send(L"a@example.com", L"Subject", L"folder/part.nc", L"Part 7.nc", L"Note", true);
    ASSERT_EQ(m_mails.record.mails.size(), 1u);
    const Mail& sent = m_mails.record.mails[0];
    EXPECT_EQ(sent.recipient, L"a@example.com");
    EXPECT_EQ(sent.subject, L"Subject");
    EXPECT_EQ(sent.note, L"Note");
    EXPECT_EQ(sent.attachment, path("folder/part.nc"));
    EXPECT_EQ(sent.attachmentName, L"Part 7.nc");
    EXPECT_TRUE(sent.isWithoutDialog);
    mail.Send(L"", L"", L"part.nc", L"", L"", false);
    EXPECT_FALSE(m_mails.record.mails[1].isWithoutDialog);
    EXPECT_EQ(m_mails.record.mails[1].recipient, L"");
}

TEST_F(SendMailTest, NoteWithoutASubjectIsDeliberatelyDropped)
{
    CSendMail mail;
    mail.Init();
    mail.Send(L"a@example.com", L"", L"part.nc", L"Part.nc", L"Note", false);
    EXPECT_EQ(m_mails.record.mails.at(0).subject, L"");
    EXPECT_EQ(m_mails.record.mails.at(0).note, L"");
}

TEST_F(SendMailTest, FailureIsDeliberatelyTrueAndSuccessCancelAndFailedLogonAreFalse)
{
    EXPECT_FALSE(IsWorthTelling(0));
    EXPECT_FALSE(IsWorthTelling(1));
    EXPECT_TRUE(IsWorthTelling(2));
    EXPECT_FALSE(IsWorthTelling(3));
    for (const std::uint32_t status : {4u, 5u, 11u, 12u, 13u, 26u, 0x80000000u, 0xFFFFFFFFu})
        EXPECT_TRUE(IsWorthTelling(status)) << status;
}

TEST_F(SendMailTest, WrittenAttachmentIsSentToWhomTheUserChoosesAndIsGoneAfterwards)
{
    written.clear();
    CSendMail mail;
    mail.Init();
    EXPECT_TRUE(mail.Send(&WritePart, -7, L"Part 7.nc", m_folder.Path()));
    ASSERT_EQ(written.size(), 1u);
    EXPECT_EQ(written[0].first, -7);
    EXPECT_EQ(written[0].second.parent_path(), m_folder.Path());
    EXPECT_TRUE(std::regex_match(written[0].second.filename().string(),
                                 std::regex("MS[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}")));
    ASSERT_EQ(m_mails.record.mails.size(), 1u);
    const Mail& sent = m_mails.record.mails[0];
    EXPECT_EQ(sent.attachment, written[0].second);
    EXPECT_EQ(sent.attachmentName, L"Part 7.nc");
    EXPECT_EQ(sent.recipient + sent.subject + sent.note, L"");
    EXPECT_FALSE(sent.isWithoutDialog);
    EXPECT_EQ(m_mails.record.attached, "N10 G01\n");
    EXPECT_EQ(FilesInFolder(), 0u);
}

TEST_F(SendMailTest, HowAWrittenMailEndedIsDeliberatelyNotTold)
{
    m_mails.status = 2;
    CSendMail mail;
    mail.Init();
    EXPECT_TRUE(mail.Send(&WritePart, 0, L"Part.nc", m_folder.Path()));
    EXPECT_EQ(m_mails.record.mails.size(), 1u);
}

TEST_F(SendMailTest, WriterThatReturnsFalseStartsNoMailAndLeavesNoFile)
{
    CSendMail mail;
    mail.Init();
    EXPECT_FALSE(mail.Send(&WriteHalf, 0, L"Part.nc", m_folder.Path()));
    EXPECT_FALSE(mail.Send(&WriteNothing, 0, L"Part.nc", m_folder.Path()));
    EXPECT_EQ(m_mails.record.mails.size(), 0u);
    EXPECT_EQ(FilesInFolder(), 0u);
}

TEST_F(SendMailTest, WriterThatThrowsLeavesNoFile)
{
    CSendMail mail;
    mail.Init();
    EXPECT_THROW(mail.Send(&WriteAndThrow, 0, L"Part.nc", m_folder.Path()), std::length_error);
    EXPECT_EQ(m_mails.record.mails.size(), 0u);
    EXPECT_EQ(FilesInFolder(), 0u);
}

TEST_F(SendMailTest, MailProgramThatThrowsLeavesNoFile)
{
    m_mails.throws = true;
    CSendMail mail;
    mail.Init();
    EXPECT_THROW(mail.Send(&WritePart, 0, L"Part.nc", m_folder.Path()), std::bad_alloc);
    EXPECT_EQ(m_mails.record.mails.size(), 1u);
    EXPECT_EQ(FilesInFolder(), 0u);
}

TEST_F(SendMailTest, WrittenAttachmentWithoutANameHasNone)
{
    CSendMail mail;
    mail.Init();
    EXPECT_TRUE(mail.Send(&WritePart, 0, nullptr, m_folder.Path()));
    ASSERT_EQ(m_mails.record.mails.size(), 1u);
    EXPECT_EQ(m_mails.record.mails[0].attachmentName, L"");
}

TEST_F(SendMailTest, WriterIsCalledWhereThereIsNoMailProgramAndItsFileIsGone)
{
    m_mails.isThere = false;
    written.clear();
    CSendMail mail;
    EXPECT_TRUE(mail.Send(&WritePart, 0, L"Part.nc", m_folder.Path()));
    EXPECT_EQ(written.size(), 1u);
    EXPECT_EQ(FilesInFolder(), 0u);
}

TEST_F(SendMailTest, MoveTakesTheLibraryOver)
{
    CSendMail first;
    first.Init();
    CSendMail second(std::move(first));
    EXPECT_EQ(m_mails.record.released, 0);
    EXPECT_FALSE(second.Send(L"", L"", L"part.nc", L"", L"", false));
    EXPECT_EQ(m_mails.record.mails.size(), 1u);
    static_assert(!std::is_copy_constructible_v<CSendMail> && !std::is_copy_assignable_v<CSendMail>);
    static_assert(!std::is_polymorphic_v<CSendMail>);
}

TEST_F(SendMailTest, AssignmentReleasesTheLibraryThatWasHeld)
{
    CSendMail first;
    CSendMail second;
    first.Init();
    second = std::move(first);
    EXPECT_EQ(m_mails.record.loaded, 2);
    EXPECT_EQ(m_mails.record.released, 1);
    EXPECT_FALSE(second.Send(L"", L"", L"part.nc", L"", L"", false));
}

TEST_F(SendMailTest, MovedFromObjectSendsNothingAndInitSaysThatThereIsNoMailProgram)
{
    CSendMail first;
    first.Init();
    const CSendMail second(std::move(first));
    EXPECT_TRUE(first.Send(L"", L"", L"part.nc", L"", L"", false));
    EXPECT_EQ(m_mails.record.mails.size(), 0u);
    EXPECT_EQ(ReasonOf(first), "No mail program was found.");
}

TEST(SendMailOfSystem, WithoutInitNothingIsSentAndTheResultIsTrue)
{
    CSendMail mail;
    EXPECT_TRUE(mail.Send(L"a@example.com", L"Part", L"part.nc", L"Part.nc", L"", true));
}

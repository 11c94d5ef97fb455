#include "utility/platform/CrashedProcess.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <sys/stat.h>

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
}

#include "utility/crash/internal/ReportLog.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/crash/ReportLog.h"
#include "utility/logging/LogStream.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

using utility::detail::KeptLog;
using utility::detail::KeptMessage;

namespace
{

struct ReportLogTest : testing::Test
{
    /// The message that was written last.
    KeptMessage& Add(LogSeverity severity, const std::wstring& text)
    {
        log->Add(nullptr, severity, text);
        KeptMessage& message = log->lanes[0].messages[(log->lanes[0].written - 1) % KeptLog::laneLength];
        message.time = 1790000000012345;
        message.thread = 4711;
        return message;
    }

    void Write(const boost::filesystem::path& report) const
    {
        utility::detail::WriteReportLog(
            reinterpret_cast<std::uintptr_t>(log.get()),
            [](std::uint64_t address, void* bytes, std::size_t size)
            {
                std::memcpy(bytes, reinterpret_cast<const void*>(address), size);
                return true;
            },
            report);
    }

    /// Of the file, whatever line ends the system has.
    std::string Lines() const
    {
        const support::TemporaryFolder folder;
        Write(folder / "report.xml");
        std::string lines = folder.BytesOf(folder / "report.log.txt");
        std::erase(lines, '\r');
        return lines;
    }

    std::string LineOf(const std::wstring& text)
    {
        Add(LogSeverityError, text);
        constexpr std::string_view ahead = "2026-09-21 14:13:20.012345 error       0000000000000000 4711 ";
        const std::string lines = Lines();
        EXPECT_TRUE(lines.starts_with(ahead)) << lines;
        return lines.substr(ahead.size());
    }

    const std::unique_ptr<KeptLog> log = std::make_unique<KeptLog>();
};

}

TEST_F(ReportLogTest, IsBesideTheReport)
{
    Add(LogSeverityError, L"text");
    const support::TemporaryFolder folder;
    folder.File("app.v2.log.txt", "an older one");
    Write(folder / "app.v2.xml");
    EXPECT_EQ(folder.BytesOf(folder / "app.v2.log.txt").find("2026-09-21 14:13:20"), 0u);
}

TEST_F(ReportLogTest, IsAFileOfItsOwnWhateverHasItsName)
{
    Add(LogSeverityError, L"text");
    const support::TemporaryFolder folder;
    const boost::filesystem::path other = folder.File("other", "precious");
    create_hard_link(other, folder / "report.log.txt");
    Write(folder / "report.xml");
    EXPECT_EQ(folder.BytesOf(other), "precious");
    EXPECT_NE(folder.BytesOf(folder / "report.log.txt").find("text"), std::string::npos);
    // On Windows it has the rights of its folder.
    using namespace boost::filesystem;
    if (sizeof(wchar_t) == 4)
    {
        EXPECT_EQ(status(folder / "report.log.txt").permissions(), owner_read | owner_write);
    }
}
TEST_F(ReportLogTest, FileThatCannotBeMadeIsNoFailure)
{
    Add(LogSeverityError, L"text");
    const support::TemporaryFolder folder;
    Write(folder / "missing/report.xml");
    EXPECT_TRUE(is_empty(folder.Path()));
}

TEST_F(ReportLogTest, IsOfThisProcessOnceItWasAskedFor)
{
    KeepLogForExceptionReports();
    const char owner = 0;
    LogFile(LogSeverityWarning, &owner) << "of this process";
    const support::TemporaryFolder folder;
    utility::detail::WriteReportLog(folder / "report.xml");
    EXPECT_NE(folder.BytesOf(folder / "report.log.txt").find(" of this process"), std::string::npos);
}

TEST_F(ReportLogTest, MessageIsALine)
{
    Add(LogSeverityWarning, L"Tool 7 is worn\n").owner = 0x7F00DEADBEEF;
    Add(LogSeverityTiming, L"no line feed");
    EXPECT_EQ(Lines(), "2026-09-21 14:13:20.012345 warning     00007f00deadbeef 4711 Tool 7 is worn\n"
                       "2026-09-21 14:13:20.012345 timing      0000000000000000 4711 no line feed\n");
}

TEST_F(ReportLogTest, SeverityHasItsName)
{
    for (const LogSeverity severity :
         {LogSeverityNone, LogSeverityInformation, LogSeverityError, static_cast<LogSeverity>(-3)})
        Add(severity, L"text").time = -1;
    EXPECT_EQ(Lines(), "1969-12-31 23:59:59.999999 none        0000000000000000 4711 text\n"
                       "1969-12-31 23:59:59.999999 information 0000000000000000 4711 text\n"
                       "1969-12-31 23:59:59.999999 error       0000000000000000 4711 text\n"
                       "1969-12-31 23:59:59.999999 -3          0000000000000000 4711 text\n");
}

TEST_F(ReportLogTest, TextIsUtf8) { EXPECT_EQ(LineOf(L"Prüfstück 鉄\n"), "Prüfstück 鉄\n"); }

TEST_F(ReportLogTest, ControlCharactersAreBlanks)
{
    EXPECT_EQ(LineOf(L"\r\nfirst\n\tsecond\x1B[31m\x7F\x9B"
                     L"31m\x2028\x2029"
                     L"end\n\n"),
              "  first  second [31m  31m  end \n");
}

TEST_F(ReportLogTest, WhatIsNoCharacterIsReplaced) { EXPECT_EQ(LineOf(L"a\xD800z"), "a\uFFFDz\n"); }

TEST_F(ReportLogTest, CutTextHasAMark)
{
    const std::string whole(KeptMessage::textCapacity, 'x');
    EXPECT_EQ(LineOf(std::wstring(KeptMessage::textCapacity, L'x') + L"\n"), whole + "…\n");
}

TEST_F(ReportLogTest, LineFeedAtTheCutIsNoEnd)
{
    std::wstring text(KeptMessage::textCapacity, L'x');
    text.back() = L'\n';
    EXPECT_EQ(LineOf(text + L"more\n"), std::string(KeptMessage::textCapacity - 1, 'x') + " …\n");
}

TEST_F(ReportLogTest, DamagedTimeIsSomeTime)
{
    for (const std::int64_t time : {INT64_MIN, INT64_MAX})
        Add(LogSeverityError, L"text").time = time;
    const std::string lines = Lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 2);
}

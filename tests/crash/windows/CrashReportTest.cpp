#include "tests/support/CrashReport.h"
#include "tests/support/Crasher.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <string>
#include <vector>
#include <windows.h>

using support::Crasher;
using support::CrashReport;

TEST(WindowsCrashReport, ProcessEndsByItsExceptionOrByTheOneThatItsReportBreaksOffAt)
{
    Crasher crasher("Crasher");
    const std::uint32_t outcome = crasher.Run("divide").outcome;
    const CrashReport report(crasher.Report());
    EXPECT_EQ(report.code, 0xC0000094U);
    EXPECT_EQ(outcome, report.isWhole ? 0xC0000094U : 0xC0000005U);
}

TEST(WindowsCrashReport, DescriptionOfTheSystemsIsDeliberatelyFollowedByZeroCharacters)
{
    Crasher crasher("Crasher");
    EXPECT_TRUE(crasher.Run("outside").isCrash);
    const CrashReport report(crasher.Report());
    EXPECT_EQ(report.code, 0xC0000017U);
    EXPECT_EQ(report.description.size(), 128U);
    EXPECT_TRUE(report.description.ends_with('\0'));
}

TEST(WindowsCrashReport, IsDeliberatelyNotThereForWhatIsNoException)
{
    Crasher crasher("Crasher");
    for (const char* const cause : {"abort", "assert", "throw"})
    {
        EXPECT_EQ(crasher.Run(cause).outcome, 3U) << cause;
        EXPECT_FALSE(boost::filesystem::exists(crasher.ReportFolder())) << cause;
    }
}

TEST(WindowsCrashReport, TellsOfADestructorOfAStaticObject)
{
    Crasher crasher("Crasher");
    EXPECT_TRUE(crasher.Run("destructor").isCrash);
    const CrashReport report(crasher.Report());
    ASSERT_GE(report.frames.size(), 4U);
    EXPECT_EQ(report.frames[0].symbol, "crasher::WriteTo");
    EXPECT_EQ(report.frames[3].symbol, "~AtTheEnd");
}

TEST(WindowsCrashReport, HasNoAnswerForAStrippedProgramButItsModules)
{
    Crasher stripped("CrasherStripped");
    EXPECT_TRUE(stripped.Run("null").isCrash);
    const CrashReport report(stripped.Report());
    ASSERT_FALSE(report.modules.empty());
    const CrashReport::Module& program = report.modules[0];
    EXPECT_EQ(program.path, stripped.PathInReport());
    EXPECT_LT(report.address - program.base, program.size);
    for (const CrashReport::Frame& each : report.frames)
        EXPECT_GE(each.address - program.base, program.size) << each.symbol;
}

TEST(WindowsCrashReport, HasTheModules)
{
    Crasher crasher("Crasher");
    crasher.Run("null");
    const CrashReport report(crasher.Report());
    ASSERT_FALSE(report.modules.empty());
    EXPECT_EQ(report.modules[0].path, crasher.PathInReport());
    bool hasLibrary = false;
    for (const CrashReport::Module& each : report.modules)
    {
        EXPECT_NE(each.size, 0U);
        hasLibrary = hasLibrary || each.path.ends_with("Utility.dll");
    }
    EXPECT_TRUE(hasLibrary);
}

// How the process ends.

TEST(WindowsCrashReport, PointerToAPointerDeliberatelyKeepsTheReportFromEndingUntilSomebodyEndsTheProcess)
{
    std::string text;
    const auto hasCome = [&text] { return text.ends_with("<Symbol>place</Symbol>\n"); };
    // A busy machine needs more time to come to that variable.
    for (auto patience = std::chrono::seconds(10); !hasCome() && patience.count() < 100; patience *= 3)
    {
        Crasher crasher("Crasher");
        crasher.SetPatience(patience);
        const Crasher::End end = crasher.Run("unending");
        EXPECT_FALSE(end.isCrash);
        EXPECT_EQ(end.output, "The program did not end.\n");
        text = crasher.Report();
        EXPECT_FALSE(CrashReport(text).isWhole);
    }
    EXPECT_TRUE(hasCome()) << text;
}

TEST(WindowsCrashReport, TwoThreadsThatCrashAtOnceEndTheProcessAndMayCostTheReport)
{
    Crasher crasher("Crasher");
    const std::uint32_t outcome = crasher.Run("threads").outcome;
    EXPECT_TRUE(outcome == 0xC0000005 || outcome == 0xC0000094) << outcome;
    EXPECT_FALSE(crasher.Reports().empty());
}

TEST(WindowsCrashReport, FaultWithinTheHeapEndsTheProcess)
{
    Crasher crasher("Crasher");
    EXPECT_EQ(crasher.Run("malloc").outcome, 0xC0000005U);
}

TEST(WindowsCrashReport, StackThatIsExhaustedEndsTheProcess)
{
    // Wine keeps back two pages, whatever it is asked for, and ends a thread that takes them.
    const bool isWine = ::GetProcAddress(::GetModuleHandleW(L"ntdll"), "wine_get_version") != nullptr;
    Crasher crasher("CrasherOptimised");
    const Crasher::End end = crasher.Run("exhausted");
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.isCrash, !isWine);
    EXPECT_EQ(crasher.Reports().size(), isWine ? 0U : 1U);
}

TEST(WindowsCrashReport, FaultThatNoTranslatorOfItsThreadTakesEndsTheProcess)
{
    for (const char* const cause : {"beside-translator", "behind-translator"})
    {
        Crasher crasher("CrasherStatic");
        EXPECT_EQ(crasher.Run(cause).outcome, 0xC0000005U) << cause;
        EXPECT_EQ(CrashReport(crasher.Report()).code, 0xC0000005U) << cause;
    }
}

// The filter that was there earlier.

TEST(WindowsCrashReport, FilterThatWasThereEarlierIsCalledAndItsWordIsTheLast)
{
    Crasher crasher("CrasherStatic");
    EXPECT_EQ(crasher.Run("earlier").outcome, 7U);
    EXPECT_FALSE(boost::filesystem::exists(crasher.ReportFolder())) << "it wants no report";
}

TEST(WindowsCrashReport, FilterThatWasThereEarlierIsCalledAheadOfTheReport)
{
    Crasher crasher("CrasherStatic");
    EXPECT_EQ(crasher.Run("earlier-ends").outcome, 7U);
    EXPECT_FALSE(boost::filesystem::exists(crasher.ReportFolder()));
}

TEST(WindowsCrashReport, FilterThatWasThereEarlierIsCalledAheadOfWhatIsThrown)
{
    Crasher crasher("CrasherStatic");
    EXPECT_EQ(crasher.Run("earlier-caught").outcome, 7U);
    EXPECT_EQ(CrashReport(crasher.Report()).code, 0xC0000005U);
}

// Where the report goes.

TEST(WindowsCrashReport, FullDiskCostsTheRestOfTheReportAndTheProcessEndsByItsCode)
{
    Crasher crasher("Crasher");
    EXPECT_EQ(crasher.Run("full-disk").outcome, 0xC0000005U);
    const std::string text = crasher.Report();
    EXPECT_EQ(CrashReport(text).code, 0xC0000005U);
    EXPECT_FALSE(CrashReport(text).isWhole);
    EXPECT_LE(text.size(), 4096U);
    EXPECT_GT(text.size(), 1024U);
}

TEST(WindowsCrashReport, FolderThatCannotBeMadeCostsTheReportAlone)
{
    Crasher crasher("Crasher");
    const boost::filesystem::path program = crasher.ReportFolder().parent_path();
    boost::filesystem::create_directories(program.parent_path());
    std::ofstream(program.string()) << "in the way";
    EXPECT_EQ(crasher.Run("divide").outcome, 0xC0000094U);
    EXPECT_EQ(support::TemporaryFolder::BytesOf(program), "in the way");
}

TEST(WindowsCrashReport, ReportOfTheSameSecondThatIsBeingWrittenIsLeftAlone)
{
    Crasher crasher("Crasher");
    const boost::filesystem::path folder = crasher.ReportFolder();
    boost::filesystem::create_directories(folder);
    const std::time_t now = std::time(nullptr);
    std::vector<HANDLE> others;
    for (std::time_t second = now; second < now + 300; ++second)
    {
        char name[32] = "";
        std::strftime(name, sizeof(name), "%Y%m%d-%H%M%S.xml", std::gmtime(&second));
        others.push_back(::CreateFileW((folder / name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                       FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_NE(others.back(), INVALID_HANDLE_VALUE);
    }
    EXPECT_EQ(crasher.Run("deep").outcome, 0xC0000005U);
    for (HANDLE other : others)
        ::CloseHandle(other);
    const auto reports = crasher.Reports();
    EXPECT_EQ(reports.size(), others.size());
    for (const boost::filesystem::path& report : reports)
        EXPECT_EQ(boost::filesystem::file_size(report), 0U) << report;
}

// What the names are.

TEST(WindowsCrashReport, FilesMayHaveAnyName)
{
    Crasher crasher("Crasher");
    EXPECT_TRUE(crasher.Run("hostile").isCrash);
    const std::string text = crasher.Report();
    EXPECT_NE(text.find("R&amp;D &quot;new&quot;\\"), std::string::npos) << text;
    const CrashReport report(text);
    ASSERT_FALSE(report.frames.empty());
    EXPECT_TRUE(report.frames[0].path.value_or("").ends_with("<1>.cpp")) << text;
    EXPECT_EQ(report.frames[0].line, 9U);
}

TEST(WindowsCrashReport, CharacterThatTheEncodingOfTheLocaleLacksIsAQuestionMark)
{
    Crasher crasher("Crasher");
    crasher.UseCopy(L"R\u00E4der \u9244\u92FC.exe");
    EXPECT_TRUE(crasher.Run("null").isCrash);
    const CrashReport report(crasher.Report());
    EXPECT_TRUE(report.path.value_or("").ends_with("R\xE4"
                                                   "der ??.exe"))
        << report.path.value_or("none");
    EXPECT_FALSE(report.frames.empty());
}

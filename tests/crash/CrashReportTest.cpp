#include "tests/support/CrashReport.h"
#include "tests/support/Crasher.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

// Programs crash, and their reports are held against what is known of the programs.

using support::ComplaintAbout;
using support::Crasher;
using support::CrashReport;

namespace
{

/// A function's name without its parameters.
std::string NameOf(const CrashReport::Frame& frame)
{
    const std::string& symbol = frame.symbol;
    const std::string place = "(anonymous namespace)::";
    std::string name = symbol;
    for (std::size_t at = 0; (at = name.find(place)) != std::string::npos;)
        name.erase(at, place.size());
    name = name.substr(0, name.find('('));
    const std::size_t scope = name.rfind("::");
    return scope == std::string::npos ? name : name.substr(scope + 2);
}

std::vector<std::string> NamesOf(const CrashReport& report)
{
    std::vector<std::string> names;
    for (const CrashReport::Frame& each : report.frames)
        names.push_back(NameOf(each));
    return names;
}

const CrashReport::Frame* FrameOf(const CrashReport& report, const std::string& name)
{
    const auto found = std::find_if(report.frames.begin(), report.frames.end(),
                                    [&](const CrashReport::Frame& each) { return NameOf(each) == name; });
    return found == report.frames.end() ? nullptr : &*found;
}

/// The value of a variable, or what is wrong with it.
std::string ValueOf(const std::vector<CrashReport::Variable>& variables, const std::string& name)
{
    for (const CrashReport::Variable& each : variables)
    {
        if (each.name == name)
            return each.value.value_or("none");
    }
    return "missing";
}

/// The line of the crashers' source that says this.
std::uint64_t LineThatSays(const std::string& text)
{
    std::ifstream source(UTILITY_CRASHER_SOURCE);
    std::uint64_t number = 1;
    for (std::string line; std::getline(source, line); ++number)
    {
        if (line.find(text) != std::string::npos)
            return number;
    }
    return 0;
}

}

class CrashReportTest : public ::testing::TestWithParam<const char*>
{
protected:
    /// Runs a program that has to crash and leave one report, which is read to the letter.
    CrashReport Crash(Crasher& crasher, const char* cause)
    {
        m_end = crasher.Run(cause);
        EXPECT_TRUE(m_end.isCrash) << m_end.output;
        m_text = crasher.Report();
        EXPECT_FALSE(m_text.empty()) << crasher.Reports().size() << " reports";
        return CrashReport(m_text);
    }

    Crasher::End m_end;
    std::string m_text;
};

INSTANTIATE_TEST_SUITE_P(OfCrashers, CrashReportTest,
                         ::testing::Values("Crasher", "CrasherOptimised", "CrasherStatic", "CrasherStaticOptimised"),
                         [](const auto& each) { return std::string(each.param); });

TEST_P(CrashReportTest, TellsWhatHappenedAndWhere)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "null");
    EXPECT_TRUE(report.isWhole) << m_text;
    EXPECT_EQ(ComplaintAbout(m_text), "");
    EXPECT_EQ(report.code, 0xC0000005);
    EXPECT_EQ(report.description, "ACCESS_VIOLATION");
    ASSERT_FALSE(report.frames.empty());
    EXPECT_EQ(report.address, report.frames[0].address);
    const std::vector<std::string> expected = {"WriteTo", "WriteAValue", "Null", "Crash", "main"};
    EXPECT_EQ(NamesOf(report), expected);
    EXPECT_EQ(report.frames[0].line, LineThatSays("// writes to nowhere"));
    EXPECT_EQ(report.frames[0].path.value_or("").substr(report.frames[0].path.value_or("").find_last_of("/\\") + 1),
              "Causes.cpp");
    EXPECT_FALSE(report.frames.back().path.has_value()) << "nothing is known of main";
}

TEST_P(CrashReportTest, NamesTheProgramWithoutItsExtensionAsTheFaultingModule)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "library");
    EXPECT_EQ(report.path, crasher.PathInReport());
    EXPECT_EQ(report.faultingModule, crasher.PathInReport().substr(0, report.faultingModule.size()));
    EXPECT_EQ(report.faultingModule, boost::filesystem::path(crasher.PathInReport()).replace_extension().string());
}

TEST_P(CrashReportTest, TellsNothingOfASystemThatIsSound)
{
    Crasher crasher(GetParam());
    EXPECT_FALSE(Crash(crasher, "null").hasSystemVersion);
}

TEST_P(CrashReportTest, TellsWhatTheParametersAndVariablesAre)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "null");
    const CrashReport::Frame* const frame = FrameOf(report, "WriteTo");
    ASSERT_NE(frame, nullptr) << m_text;
    EXPECT_EQ(ValueOf(frame->parameters, "place"), "0000000000000000");
    EXPECT_EQ(ValueOf(frame->parameters, "count"), "4000000000");
    EXPECT_EQ(ValueOf(frame->parameters, "size"), "-5");
    EXPECT_EQ(ValueOf(frame->parameters, "mask"), "9");
    EXPECT_EQ(ValueOf(frame->parameters, "length"), "0.75");
    EXPECT_EQ(ValueOf(frame->parameters, "isRound"), "1");
    EXPECT_EQ(ValueOf(frame->parameters, "colour"), "7");
    EXPECT_EQ(ValueOf(frame->parameters, "copy"), "0000000000001234");
    EXPECT_EQ(ValueOf(frame->locals, "doubled"), "-42");
    EXPECT_EQ(frame->parameters.size(), 11U);
    // Of a pointer four bytes are told.
    EXPECT_EQ(ValueOf(frame->parameters, "part").size(), 16U);
    EXPECT_EQ(ValueOf(frame->parameters, "callback").size(), 16U);
}

TEST_P(CrashReportTest, TellsOfADivision)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "divide");
    EXPECT_EQ(report.code, 0xC0000094);
    EXPECT_EQ(report.description, "INT_DIVIDE_BY_ZERO");
    EXPECT_EQ(report.frames.at(0).line, LineThatSays("// divides"));
    EXPECT_EQ(ValueOf(report.frames.at(0).parameters, "number"), "7");
}

TEST_P(CrashReportTest, TellsOfAFloatingDivision)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "float");
    EXPECT_EQ(report.code, 0xC000008E);
    EXPECT_EQ(report.description, "FLT_DIVIDE_BY_ZERO");
    EXPECT_EQ(NamesOf(report).at(0), "Quotient");
}

TEST_P(CrashReportTest, TellsOfAnIllegalInstruction)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "illegal");
    EXPECT_EQ(report.code, 0xC000001D);
    EXPECT_EQ(report.description, "ILLEGAL_INSTRUCTION");
}

TEST_P(CrashReportTest, TellsOfABreakpointThatNobodyWaitsFor)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "trap");
    EXPECT_EQ(report.code, 0x80000003);
    EXPECT_EQ(report.description, "BREAKPOINT");
}

TEST_P(CrashReportTest, HasEachOfThreeHundredCalls)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "deep");
    EXPECT_TRUE(report.isWhole);
    const std::vector<std::string> names = NamesOf(report);
    EXPECT_EQ(std::count(names.begin(), names.end(), "Nested"), 297);
    EXPECT_EQ(names.size(), 302U);
    std::uint64_t last = 0;
    for (const CrashReport::Frame& each : report.frames)
    {
        EXPECT_GE(each.frame, last);
        last = each.frame;
    }
}

TEST_P(CrashReportTest, TellsOfAnotherThread)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "thread");
    EXPECT_TRUE(report.isWhole) << m_text;
    const std::vector<std::string> names = NamesOf(report);
    ASSERT_GE(names.size(), 3U);
    EXPECT_EQ(names[0], "WriteTo");
    EXPECT_EQ(names[2], "Null");
    EXPECT_EQ(std::count(names.begin(), names.end(), "main"), 0);
}

TEST_P(CrashReportTest, TellsWhatTheLibraryWasCalledWith)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "library");
    EXPECT_TRUE(report.isWhole) << m_text;
    const auto called = std::find_if(report.frames.begin(), report.frames.end(),
                                     [](const CrashReport::Frame& each)
                                     { return each.symbol.find("Incorporate") != std::string::npos; });
    ASSERT_NE(called, report.frames.end()) << m_text;
    EXPECT_EQ(ValueOf(called->parameters, "count"), "100");
    EXPECT_NE(FrameOf(report, "Library"), nullptr);
}

TEST_P(CrashReportTest, CharacterIsDeliberatelyATextThatRunsOn)
{
    Crasher crasher(GetParam());
    Crash(crasher, "control");
    EXPECT_NE(m_text.find("<BaseType>2</BaseType><Value>\x02"), std::string::npos) << m_text;
    EXPECT_NE(ComplaintAbout(m_text), "") << "a control character";
}

TEST_P(CrashReportTest, IsNotThereForAProgramThatWantsNone)
{
    Crasher crasher(GetParam());
    EXPECT_TRUE(crasher.Run("quiet").isCrash);
    EXPECT_FALSE(boost::filesystem::exists(crasher.ReportFolder().parent_path()));
}

TEST_P(CrashReportTest, IsAnotherFileInALaterSecond)
{
    Crasher crasher(GetParam());
    crasher.Run("null");
    ASSERT_EQ(crasher.Reports().size(), 1U);
    std::this_thread::sleep_for(std::chrono::milliseconds(1100));
    crasher.Run("divide");
    ASSERT_EQ(crasher.Reports().size(), 2U);
    EXPECT_EQ(CrashReport(Crasher::TextOf(crasher.Reports()[0])).code, 0xC0000005);
    EXPECT_EQ(CrashReport(Crasher::TextOf(crasher.Reports()[1])).code, 0xC0000094);
}

TEST(CrashReportNames, FileIsNamedAfterTheTimeInUtc)
{
    Crasher crasher("Crasher");
    const auto before = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    crasher.Run("null");
    const std::time_t after = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    ASSERT_EQ(crasher.Reports().size(), 1U);
    std::vector<std::string> possible;
    for (std::time_t time = std::chrono::system_clock::to_time_t(before); time <= after; ++time)
    {
        char name[32];
        std::strftime(name, sizeof(name), "%Y%m%d-%H%M%S.xml", std::gmtime(&time));
        possible.push_back(name);
    }
    const std::string name = crasher.Reports()[0].filename().string();
    EXPECT_NE(std::find(possible.begin(), possible.end(), name), possible.end()) << name;
}

TEST(CrashReportNames, AmpersandInThePathOfTheProgramIsDeliberatelyRawInTheProcessSectionAlone)
{
    Crasher crasher("Crasher");
    crasher.UseCopy("R&D'" + crasher.Program().extension().string());
    crasher.Run("null");
    const std::string text = crasher.Report();
    ASSERT_NE(text, "");
    EXPECT_NE(text.find("R&D'" + crasher.Program().extension().string() + "</Path>\n"), std::string::npos);
    EXPECT_NE(text.find("R&amp;D&apos;</FaultingModule>"), std::string::npos) << text;
    EXPECT_NE(ComplaintAbout(text), "") << "a raw ampersand";
    EXPECT_TRUE(CrashReport(text).isWhole);
}

#include "tests/support/CrashReport.h"
#include "tests/support/Crasher.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

// Programs crash, and their reports are held against what is known of the programs. On Windows a variable that is in a
// register is deliberately read where none is: the report breaks off there. Code that is optimised has such ones, and
// so have the frames of the system behind those of the program.

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

/// How the function is called that is behind those of the program's that something is known of.
constexpr const char* outermost = Crasher::readsRegistersAsAddresses ? "BaseThreadInitThunk" : "main";

/// Whether a report has an end, or breaks off at the value of a variable that is in a register.
bool EndsAsItShould(const CrashReport& report)
{
    if (report.isWhole || !Crasher::readsRegistersAsAddresses || report.frames.empty())
        return report.isWhole;
    const CrashReport::Frame& last = report.frames.back();
    const std::vector<CrashReport::Variable>& variables = last.locals.empty() ? last.parameters : last.locals;
    return !variables.empty() && variables.back().registerNumber.has_value() && !variables.back().value.has_value();
}

/// A text with the ends of the elements that were open when it broke off.
std::string Completed(const std::string& text, const CrashReport& report)
{
    if (report.isWhole || report.frames.empty())
        return text;
    const char* const variables = report.frames.back().locals.empty() ? "</Parameters>" : "</LocalVariables>";
    return text + "</Variable>" + variables + "</StackEntry></CallStack></ExceptionReport>";
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
        const CrashReport report(m_text);
        EXPECT_TRUE(EndsAsItShould(report)) << m_text;
        return report;
    }

    /// Whether the first variable of the program's that is in a register is the last of a report.
    static bool BreaksOffAtRegisters()
    {
        return Crasher::readsRegistersAsAddresses && std::string_view(GetParam()).ends_with("Optimised");
    }

    /// A report has these functions and the outermost, or the first of them if it breaks off in code that is optimised.
    void ExpectFunctions(const CrashReport& report, std::vector<std::string> expected)
    {
        expected.push_back(outermost);
        const std::vector<std::string> names = NamesOf(report);
        if (BreaksOffAtRegisters())
            expected.resize(std::clamp<std::size_t>(names.size(), 1, expected.size()));
        EXPECT_EQ(names, expected);
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
    EXPECT_EQ(ComplaintAbout(Completed(m_text, report)), "");
    EXPECT_EQ(report.code, 0xC0000005);
    EXPECT_EQ(report.description, "ACCESS_VIOLATION");
    ASSERT_FALSE(report.frames.empty());
    EXPECT_EQ(report.address, report.frames[0].address);
    ExpectFunctions(report, {"WriteTo", "WriteAValue", "Null", "Crash"});
    EXPECT_EQ(report.frames[0].line, LineThatSays("// writes to nowhere"));
    EXPECT_EQ(report.frames[0].path.value_or("").substr(report.frames[0].path.value_or("").find_last_of("/\\") + 1),
              "Causes.cpp");
    const CrashReport::Frame* const main = FrameOf(report, "main");
    EXPECT_TRUE(main == nullptr || !main->path.has_value()) << "it has no debugging information";
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
    if (BreaksOffAtRegisters())
    {
        EXPECT_EQ(frame->parameters.size(), 1U) << "the first is in a register";
        return;
    }
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
    ExpectFunctions(report, {"Dividend", "Divide", "Crash"});
    EXPECT_EQ(report.frames.at(0).line, LineThatSays("// divides"));
    if (!BreaksOffAtRegisters())
    {
        EXPECT_EQ(ValueOf(report.frames.at(0).parameters, "number"), "7");
    }
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
    std::vector<std::string> expected(297, "Nested");
    expected.insert(expected.begin(), {"WriteTo", "WriteAValue"});
    expected.insert(expected.end(), {"Deep", "Crash"});
    ExpectFunctions(report, expected);
    std::uint64_t last = 0;
    for (const CrashReport::Frame& each : report.frames)
    {
        if (NameOf(each) != "Nested")
            continue;
        EXPECT_GT(each.frame, last);
        last = each.frame;
    }
}

TEST_P(CrashReportTest, TellsOfAnotherThread)
{
    Crasher crasher(GetParam());
    const CrashReport report = Crash(crasher, "thread");
    const std::vector<std::string> names = NamesOf(report);
    ASSERT_GE(names.size(), 1U);
    EXPECT_EQ(names[0], "WriteTo");
    if (!BreaksOffAtRegisters())
    {
        EXPECT_EQ(names.at(2), "Null");
    }
    EXPECT_EQ(std::count(names.begin(), names.end(), "main"), 0);
}

TEST_P(CrashReportTest, TellsWhatTheLibraryWasCalledWith)
{
    const std::string program = GetParam();
    // Of the others' library nothing is known.
    Crasher crasher((program.starts_with("CrasherStatic") ? program + "Whole" : program).c_str());
    const CrashReport report = Crash(crasher, "library");
    if (Crasher::readsRegistersAsAddresses)
    {
        EXPECT_EQ(report.frames.size(), 1U) << "the library is optimised";
        EXPECT_NE(report.frames.at(0).path.value_or("").find("codec"), std::string::npos);
        return;
    }
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
    const CrashReport report = Crash(crasher, "control");
    ExpectFunctions(report, {"Letter", "Control", "Crash"});
    if (BreaksOffAtRegisters())
        return;
    EXPECT_NE(m_text.find("<BaseType>2</BaseType><Value>\x02"), std::string::npos) << m_text;
    EXPECT_NE(ComplaintAbout(Completed(m_text, report)), "") << "a control character";
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
    const CrashReport report(text);
    EXPECT_TRUE(EndsAsItShould(report));
    EXPECT_NE(ComplaintAbout(Completed(text, report)), "") << "a raw ampersand";
}

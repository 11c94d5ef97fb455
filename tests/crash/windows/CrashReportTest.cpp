#include "tests/support/CrashReport.h"
#include "tests/support/Crasher.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <cstdint>

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

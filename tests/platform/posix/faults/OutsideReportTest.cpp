#include "tests/support/TemporaryFolder.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

// A sanitizer's part of a program has limits and descriptors of its own.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

namespace
{

/// A folder with a program that has a report written, and the one that is to write it.
class OutsideReportTest : public testing::Test
{
protected:
    OutsideReportTest()
    {
        support::TemporaryFolder::Copy(UTILITY_REPORTING_PROGRAM, m_folder / "host");
        support::TemporaryFolder::Copy(UTILITY_REPORT_PROGRAM, m_folder / "UtilityCrashReport");
    }

    /// What the program says at its end.
    std::string Run(const std::string& state, const std::string& environment = "HOME=/") const
    {
        std::string said;
        const std::string command =
            "env -i '" + environment + "' '" + (m_folder / "host").string() + "' '" + state + "'";
        std::FILE* const output = ::popen(command.c_str(), "r");
        for (int character = 0; (character = std::fgetc(output)) != EOF;)
            said += static_cast<char>(character);
        EXPECT_EQ(::pclose(output), 0);
        return said;
    }

    /// What the program for reports says that it was given.
    std::string Told() const
    {
        std::ifstream file((m_folder / "told").string());
        std::string line;
        std::getline(file, line);
        return line;
    }

    const support::TemporaryFolder m_folder;
};

const std::string done = "done 1 told of children 0 left 0 descriptors 0\n";
const std::string notDone = "done 0 told of children 0 left 0 descriptors 0\n";
const std::string given = "whole 1 end 1 descriptors 3 code c0000094 at 1234 readable 1 same 1 parent 0 blocked 0 "
                          "default 1 unlimited 1 home ";

}

class OutsideReportStateTest : public OutsideReportTest, public testing::WithParamInterface<const char*>
{
};

TEST_P(OutsideReportStateTest, IsWrittenAndNothingIsLeftBehind)
{
    EXPECT_EQ(Run(GetParam()), done);
    EXPECT_EQ(Told(), given + "1");
}

INSTANTIATE_TEST_SUITE_P(Each, OutsideReportStateTest,
                         testing::Values("", "no descriptor", "closed streams", "little memory", "ignored children",
                                         "blocked signals"));

TEST_F(OutsideReportTest, IsWrittenWithoutAnEnvironmentWhereThatIsBroken)
{
    EXPECT_EQ(Run("broken environment"), done);
    EXPECT_EQ(Told(), given + "0");
}

TEST_F(OutsideReportTest, IsWrittenWhereALimitLeavesNoDescriptorMore) { EXPECT_EQ(Run("low limit"), done); }

TEST_F(OutsideReportTest, IsNotThereWithoutTheProgram)
{
    remove(m_folder / "UtilityCrashReport");
    EXPECT_EQ(Run(""), notDone);
}

TEST_F(OutsideReportTest, IsNotThereWhereTheProgramCannotDoIt)
{
    EXPECT_EQ(Run("", "REPORT_PROGRAM_END=3"), notDone);
    EXPECT_NE(Told(), "");
}

TEST_F(OutsideReportTest, IsNotThereWhereTheProgramWasKilled)
{
    EXPECT_EQ(Run("", "REPORT_PROGRAM_END=killed"), notDone);
}

TEST_F(OutsideReportTest, ThatWasBegunIsNotBegunAnewWhereTheProgramWasKilled)
{
    EXPECT_EQ(Run("", "REPORT_PROGRAM_END=begun and killed"), done);
}

TEST_F(OutsideReportTest, ThatWasWaitedForTooLongIsNotBegunAnew)
{
    EXPECT_EQ(Run("", "REPORT_PROGRAM_END=late"), done);
}

#endif

#include "utility/diagnostics/internal/DebugReport.h"

#include "tests/support/RecordingDebugger.h"

#include <gtest/gtest.h>

// The other system's formatter never fails.
TEST(PosixDebugReportTest, MessageThatCannotBeFormattedIsReplaced)
{
    support::RecordingDebugger debugger;
    // No character, so none of the narrow encoding either.
    utility::ZeloDbgReport(utility::reportError, 0, false, nullptr, 0, nullptr, "%ls", L"\xD800");
    EXPECT_EQ(debugger.narrow, std::vector<std::string>{"ZeloDbgReport: String too long or IO Error"});
}

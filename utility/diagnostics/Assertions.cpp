#include "utility/diagnostics/Assertions.h"

#include "utility/diagnostics/internal/DebugReport.h"
#include "utility/platform/Keys.h"
#include "utility/platform/Processes.h"

bool ZeloAssertFailed(char const* file, int line, int severity, bool& ignored)
{
    auto& processes = utility::platform::Processes();
    const bool showBox = !ignored && severity < 4;
    // A box that finds a request to quit closes at once, without an answer.
    const std::optional<int> quit = processes.TakeQuitMessage();
    const int answer =
        utility::ZeloDbgReport(utility::reportAssertion, severity, showBox, file, line, nullptr, nullptr);
    if (quit)
        processes.PostQuitMessage(*quit);
    if (answer != 0 && !ignored)
        return true;
    if (severity <= 4 && utility::platform::Keys().IsControlKeyDown())
        ignored = true;
    return false;
}

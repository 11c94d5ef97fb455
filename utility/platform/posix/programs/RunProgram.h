#pragma once

#include <chrono>
#include <initializer_list>
#include <optional>
#include <string>

namespace utility::platform::posix
{

/// What a program is given to run with.
struct RunBy
{
    int input = -1;                        ///< its standard input, if it is not the host's
    std::chrono::milliseconds atMost = {}; ///< if it is not 0: after that long it is killed, with all it has started
};

/// What a program writes until its end; the first argument is its name and the last is null. No value if there is no
/// such program, or if it was killed for its time. It gets no descriptor of the host but the standard streams, and
/// nothing of it is left to be waited for, whatever the host does about the end of its children.
std::optional<std::string> OutputOf(const char* const* arguments, const RunBy& by = {});

/// The exit code of a program, 128 more than its number for a signal. What it writes is dropped. No value as above.
std::optional<int> ExitCodeOf(std::initializer_list<const char*> program, const RunBy& by = {});

}

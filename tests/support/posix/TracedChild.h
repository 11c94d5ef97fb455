#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace support
{

/// A call of the system, as the kernel saw it.
struct SystemCall
{
    long number = 0; ///< SYS_write, …
    std::uint64_t arguments[6] = {};
    long result = 0;       ///< that of the call, or an errno value, negative
    std::string path;      ///< of a call that names a file
    std::string otherPath; ///< of one that names two
    std::string bytes;     ///< that were written
};

/// What happens at one of the calls.
struct Intrusion
{
    enum class Kind
    {
        none,
        killAtEntry, ///< the call is not made
        killAtExit,
        failure, ///< the call is not made, and fails
    };

    Kind kind = Kind::none;
    std::size_t at = 0; ///< the first call is 0
    int error = 0;      ///< of a failure
};

/// A copy of this process that does some work, with its calls of the system from the first that opens a file to write
/// on, but for those about memory.
struct TracedChild
{
    TracedChild(const std::function<int()>& work, const Intrusion& intrusion = {});

    std::vector<SystemCall> calls; ///< those that it came to the end of, and one more that it may have been killed in
    int exitCode = -1;             ///< what the work returned; -1 if it was killed
    /// What keeps this process from looking at another's calls; empty if nothing does.
    std::string obstacle;
};

}

#pragma once

// What the owner of a job and its supervisor say to each other: each message is a record of its own on a socket, with
// descriptors beside it.

#include <cstdint>

namespace utility::platform::posix
{

/// The supervisor's program; it lies beside the library.
inline constexpr char supervisorProgram[] = "UtilityJobSupervisor";

/// To the supervisor. The first descriptor is where its answers go.
struct JobRequest
{
    enum Kind : std::uint32_t
    {
        watch, ///< an end is answered when no process is left
        start, ///< whether it was started, and later its end. Descriptors: a file with `texts` texts that end in nulls,
               ///< the current folder, and those of the standard streams that are open
    };

    Kind kind = watch;
    std::uint32_t arguments = 0; ///< how many texts there are: behind that of the program's file the arguments,
    std::uint32_t variables = 0; ///< behind these the environment
    std::uint32_t streams = 0;   ///< a bit for each standard stream that is open
    std::int32_t group = 0;      ///< the process group that the program is to be of; 0 for the supervisor's
};

/// From the supervisor.
struct JobAnswer
{
    enum Kind : std::uint32_t
    {
        started,
        failed,    ///< not started; the code is of errno
        ended,     ///< the code is an exit code
        neverEnds, ///< of a job that was closed before anything was in it: what watches it is not told of any end
    };

    Kind kind = failed;
    std::uint32_t code = 0;
};

/// As many descriptors as go with a request.
inline constexpr int mostDescriptors = 6;

}

// The start and the end of a program that links the library and calls InitialiseUtilityDLL, and of one that includes
// <iostream> and does nothing. The two take turns, and what is measured is the processor's time, of the program and of
// the system for it.
//
//     StartupBench [TURNS]
//
// prints the median microseconds of the library's program and of the other, and the difference.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

/// Microseconds of the processor.
double Run(std::string program)
{
    char* const arguments[] = {program.data(), nullptr};
    pid_t process = 0;
    int status = 0;
    rusage usage = {};
    if (::posix_spawn(&process, arguments[0], nullptr, nullptr, arguments, environ) != 0 ||
        ::wait4(process, &status, 0, &usage) != process || status != 0)
    {
        std::fprintf(stderr, "StartupBench: %s\n", arguments[0]);
        std::exit(1);
    }
    const auto microseconds = [](const timeval& time)
    { return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_usec); };
    return microseconds(usage.ru_utime) + microseconds(usage.ru_stime);
}

double Median(std::vector<double> times)
{
    std::nth_element(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2), times.end());
    return times[times.size() / 2];
}

}

int main(int argumentCount, char** arguments)
{
    const int turns = argumentCount > 1 ? std::atoi(arguments[1]) : 500;
    std::vector<double> withLibrary;
    std::vector<double> withStreams;
    for (int turn = 0; turn < turns; ++turn)
    {
        withLibrary.push_back(Run(UTILITY_STARTED_PROGRAM));
        withStreams.push_back(Run(UTILITY_STREAMS_PROGRAM));
    }
    const double library = Median(withLibrary);
    const double streams = Median(withStreams);
    std::printf("%.0f\t%.0f\t%.0f\n", library, streams, library - streams);
}

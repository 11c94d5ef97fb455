// The report of a crash, as the program beside the library writes it, and the stack of the same process as debuggers
// print it: gdb with all variables, eu-stack without any. Each is the time of a whole program, by the clock, so the
// three take turns.
//
//     CrashBench [TURNS]
//     unshare --mount sh -c 'mount -t tmpfs none /usr/lib/debug && CrashBench'
//
// The second hides the debugging information of the C library from all three. Prints a line for each peer: the median
// milliseconds of the library's report and of the peer, and the ratio, above 1 if the library is ahead.

#include "tests/support/posix/FaultedProgram.h"
#include "utility/platform/posix/faults/ReportRequest.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{

void Check(bool isDone)
{
    if (isDone)
        return;
    std::perror("CrashBench");
    std::exit(1);
}

/// Milliseconds that a program takes, with the bytes as its input.
double Run(std::vector<std::string> command, const void* bytes, std::size_t size)
{
    int input[2];
    Check(::pipe2(input, O_CLOEXEC) == 0);
    Check(::write(input[1], bytes, size) == static_cast<ssize_t>(size));
    ::close(input[1]);
    std::vector<char*> arguments;
    for (std::string& argument : command)
        arguments.push_back(argument.data());
    arguments.push_back(nullptr);

    const auto begin = std::chrono::steady_clock::now();
    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_adddup2(&files, input[0], STDIN_FILENO);
    ::posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t process = 0;
    Check(::posix_spawnp(&process, arguments[0], &files, nullptr, arguments.data(), environ) == 0);
    int status = 0;
    Check(::waitpid(process, &status, 0) == process);
    const auto end = std::chrono::steady_clock::now();
    ::posix_spawn_file_actions_destroy(&files);
    ::close(input[0]);
    if (!WIFEXITED(status) || WEXITSTATUS(status) > 1) // eu-stack has 1 if a frame could not be told
    {
        std::fprintf(stderr, "CrashBench: %s failed\n", arguments[0]);
        std::exit(1);
    }
    return std::chrono::duration<double, std::milli>(end - begin).count();
}

double Median(std::vector<double>& values)
{
    std::ranges::sort(values);
    return (values[values.size() / 2] + values[(values.size() - 1) / 2]) / 2;
}

}

int main(int argumentCount, char** arguments)
{
    const int turns = argumentCount > 1 ? std::atoi(arguments[1]) : 20;
    char folder[] = "/tmp/CrashBench-XXXXXX";
    Check(::mkdtemp(folder) != nullptr);
    ::setenv("XDG_DATA_HOME", folder, 1);
    const support::FaultedProgram program(UTILITY_CRASHED_PROGRAM);
    Check(program.IsStopped());
    utility::platform::posix::ReportRequest request = {};
    request.thread = request.threadInProc = program.Process();
    request.record.ExceptionCode = 0xC0000005;
    request.record.ExceptionAddress = reinterpret_cast<void*>(program.Context().Rip);
    request.context = program.Context();

    const std::string process = std::to_string(program.Process());
    std::vector<double> reports;
    std::vector<double> all;
    std::vector<double> stacks;
    for (int turn = -1; turn < turns; ++turn)
    {
        const double report = Run({UTILITY_REPORT_PROGRAM}, &request, sizeof(request));
        const double full = Run({"gdb", "-nx", "-batch", "-ex", "bt full", "-p", process}, nullptr, 0);
        const double stack = Run({"eu-stack", "-v", "-p", process}, nullptr, 0);
        if (turn < 0) // the first ones read the files from the disk
            continue;
        reports.push_back(report);
        all.push_back(full);
        stacks.push_back(stack);
    }
    const double report = Median(reports);
    std::printf("gdb bt full\t%.1f\t%.1f\t%.2f\n", report, Median(all), Median(all) / report);
    std::printf("eu-stack -v\t%.1f\t%.1f\t%.2f\n", report, Median(stacks), Median(stacks) / report);
    const std::string remove = std::string("rm -r '") + folder + '\'';
    return std::system(remove.c_str());
}

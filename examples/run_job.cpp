// Runs a command so that nothing of it survives: what it leaves behind in the background is killed at its end, and all
// of it when this program is ended, be it by Ctrl-C or by a kill that nobody can catch.

#include "examples/Console.h"
#include "utility/Utility.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace
{

// As `env` and other programs have it that run one.
enum ExitStatus
{
    exitGood = 0,
    exitFailed = 125,
    exitNotStarted = 127,
};

using Handle = std::unique_ptr<void, int (*)(void*)>;

void ShowHelp()
{
    std::printf(
        "usage: run_job COMMAND [ARGUMENT...]\n"
        "\n"
        "Runs a command so that nothing of it survives. What it started and left behind is killed when it has\n"
        "ended, and all of it when run_job is ended, in whatever way.\n"
        "\n"
        "Exit status: that of the command; 125 if there can be no job, 127 if the command cannot be started.\n");
}

/// False if one of the arguments is no text.
bool MakeCommandLine(const std::vector<boost::filesystem::path>& arguments, std::wstring& line)
{
    std::vector<std::wstring> texts;
    for (const boost::filesystem::path& argument : arguments)
    {
        texts.push_back(console::Wide(argument));
        if (from_utf(texts.back(), 65001) != console::Utf8(argument))
            return false;
    }
    line = utility::platform::formats::JoinCommandLine(texts);
    return true;
}

}

int main(int argumentCount, char** argumentTexts)
{
    InitialiseUtilityDLL();
    const std::vector<boost::filesystem::path> arguments = console::Arguments(argumentCount, argumentTexts);
    if (arguments.empty())
    {
        console::Print(stderr, "usage: run_job COMMAND [ARGUMENT...], or run_job --help\n");
        return exitFailed;
    }
    if (arguments.front() == "--help")
    {
        ShowHelp();
        return exitGood;
    }
    std::wstring line;
    Handle job(nullptr, nullptr);
    Handle thread(nullptr, nullptr);
    Handle process(nullptr, nullptr);
    if (!MakeCommandLine(arguments, line) || !CreateJob(job, thread))
    {
        console::Print(stderr, "run_job: there can be no job\n");
        return exitFailed;
    }
    if (!StartInJob(job.get(), line.c_str(), process))
    {
        console::Print(stderr, "run_job: " + console::Utf8(arguments.front()) + " cannot be started\n");
        return exitNotStarted;
    }
    const std::optional<DWORD> code = WaitForExitCode(process.get());
    job.reset();
    // On Windows nothing tells what had ended ahead of the watch.
    constexpr DWORD longEnough = 10000;
    WaitForExitCode(thread.get(), longEnough);
    return code ? static_cast<int>(*code) : static_cast<int>(exitFailed);
}

// Crashes in the way asked for, so that anyone sees a crash report in a minute: it runs itself once more, which
// crashes, and tells where the report of that is and how to look at it.
//
// There is nothing in it that has to do with reports but one call: a program that links the library leaves them.
//
// A report breaks off at a variable that is a pointer to a pointer, such as the arguments of main. So this file is
// compiled without debugging information.

#include "examples/Console.h"
#include "examples/crash/Causes.h"
#include "utility/Utility.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace
{

enum ExitStatus
{
    exitGood = 0,
    exitNoReport = 1,
    exitNotUnderstood = 2,
};

std::string Usage()
{
    std::string usage = "usage: crash_demo CAUSE\n\nCrashes, and tells where the report of that is:\n\n";
    for (const crash::Cause& cause : crash::Causes())
        usage += "  " + cause.name + std::string(10 - cause.name.size(), ' ') + cause.what + '\n';
    return usage;
}

/// The reports of this program, in the order of their times, which their names have to the second.
std::set<boost::filesystem::path> Reports()
{
    std::set<boost::filesystem::path> reports;
    boost::system::error_code ignored;
    const boost::filesystem::path folder =
        console::LocalData() / "Selvane Production Software" / "Exception Reports" / "crash_demo";
    for (boost::filesystem::recursive_directory_iterator each(folder, ignored), end; each != end;
         each.increment(ignored))
    {
        if (each->path().extension() == ".xml")
            reports.insert(each->path());
    }
    return reports;
}

/// The first report that was not there before; empty if there is none. A fault of the report itself may have left
/// another.
boost::filesystem::path FirstBut(const std::set<boost::filesystem::path>& before)
{
    const std::set<boost::filesystem::path> reports = Reports();
    const auto first = std::ranges::find_if(reports, [&](const auto& each) { return !before.contains(each); });
    return first == reports.end() ? boost::filesystem::path() : *first;
}

int Crash(const crash::Cause& cause)
{
    KeepLogForExceptionReports();
    LogFile(LogSeverityInformation, nullptr) << "crash_demo " << cause.name << ": " << cause.what;
    if (cause.onThread)
        std::thread(cause.crash).join();
    else
        cause.crash();
    return exitGood;
}

ExitStatus Show(const crash::Cause& cause)
{
    std::printf("crash_demo %s: %s\n", cause.name.c_str(), cause.what.c_str());
    std::fflush(stdout);
    const std::set<boost::filesystem::path> before = Reports();
    // On Windows a report takes the place of another one of the same second.
    if (!before.empty())
        std::this_thread::sleep_for(std::chrono::seconds(1));
    const std::string end = console::RunAgain({"--now", cause.name});
    std::printf("It ended %s.\n", end.c_str());
    const boost::filesystem::path report = FirstBut(before);
    if (report.empty())
    {
        std::printf("It left no report. On Windows, what ends by abort leaves none.\n");
        return exitNoReport;
    }
    const std::string path = console::Utf8(report);
    console::Print(stdout, "Its report is " + path + "\n\nTo look at it:\n  crash_view \"" + path +
                               "\"\n  crash_view --html crash.html \"" + path + "\"\n");
    return exitGood;
}

}

int main(int argumentCount, char** argumentTexts)
{
    InitialiseUtilityDLL();
    const std::vector<boost::filesystem::path> arguments = console::Arguments(argumentCount, argumentTexts);
    const std::vector<crash::Cause> causes = crash::Causes();
    const auto cause = std::ranges::find_if(causes, [&](const crash::Cause& each)
                                            { return !arguments.empty() && arguments.back() == each.name; });
    if (cause != causes.end() && arguments.size() == 1)
        return Show(*cause);
    if (cause != causes.end() && arguments.size() == 2 && arguments[0] == "--now")
        return Crash(*cause);
    const bool isHelp = arguments.size() == 1 && arguments[0] == "--help";
    console::Print(isHelp ? stdout : stderr, Usage());
    return isHelp ? exitGood : exitNotUnderstood;
}

// Shows the report of a crash: in the terminal, or as a page for a browser.
//
// Reports are made to the letter of a format that is not always XML, so examples/crash reads them by itself, up to
// wherever they end. What is in one may be anything, as may be its log.

#include "examples/Console.h"
#include "examples/crash/Page.h"
#include "examples/crash/Report.h"
#include "examples/crash/Terminal.h"
#include "utility/Utility.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

namespace
{

enum ExitStatus
{
    exitGood = 0,
    exitCutReport = 1,
    exitNotReadable = 2,
};

struct Options
{
    boost::filesystem::path report;
    boost::filesystem::path page;
    bool help = false;
};

void ShowHelp()
{
    std::printf("usage: crash_view [--html PAGE] REPORT\n"
                "\n"
                "Shows a crash report: what happened, the stack with lines of the sources that are there, variables,\n"
                "modules, and the log if there is one beside the report.\n"
                "\n"
                "  --html PAGE  writes a page for a browser instead, with a filter for names; it fetches nothing\n"
                "  --help       prints this\n"
                "\n"
                "Of a pointer, as of any number of 64 bits, a report has the low 32 bits: 0x…1234abcd.\n"
                "\n"
                "Exit status: 0, 1 if the report has no end, 2 if it cannot be read or the page not be written.\n");
}

bool ParseArguments(const std::vector<boost::filesystem::path>& arguments, Options& options)
{
    for (std::size_t i = 0; i != arguments.size(); ++i)
    {
        if (arguments[i] == "--help")
            options.help = true;
        else if (arguments[i] == "--html" && i + 1 != arguments.size() && options.page.empty())
            options.page = arguments[++i];
        else if (console::Utf8(arguments[i]).starts_with("--") || !options.report.empty())
            return false;
        else
            options.report = arguments[i];
    }
    return options.help || !options.report.empty();
}

/// The lines of the log beside a report. None if there is no such file.
std::vector<std::string> LogOf(boost::filesystem::path report)
{
    std::vector<std::string> lines;
    const boost::filesystem::path path = report.replace_extension(".log.txt");
    boost::system::error_code ignored;
    if (!is_regular_file(path, ignored))
        return lines;
    const CMemoryMappedFile file(path);
    std::string_view rest(static_cast<const char*>(file.GetBase()), file.GetFileSize());
    while (!rest.empty())
    {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        lines.push_back(crash::Shown(line.substr(0, line.find('\r'))));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
    }
    return lines;
}

void Save(const boost::filesystem::path& path, const std::string& text)
{
    CBackupFile backup(path);
    CTextFile file;
    file.Open(backup.GetTempFilename());
    file << text.c_str();
    file.CommitAndClose();
    backup.SetReplaceFile(true);
}

ExitStatus Run(const Options& options)
{
    const CMemoryMappedFile file(options.report);
    const std::string name = console::Utf8(options.report);
    if (!file.IsValid())
    {
        console::Print(stderr, name + " is empty or cannot be mapped\n");
        return exitNotReadable;
    }
    const std::string_view bytes(static_cast<const char*>(file.GetBase()), file.GetFileSize());
    if (!crash::IsReport(bytes))
    {
        console::Print(stderr, name + " is no crash report\n");
        return exitNotReadable;
    }
    const crash::Report report = crash::Read(bytes);
    const std::vector<std::string> log = LogOf(options.report);
    if (options.page.empty())
        console::Print(stdout, crash::TerminalText(report, log));
    else
        Save(options.page, crash::PageText(report, log, crash::Shown(console::Utf8(options.report.filename()))));
    if (!console::IsPrinted())
    {
        console::Print(stderr, "the output cannot be written\n");
        return exitNotReadable;
    }
    return report.isWhole ? exitGood : exitCutReport;
}

}

int main(int argumentCount, char** arguments)
{
    InitialiseUtilityDLL();
    Options options;
    if (!ParseArguments(console::Arguments(argumentCount, arguments), options))
    {
        console::Print(stderr, "usage: crash_view [--html PAGE] REPORT, or crash_view --help\n");
        return exitNotReadable;
    }
    if (options.help)
    {
        ShowHelp();
        return exitGood;
    }
    try
    {
        return Run(options);
    }
    catch (CException* failure)
    {
        console::Print(stderr, console::ReasonOf(failure, options.report));
    }
    catch (const std::exception& failure)
    {
        console::Print(stderr, std::string(failure.what()) + '\n');
    }
    return exitNotReadable;
}

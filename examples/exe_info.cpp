// What an executable says of itself: programs and libraries of Windows and of Linux, and old ones of DOS.
//
// The library maps the file and reads its headers. What is beyond them, tables of sections and of libraries, is read
// here, by examples/executables. Every byte may be anything.

#include "examples/Console.h"
#include "examples/executables/Executable.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace
{

enum ExitStatus
{
    exitGood = 0,
    exitBadFile = 1,
    exitNotReadable = 2,
};

void ShowHelp()
{
    std::printf("usage: exe_info FILE\n"
                "\n"
                "Tells what an executable is and for which machine, when it was built, its sections and their sizes,\n"
                "the libraries that it needs, and its version. Executables of Windows, Linux and DOS are known.\n"
                "\n"
                "When it was built is what the linker wrote, which some are told to leave out or to replace by a\n"
                "number made of the content. Versions of ELF files are read on Linux only.\n"
                "\n"
                "Exit status: 0, 1 if something of the file is missing, 2 if it cannot be read or is no executable.\n");
}

void Show(const char* heading, const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
    {
        if (!line.empty())
            text += "  " + executables::Shown(line) + '\n';
    }
    if (!text.empty())
        console::Print(stdout, std::string(heading) + '\n' + text);
}

std::vector<std::string> SectionLines(const std::vector<executables::Section>& sections)
{
    std::vector<std::string> lines;
    for (const executables::Section& section : sections)
    {
        std::string name = section.name;
        name.resize(std::max<std::size_t>(name.size(), 24) + 1, ' ');
        std::string size = std::to_string(section.size);
        size.insert(0, size.size() < 12 ? 12 - size.size() : 0, ' ');
        lines.push_back(name + size);
    }
    return lines;
}

std::string Numbers(DWORD high, DWORD low)
{
    std::string text;
    for (const DWORD part : {high >> 16, high & 0xFFFF, low >> 16, low & 0xFFFF})
        text += (text.empty() ? "" : ".") + std::to_string(part);
    return text;
}

std::vector<std::string> VersionLines(const boost::filesystem::path& path)
{
    CVersion version;
    if (!version.Initialise(console::Wide(path).c_str()))
        return {};
    std::vector<std::string> lines = {"file " + Numbers(version.GetFileVersionMS(), version.GetFileVersionLS()),
                                      "product " +
                                          Numbers(version.GetProductVersionMS(), version.GetProductVersionLS())};
    const auto add = [&lines](const char* name, const wchar_t* text)
    {
        if (text != nullptr && *text != L'\0')
            lines.push_back(std::string(name) + ": " + from_utf(text, CP_UTF8));
    };
    add("company", version.GetCompanyName());
    add("product", version.GetProductName());
    add("product version", version.GetProductVersion());
    add("file version", version.GetFileVersion());
    add("description", version.GetFileDescription());
    add("copyright", version.GetLegalCopyright());
    add("trademarks", version.GetLegalTrademarks());
    add("internal name", version.GetInternalName());
    add("original name", version.GetOriginalFileName());
    add("private build", version.GetPrivateBuild());
    add("special build", version.GetSpecialBuild());
    add("comments", version.GetComments());
    return lines;
}

ExitStatus Run(const boost::filesystem::path& path)
{
    const CPEExeFile file(path);
    const std::string name = console::Utf8(path);
    if (file.GetBase() == nullptr)
    {
        console::Print(stderr, name + " is empty or cannot be mapped\n");
        return exitNotReadable;
    }
    const auto executable = executables::Examine(file);
    if (!executable)
    {
        console::Print(stderr, name + " is no executable that is known\n");
        return exitNotReadable;
    }
    Show("kind", {executable->kind});
    Show("machine", {executable->machine});
    Show("built", {executable->built});
    Show("build id", {executable->buildId});
    Show("started by", {executable->interpreter});
    Show("sections", SectionLines(executable->sections));
    Show("needs", executable->needed);
    Show("version", VersionLines(path));
    Show("messages", executable->faults);
    if (!console::IsPrinted())
    {
        console::Print(stderr, "the output cannot be written\n");
        return exitNotReadable;
    }
    return executable->faults.empty() ? exitGood : exitBadFile;
}

}

int main(int argumentCount, char** argumentTexts)
{
    InitialiseUtilityDLL();
    const std::vector<boost::filesystem::path> arguments = console::Arguments(argumentCount, argumentTexts);
    if (arguments.size() == 1 && arguments[0] == "--help")
    {
        ShowHelp();
        return exitGood;
    }
    if (arguments.size() != 1 || console::Utf8(arguments[0]).starts_with("--"))
    {
        console::Print(stderr, "usage: exe_info FILE, or exe_info --help\n");
        return exitNotReadable;
    }
    try
    {
        return Run(arguments[0]);
    }
    catch (CException* failure)
    {
        console::Print(stderr, console::ReasonOf(failure, arguments[0]));
    }
    catch (const std::exception& failure)
    {
        console::Print(stderr, std::string(failure.what()) + '\n');
    }
    return exitNotReadable;
}

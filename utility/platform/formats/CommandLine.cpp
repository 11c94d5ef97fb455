#include "utility/platform/formats/CommandLine.h"

#include <algorithm>
#include <cstddef>

namespace utility::platform::formats
{

namespace
{

constexpr std::wstring_view blanks = L" \t";

bool IsBlank(wchar_t c) { return blanks.find(c) != std::wstring_view::npos; }

/// Takes the program's name off the front of a line.
std::wstring TakeProgram(std::wstring_view& line)
{
    std::wstring program;
    bool isQuoted = false;
    for (; !line.empty() && (isQuoted || !IsBlank(line.front())); line.remove_prefix(1))
    {
        if (line.front() == L'"')
            isQuoted = !isQuoted;
        else
            program += line.front();
    }
    return program;
}

/// Takes an argument off the front of a line that begins with it.
std::wstring TakeArgument(std::wstring_view& line)
{
    std::wstring argument;
    bool isQuoted = false;
    while (!line.empty() && (isQuoted || !IsBlank(line.front())))
    {
        const std::size_t backslashes = std::min(line.find_first_not_of(L'\\'), line.size());
        line.remove_prefix(backslashes);
        if (!line.starts_with(L'"'))
        {
            argument.append(backslashes, L'\\');
            if (backslashes == 0)
            {
                argument += line.front();
                line.remove_prefix(1);
            }
            continue;
        }
        argument.append(backslashes / 2, L'\\');
        line.remove_prefix(1);
        if (backslashes % 2 != 0)
            argument += L'"';
        else if (isQuoted && line.starts_with(L'"'))
        {
            argument += L'"';
            line.remove_prefix(1);
        }
        else
            isQuoted = !isQuoted;
    }
    return argument;
}

/// An argument in quotes, those that are meant marked.
std::wstring Quoted(std::wstring_view argument)
{
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument)
    {
        if (c == L'"')
            quoted.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L'"';
}

}

std::vector<std::wstring> SplitCommandLine(std::wstring_view line)
{
    std::vector<std::wstring> arguments;
    arguments.push_back(TakeProgram(line));
    for (;;)
    {
        line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
        if (line.empty())
            return arguments;
        arguments.push_back(TakeArgument(line));
    }
}

std::wstring JoinCommandLine(const std::vector<std::wstring>& arguments)
{
    std::wstring line;
    for (const std::wstring& argument : arguments)
    {
        const bool isProgram = &argument == &arguments.front();
        if (!isProgram)
            line += L' ';
        const bool isPlain = !argument.empty() && argument.find_first_of(L" \t\"") == std::wstring::npos;
        if (isPlain)
            line += argument;
        else
            line += isProgram ? L'"' + argument + L'"' : Quoted(argument);
    }
    return line;
}

}

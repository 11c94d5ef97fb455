// A look into the hives: what the settings of an application are, and how they get from one machine to another.
//
// The store is reached through the library's own interface to it, the same on both systems: the registry on Windows,
// the hives of the library on Linux. What is carried between them is a registry file, in the form that the registry's
// editor writes and reads.

#include "examples/Console.h"
#include "examples/settings/Keys.h"
#include "examples/settings/ValueText.h"

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

enum ExitStatus
{
    exitGood = 0,
    exitFailed = 1,
    exitBadUsage = 2,
};

using Arguments = std::vector<boost::filesystem::path>;

struct Command
{
    const char* name;
    const char* arguments;
    std::size_t least; // arguments
    std::size_t most;
    void (*run)(const Arguments&);
    const char* help;
};

void Print(const std::wstring& line) { console::Print(stdout, from_utf(line + L'\n', CP_UTF8)); }

keys::Place PlaceOf(const std::wstring& name)
{
    keys::Place place = keys::Locate(name);
    if (place.hive == nullptr)
        throw std::invalid_argument(from_utf(name, CP_UTF8) + " does not begin with HKCU or HKLM");
    return place;
}

/// A hive as a whole is not to be deleted by a slip.
keys::Place PlaceToDelete(const std::wstring& name)
{
    keys::Place place = PlaceOf(name);
    if (place.subKey.empty())
        throw std::invalid_argument(from_utf(name, CP_UTF8) + " is a whole hive, which is not deleted");
    return place;
}

void List(const Arguments& arguments)
{
    const keys::Place place = PlaceOf(console::Wide(arguments[0]));
    for (const regtext::Value& value : keys::Read(place).values)
    {
        std::wstring line = regtext::Line(value);
        if (const std::wstring number = valuetext::NumberIn(value); !number.empty())
            line.append(L" ;").append(number);
        Print(line);
    }
    for (const std::wstring& name : keys::SubKeys(place))
        Print(L'[' + place.name + L'\\' + name + L']');
}

void Get(const Arguments& arguments)
{
    regtext::Value value;
    if (!keys::ReadValue(PlaceOf(console::Wide(arguments[0])), console::Wide(arguments[1]), value))
        throw std::runtime_error("the key has no such value");
    Print(valuetext::Plain(value));
}

void Set(const Arguments& arguments)
{
    std::vector<std::wstring> parts;
    for (std::size_t i = 3; i < arguments.size(); ++i)
        parts.push_back(console::Wide(arguments[i]));
    const keys::Place place = PlaceOf(console::Wide(arguments[0]));
    keys::Apply(
        {place.name, {valuetext::Typed(console::Wide(arguments[1]), console::Utf8(arguments[2]), parts)}, false});
}

void Delete(const Arguments& arguments)
{
    const std::wstring key = console::Wide(arguments[0]);
    if (arguments.size() == 1)
        keys::DeleteTree(PlaceToDelete(key));
    else
        keys::DeleteValue(PlaceOf(key), console::Wide(arguments[1]));
}

void Export(const Arguments& arguments)
{
    const std::string text = regtext::Text(keys::Tree(PlaceOf(console::Wide(arguments[0]))));
    CMemoryMappedFile file(arguments[1], 0);
    file.WriteFile(text.data(), text.size());
    file.Close(0);
}

/// Nothing is changed by a file that is not understood as a whole.
void Import(const Arguments& arguments)
{
    const CMemoryMappedFile file(arguments[0]);
    const std::vector<regtext::Key> tree =
        regtext::Parse({static_cast<const char*>(file.GetBase()), file.GetFileSize()});
    try
    {
        for (const regtext::Key& key : tree)
            key.isDeletion ? PlaceToDelete(key.path) : PlaceOf(key.path);
    }
    catch (const std::invalid_argument& failure)
    {
        throw std::runtime_error(failure.what());
    }
    for (const regtext::Key& key : tree)
        keys::Apply(key);
}

constexpr Command commands[] = {
    {"list", "KEY", 1, 1, List, "prints the values of a key as a registry file has them, and the keys under it"},
    {"get", "KEY NAME", 2, 2, Get, "prints a value"},
    {"set", "KEY NAME TYPE VALUE...", 3, SIZE_MAX, Set, "stores a value; makes the key if it is absent"},
    {"delete", "KEY [NAME]", 1, 2, Delete, "deletes a value, or a key with all under it"},
    {"export", "KEY FILE", 2, 2, Export, "writes a key with all under it into a registry file"},
    {"import", "FILE", 1, 1, Import, "does what a registry file says"},
};

void ShowHelp()
{
    std::printf("usage: settings COMMAND ARGUMENT...\n"
                "\n"
                "Shows and changes the settings of applications, and carries them between machines and systems.\n"
                "\n");
    for (const Command& command : commands)
        std::printf("  %-6s %-23s %s\n", command.name, command.arguments, command.help);
    std::printf("\n"
                "  --user FILE     ahead of the command, on Linux: the user's hive is this file\n"
                "  --machine FILE  the same for the machine's\n"
                "\n"
                "KEY is a hive and a path, as in 'HKCU\\SOFTWARE\\Selvane': HKCU is the user's hive, HKLM the\n"
                "machine's. NAME may be '', the unnamed value. TYPE is one of %s;\n"
                "REG_MULTI_SZ takes any number of VALUEs. A number is decimal or begins with 0x, and REG_BINARY\n"
                "is pairs of hexadecimal digits.\n"
                "\n"
                "Exit status: 0, 1 if something is absent or refused, 2 for arguments that make no sense.\n",
                valuetext::Types().c_str());
}

/// Does what an option says; false for what is none, and where hives stay where they are.
bool MoveHive(const std::string& option, const boost::filesystem::path& file)
{
    const HKEY hive = option == "--user" ? HKEY_CURRENT_USER : option == "--machine" ? HKEY_LOCAL_MACHINE : nullptr;
    return utility::platform::SetHiveFile(hive, file);
}

/// Null if there is no such command, or not with so many arguments.
const Command* CommandFor(const Arguments& arguments)
{
    const std::string name = console::Utf8(arguments.front());
    const std::size_t count = arguments.size() - 1;
    for (const Command& command : commands)
    {
        if (command.name == name && command.least <= count && count <= command.most)
            return &command;
    }
    return nullptr;
}

std::string ReasonOf(LSTATUS status)
{
    switch (status)
    {
    case ERROR_FILE_NOT_FOUND:
        return "there is no such key or value";
    case ERROR_ACCESS_DENIED:
        return "access is denied";
    default:
        return "the store refuses with status " + std::to_string(status);
    }
}

ExitStatus Failed(ExitStatus status, const std::string& reason)
{
    console::Print(stderr, "settings: " + reason + '\n');
    return status;
}

}

int main(int argumentCount, char** argumentTexts)
{
    InitialiseUtilityDLL();
    Arguments arguments = console::Arguments(argumentCount, argumentTexts);
    while (arguments.size() > 2 && MoveHive(console::Utf8(arguments[0]), arguments[1]))
        arguments.erase(arguments.begin(), arguments.begin() + 2);
    if (!arguments.empty() && arguments.front() == "--help")
    {
        ShowHelp();
        return exitGood;
    }
    const Command* const command = arguments.empty() ? nullptr : CommandFor(arguments);
    if (command == nullptr)
        return Failed(exitBadUsage, "see settings --help");
    arguments.erase(arguments.begin());
    try
    {
        command->run(arguments);
        return console::IsPrinted() ? exitGood : Failed(exitFailed, "the output cannot be written");
    }
    catch (const keys::Failure& failure)
    {
        return Failed(exitFailed, from_utf(failure.key, CP_UTF8) + ": " + ReasonOf(failure.status));
    }
    catch (const std::invalid_argument& failure)
    {
        return Failed(exitBadUsage, failure.what());
    }
    catch (const std::runtime_error& failure)
    {
        return Failed(exitFailed, failure.what());
    }
    catch (CException* failure)
    {
        return Failed(exitFailed, console::ReasonOf(failure, arguments.back()));
    }
}

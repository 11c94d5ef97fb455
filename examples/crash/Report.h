#pragma once

// What a crash report says.

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace crash
{

// All texts are UTF-8 that a terminal can be given: what it would take for a command, or turns text around, is shown by
// other characters. What the report lacks is empty.

struct Variable
{
    std::string name;
    std::string flags; ///< a number, as is tag
    std::string registerNumber;
    std::string tag;
    std::string type; ///< the name of a class
    std::string baseType;
    std::string value;

    bool operator==(const Variable&) const = default;
};

struct Frame
{
    std::string address;
    std::string frameAddress;
    std::string function;
    std::string displacement;
    std::string path; ///< of the source
    std::string line;
    std::vector<Variable> parameters;
    std::vector<Variable> locals;

    bool operator==(const Frame&) const = default;
};

struct Module
{
    std::string path;
    std::string base;
    std::string size;
    std::string version;
    std::string time; ///< when built, or changed last

    bool operator==(const Module&) const = default;
};

struct Report
{
    std::string code;
    std::string description;
    std::string address;
    std::string program; ///< its path, without the extension
    std::string system;  ///< its version
    std::string path;    ///< of the program
    std::vector<Module> modules;
    std::vector<Frame> stack;
    bool isWhole = false; ///< the end is there

    bool operator==(const Report&) const = default;
};

/// Whether a file is a crash report at all.
bool IsReport(std::string_view bytes);

/// Whatever the bytes are: reports are no XML where a path has an ampersand, a description zero characters, a text
/// control characters or bytes that are no UTF-8, or where the end is missing. The work is in proportion to the bytes.
Report Read(std::string_view bytes);

/// Text as it is shown.
std::string Shown(std::string_view bytes);

/// What a variable is called in C++, as far as the report tells.
std::string TypeOf(const Variable& variable);

/// The value, shorter where it is the low half of an address.
std::string ValueOf(const Variable& variable);

/// The register that it is in; empty if it is in none.
std::string RegisterOf(const Variable& variable);

/// The modules of a report, which it has to outlive, by their addresses.
class ModuleMap
{
public:
    explicit ModuleMap(const Report& report);

    /// The module that an address is in; null if it is in none.
    const Module* At(const std::string& address) const;

private:
    struct Place
    {
        std::uint64_t size;
        const Module* module;
    };

    std::map<std::uint64_t, Place> m_places; ///< by where they begin
};

/// The last part of a path of either system.
std::string_view NameOf(std::string_view path);

}

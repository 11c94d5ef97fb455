#pragma once

#include "utility/platform/posix/symbols/Elfutils.h"
#include "utility/platform/posix/symbols/Units.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace utility::platform::posix
{

/// What is known of an address of code.
struct Code
{
    std::uint64_t address = 0; ///< where it was looked up
    Dwfl_Module* module = nullptr;
    Dwarf_Die unit = {};
    std::uint64_t bias = 0; ///< what has to be added to an address of the file
    std::vector<Function>
        functions; ///< from the one that has a frame to the innermost; none without debugging information

    std::uint64_t FileAddress() const { return address - bias; }
};

/// The modules of the process that is reported, and their debugging information, each found where it is first asked
/// for.
class Program
{
public:
    explicit Program(const Elfutils& elfutils);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    ~Program();

    Dwfl_Module* ModuleAt(std::uint64_t address) const;

    const Code& CodeAt(std::uint64_t address);

    /// Of a function in the debugging information. Undecorated.
    std::string NameOf(const Function& function);
    /// Does that name all that it is in?
    bool IsDecorated(const Function& function) const;
    /// Of the symbol that an address lies in, and where that begins; empty if there is none.
    std::string SymbolAt(const Code& code, std::uint64_t& begin) const;
    /// Of where a function, or what of it holds the address, begins.
    std::uint64_t BeginOf(const Code& code, const Function& function) const;

    /// Empty if it is not known.
    std::string LineOf(const Code& code, int& line) const;
    /// Of where an inlined function is called.
    std::string LineOfCall(const Code& code, const Function& inlined, int& line) const;

    Units& AllUnits() { return m_units; }

private:
    /// Some compilers do not list the addresses of their units.
    struct UnitRange
    {
        std::uint64_t begin;
        std::uint64_t end;
        Dwarf_Die unit;
    };

    void Report() const;
    bool FindUnit(Code& code);
    const std::vector<UnitRange>& RangesOf(Dwfl_Module* module, std::uint64_t& bias);
    /// As the linker knows it; null if it has none of its own.
    const char* LinkageName(Dwarf_Die die) const;
    std::string WholePath(const char* path, const Dwarf_Die& unit) const;

    const Elfutils& m_elfutils;
    const Dwfl_Callbacks m_callbacks;
    Dwfl* m_session;
    Units m_units;
    std::unordered_map<std::uint64_t, Code> m_codes;
    std::unordered_map<Dwfl_Module*, std::vector<UnitRange>> m_ranges;
};

/// As people write it; what is not decorated stays as it is.
std::string Undecorated(const char* name);

}

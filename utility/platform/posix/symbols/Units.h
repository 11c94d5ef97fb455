#pragma once

#include "utility/platform/posix/symbols/Elfutils.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace utility::platform::posix
{

/// A function that an address lies in: itself, or one that is inlined there.
struct Function
{
    Dwarf_Die die;
    /// Blocks of it that hold the address, the outer ones first.
    std::vector<Dwarf_Die> blocks;
};

/// What the compilation units have, each read where it is first asked for.
class Units
{
public:
    explicit Units(const Elfutils& elfutils) : m_elfutils(elfutils) {}

    /// The functions of a unit that an address of the file lies in, from the one that has a frame to the innermost.
    std::vector<Function> FunctionsAt(const Dwarf_Die& unit, std::uint64_t address);

    /// With the names of what it is in. Empty if it has none.
    std::string QualifiedName(Dwarf_Die die);

private:
    struct Range
    {
        std::uint64_t begin;
        std::uint64_t end;
        Dwarf_Die function;
    };

    struct Unit
    {
        std::vector<Range> functions;
        /// What a class, an enumeration or a function is in.
        std::unordered_map<const void*, Dwarf_Die> parents;
        bool hasLocalClasses = false; ///< were they read, and what is in them
    };

    Unit& Read(const Dwarf_Die& unit);
    void ReadChildren(const Dwarf_Die& parent, bool isRoot, bool withLocalClasses, Unit& unit) const;
    void AddFunction(Dwarf_Die function, Unit& unit) const;
    static const Range* Find(const Unit& unit, std::uint64_t address);
    void Descend(Dwarf_Die scope, std::uint64_t address, std::vector<Function>& functions) const;

    const Elfutils& m_elfutils;
    std::map<const Dwarf_CU*, Unit> m_units;
};

}

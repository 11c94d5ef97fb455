#include "utility/platform/posix/symbols/Units.h"

#include <algorithm>
#include <dwarf.h>

namespace utility::platform::posix
{

namespace
{

bool IsClass(int tag) { return tag == DW_TAG_class_type || tag == DW_TAG_structure_type || tag == DW_TAG_union_type; }

/// Others have no functions and no types in them, or none that has a name from them.
bool IsNamedScope(int tag) { return tag == DW_TAG_namespace || tag == DW_TAG_module || IsClass(tag); }

}

std::vector<Function> Units::FunctionsAt(const Dwarf_Die& unitDie, std::uint64_t address)
{
    Unit& unit = Read(unitDie);
    const Range* range = Find(unit, address);
    if (range == nullptr && !unit.hasLocalClasses)
    {
        unit = {};
        unit.hasLocalClasses = true;
        ReadChildren(unitDie, true, true, unit);
        range = Find(unit, address);
    }
    std::vector<Function> functions;
    if (range != nullptr)
    {
        functions.push_back({range->function, {}});
        Descend(range->function, address, functions);
    }
    return functions;
}

std::string Units::QualifiedName(Dwarf_Die die)
{
    std::string name;
    if (const char* const own = m_elfutils.dwarf_diename(&die))
        name = own;
    if (name.empty())
        return name;
    Dwarf_Die unitDie;
    if (m_elfutils.dwarf_cu_die(die.cu, &unitDie, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr) == nullptr)
        return name;
    const Unit& unit = Read(unitDie);
    for (auto parent = unit.parents.find(die.addr); parent != unit.parents.end();
         parent = unit.parents.find(parent->second.addr))
    {
        Dwarf_Die outer = parent->second;
        if (const char* const outerName = m_elfutils.dwarf_diename(&outer))
            name.insert(0, "::").insert(0, outerName);
        else if (m_elfutils.dwarf_tag(&outer) == DW_TAG_namespace)
            name.insert(0, "(anonymous namespace)::");
    }
    return name;
}

Units::Unit& Units::Read(const Dwarf_Die& unitDie)
{
    const auto [found, isNew] = m_units.try_emplace(unitDie.cu);
    if (isNew)
        ReadChildren(unitDie, true, false, found->second);
    return found->second;
}

void Units::ReadChildren(const Dwarf_Die& parent, bool isRoot, bool withLocalClasses, Unit& unit) const
{
    Dwarf_Die outer = parent;
    Dwarf_Die child;
    if (m_elfutils.dwarf_child(&outer, &child) != 0)
        return;
    do
    {
        const int tag = m_elfutils.dwarf_tag(&child);
        const bool isFunction = tag == DW_TAG_subprogram;
        if (!isRoot && (isFunction || IsNamedScope(tag) || tag == DW_TAG_enumeration_type))
            unit.parents.emplace(child.addr, parent);
        if (isFunction)
            AddFunction(child, unit);
        if (IsNamedScope(tag))
            ReadChildren(child, false, withLocalClasses, unit);
        else if (withLocalClasses && (isFunction || tag == DW_TAG_lexical_block))
            ReadChildren(child, true, true, unit);
    } while (m_elfutils.dwarf_siblingof(&child, &child) == 0);
}

void Units::AddFunction(Dwarf_Die function, Unit& unit) const
{
    Dwarf_Addr base = 0;
    Dwarf_Addr begin = 0;
    Dwarf_Addr end = 0;
    for (std::ptrdiff_t i = 0; (i = m_elfutils.dwarf_ranges(&function, i, &base, &begin, &end)) > 0;)
        unit.functions.push_back({begin, end, function});
}

const Units::Range* Units::Find(const Unit& unit, std::uint64_t address)
{
    const auto found =
        std::find_if(unit.functions.begin(), unit.functions.end(),
                     [address](const Range& range) { return address >= range.begin && address < range.end; });
    return found != unit.functions.end() ? &*found : nullptr;
}

void Units::Descend(Dwarf_Die scope, std::uint64_t address, std::vector<Function>& functions) const
{
    Dwarf_Die child;
    if (m_elfutils.dwarf_child(&scope, &child) != 0)
        return;
    do
    {
        const int tag = m_elfutils.dwarf_tag(&child);
        const bool isInlined = tag == DW_TAG_inlined_subroutine;
        if (!isInlined && tag != DW_TAG_lexical_block && tag != DW_TAG_try_block && tag != DW_TAG_catch_block)
            continue;
        if (m_elfutils.dwarf_haspc(&child, address) != 1)
            continue;
        if (isInlined)
            functions.push_back({child, {}});
        else
            functions.back().blocks.push_back(child);
        Descend(child, address, functions);
        return;
    } while (m_elfutils.dwarf_siblingof(&child, &child) == 0);
}

}

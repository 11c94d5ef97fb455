#pragma once

#include "utility/platform/posix/symbols/Units.h"
#include "utility/platform/Symbols.h"

#include <unordered_map>

namespace utility::platform::posix
{

/// Types of debugging information by numbers, and what dbghelp would say of them. Names of types for what they are, and
/// what is constant or volatile, are the types themselves here.
class Types
{
public:
    explicit Types(const Elfutils& elfutils, Units& units) : m_elfutils(elfutils), m_units(units) {}

    SymbolType Number(Dwarf_Die type);

    bool Tag(SymbolType type, DWORD& tag) const;
    bool Pointee(SymbolType pointer, SymbolType& pointee);
    bool Name(SymbolType type, std::wstring& name);
    bool Length(SymbolType type, std::uint64_t& length) const;
    bool Base(SymbolType type, DWORD& base) const;

private:
    static constexpr SymbolType voidType = 1;

    Dwarf_Die* Find(SymbolType type) const;

    const Elfutils& m_elfutils;
    Units& m_units;
    mutable std::unordered_map<SymbolType, Dwarf_Die> m_types;
};

}

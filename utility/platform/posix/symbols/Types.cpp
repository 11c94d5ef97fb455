#include "utility/platform/posix/symbols/Types.h"

#include "utility/platform/formats/Utf8.h"
#include "utility/platform/posix/symbols/Dies.h"

#include <dwarf.h>
#include <optional>
#include <string_view>

namespace utility::platform::posix
{

namespace
{

enum class Tag : DWORD
{
    classType = 11,
    enumeration = 12,
    function = 13,
    pointer = 14,
    array = 15,
    base = 16,
};

enum class Base : DWORD
{
    none = 0,
    nothing = 1,
    character = 2,
    wideCharacter = 3,
    signedInteger = 6,
    unsignedInteger = 7,
    floating = 8,
    boolean = 10,
    signedLong = 13,
    unsignedLong = 14,
    complex = 28,
    character16 = 32,
    character32 = 33,
    character8 = 34,
};

Base BaseOf(Dwarf_Word encoding, std::string_view name, Dwarf_Word length)
{
    switch (encoding)
    {
    case DW_ATE_boolean:
        return Base::boolean;
    case DW_ATE_float:
        return Base::floating;
    case DW_ATE_complex_float:
        return Base::complex;
    case DW_ATE_UTF:
        return length == 1 ? Base::character8 : length == 2 ? Base::character16 : Base::character32;
    case DW_ATE_signed:
        if (name == "wchar_t")
            return Base::wideCharacter;
        return name == "long int" || name == "long" ? Base::signedLong : Base::signedInteger;
    case DW_ATE_unsigned:
    case DW_ATE_address:
        return name == "long unsigned int" || name == "unsigned long" ? Base::unsignedLong : Base::unsignedInteger;
    case DW_ATE_signed_char:
        return name == "signed char" ? Base::signedInteger : Base::character;
    case DW_ATE_unsigned_char:
        return name == "char" ? Base::character : Base::unsignedInteger;
    default:
        return Base::none;
    }
}

}

SymbolType Types::Number(Dwarf_Die type)
{
    const std::optional<Dwarf_Die> itself = TypeItself(m_elfutils, type);
    if (!itself)
        return voidType;
    const auto number = reinterpret_cast<SymbolType>(itself->addr);
    m_types.emplace(number, *itself);
    return number;
}

Dwarf_Die* Types::Find(SymbolType type) const
{
    const auto found = m_types.find(type);
    return found != m_types.end() ? &found->second : nullptr;
}

bool Types::Tag(SymbolType type, DWORD& tag) const
{
    const auto set = [&tag](posix::Tag value)
    {
        tag = static_cast<DWORD>(value);
        return true;
    };
    if (type == voidType)
        return set(posix::Tag::base);
    Dwarf_Die* const die = Find(type);
    switch (die != nullptr ? m_elfutils.dwarf_tag(die) : DW_TAG_invalid)
    {
    case DW_TAG_class_type:
    case DW_TAG_structure_type:
    case DW_TAG_union_type:
    case DW_TAG_interface_type:
        return set(posix::Tag::classType);
    case DW_TAG_enumeration_type:
        return set(posix::Tag::enumeration);
    case DW_TAG_subroutine_type:
        return set(posix::Tag::function);
    case DW_TAG_pointer_type:
    case DW_TAG_reference_type:
    case DW_TAG_rvalue_reference_type:
    case DW_TAG_ptr_to_member_type:
        return set(posix::Tag::pointer);
    case DW_TAG_array_type:
        return set(posix::Tag::array);
    case DW_TAG_base_type:
    case DW_TAG_unspecified_type:
        return set(posix::Tag::base);
    default:
        return false;
    }
}

bool Types::Pointee(SymbolType pointer, SymbolType& pointee)
{
    DWORD tag = 0;
    if (!Tag(pointer, tag) || tag != static_cast<DWORD>(posix::Tag::pointer))
        return false;
    Dwarf_Attribute attribute;
    Dwarf_Die type;
    if (m_elfutils.dwarf_attr(Find(pointer), DW_AT_type, &attribute) == nullptr)
        pointee = voidType;
    else if (m_elfutils.dwarf_formref_die(&attribute, &type) != nullptr)
        pointee = Number(type);
    else
        return false;
    return true;
}

bool Types::Name(SymbolType type, std::wstring& name)
{
    if (type == voidType)
    {
        name = L"void";
        return true;
    }
    const Dwarf_Die* const die = Find(type);
    if (die == nullptr)
        return false;
    const std::string qualified = m_units.QualifiedName(*die);
    name = qualified.empty() ? L"<unnamed>" : formats::WideFromUtf8(qualified);
    return true;
}

bool Types::Length(SymbolType type, std::uint64_t& length) const
{
    length = 0;
    if (type == voidType)
        return true;
    Dwarf_Die* const die = Find(type);
    Dwarf_Word size = 0;
    if (die == nullptr || m_elfutils.dwarf_aggregate_size(die, &size) != 0)
        return die != nullptr && m_elfutils.dwarf_tag(die) == DW_TAG_unspecified_type;
    length = size;
    return true;
}

bool Types::Base(SymbolType type, DWORD& base) const
{
    const auto set = [&base](posix::Base value)
    {
        base = static_cast<DWORD>(value);
        return true;
    };
    Dwarf_Die* const die = Find(type);
    const int tag = die != nullptr ? m_elfutils.dwarf_tag(die) : DW_TAG_invalid;
    if (type == voidType || tag == DW_TAG_unspecified_type)
        return set(posix::Base::nothing);
    Dwarf_Attribute attribute;
    Dwarf_Word encoding = 0;
    Dwarf_Word length = 0;
    if (tag != DW_TAG_base_type ||
        m_elfutils.dwarf_formudata(m_elfutils.dwarf_attr(die, DW_AT_encoding, &attribute), &encoding) != 0)
        return false;
    m_elfutils.dwarf_aggregate_size(die, &length);
    const char* const name = m_elfutils.dwarf_diename(die);
    return set(BaseOf(encoding, name != nullptr ? name : "", length));
}

}

#include "utility/platform/posix/symbols/Dies.h"

#include <dwarf.h>

namespace utility::platform::posix
{

namespace
{

/// Damaged information can go round in a circle.
constexpr int maximumSteps = 64;

bool IsOtherName(int tag)
{
    switch (tag)
    {
    case DW_TAG_typedef:
    case DW_TAG_const_type:
    case DW_TAG_volatile_type:
    case DW_TAG_restrict_type:
    case DW_TAG_atomic_type:
    case DW_TAG_immutable_type:
    case DW_TAG_packed_type:
    case DW_TAG_shared_type:
        return true;
    default:
        return false;
    }
}

}

Dwarf_Die OriginOf(const Elfutils& elfutils, Dwarf_Die die)
{
    Dwarf_Attribute attribute;
    Dwarf_Die origin;
    for (int i = 0; i < maximumSteps; ++i)
    {
        if ((elfutils.dwarf_attr(&die, DW_AT_abstract_origin, &attribute) == nullptr &&
             elfutils.dwarf_attr(&die, DW_AT_specification, &attribute) == nullptr) ||
            elfutils.dwarf_formref_die(&attribute, &origin) == nullptr)
            break;
        die = origin;
    }
    return die;
}

std::optional<Dwarf_Die> TypeItself(const Elfutils& elfutils, Dwarf_Die type)
{
    Dwarf_Attribute attribute;
    Dwarf_Die other;
    for (int i = 0; i < maximumSteps; ++i)
    {
        const bool isOtherName = IsOtherName(elfutils.dwarf_tag(&type));
        if (elfutils.dwarf_attr(&type, isOtherName ? DW_AT_type : DW_AT_signature, &attribute) == nullptr)
            return isOtherName ? std::nullopt : std::optional(type);
        if (elfutils.dwarf_formref_die(&attribute, &other) == nullptr)
            break;
        type = other;
    }
    return type;
}

}

#include "utility/platform/posix/symbols/Variables.h"

#include "utility/platform/posix/faults/ReportedProcess.h"
#include "utility/platform/posix/symbols/Dies.h"

#include <algorithm>
#include <cstring>
#include <dwarf.h>
#include <set>

namespace utility::platform::posix
{

void Variables::Each(const Function& function, const std::function<void(const Variable&)>& visit) const
{
    EachOfScope(function.die, visit);
    for (const Dwarf_Die& block : function.blocks)
        EachOfScope(block, visit);
}

void Variables::EachOfScope(Dwarf_Die scope, const std::function<void(const Variable&)>& visit) const
{
    Dwarf_Attribute attribute;
    Dwarf_Die child;
    std::set<const void*> origins;
    if (m_elfutils.dwarf_child(&scope, &child) == 0)
    {
        do
        {
            Visit(child, visit);
            Dwarf_Die origin;
            if (m_elfutils.dwarf_attr(&child, DW_AT_abstract_origin, &attribute) != nullptr &&
                m_elfutils.dwarf_formref_die(&attribute, &origin) != nullptr)
                origins.insert(origin.addr);
        } while (m_elfutils.dwarf_siblingof(&child, &child) == 0);
    }
    // What is the same wherever a function is inlined is only where the function itself is.
    Dwarf_Die origin;
    if (m_elfutils.dwarf_attr(&scope, DW_AT_abstract_origin, &attribute) == nullptr ||
        m_elfutils.dwarf_formref_die(&attribute, &origin) == nullptr || m_elfutils.dwarf_child(&origin, &child) != 0)
        return;
    do
    {
        if (origins.count(child.addr) == 0)
            Visit(child, visit);
    } while (m_elfutils.dwarf_siblingof(&child, &child) == 0);
}

void Variables::Visit(Dwarf_Die die, const std::function<void(const Variable&)>& visit) const
{
    const int tag = m_elfutils.dwarf_tag(&die);
    Dwarf_Attribute attribute;
    Variable variable;
    variable.isParameter = tag == DW_TAG_formal_parameter;
    if (!variable.isParameter && tag != DW_TAG_variable)
        return;
    variable.name = m_elfutils.dwarf_formstring(m_elfutils.dwarf_attr_integrate(&die, DW_AT_name, &attribute));
    if (variable.name == nullptr ||
        m_elfutils.dwarf_formref_die(m_elfutils.dwarf_attr_integrate(&die, DW_AT_type, &attribute), &variable.type) ==
            nullptr)
        return;
    Dwarf_Word size = 0;
    std::optional<Dwarf_Die> type = TypeItself(m_elfutils, variable.type);
    if (!type || m_elfutils.dwarf_aggregate_size(&*type, &size) != 0)
        size = sizeof(std::uint64_t);
    std::optional<Location> location;
    if (m_elfutils.dwarf_attr_integrate(&die, DW_AT_const_value, &attribute) != nullptr)
    {
        variable.isConstant = true;
        location = Constant(attribute, size);
    }
    else if (m_elfutils.dwarf_attr_integrate(&die, DW_AT_location, &attribute) != nullptr)
        location = Locate(attribute, size);
    if (!location)
        return;
    variable.location = std::move(*location);
    visit(variable);
}

std::optional<Location> Variables::Constant(Dwarf_Attribute& attribute, std::size_t size) const
{
    Location location;
    location.kind = Location::Kind::bytes;
    Dwarf_Block block;
    Dwarf_Sword number = 0;
    if (m_elfutils.dwarf_formblock(&attribute, &block) == 0)
    {
        const auto* const begin = reinterpret_cast<const std::byte*>(block.data);
        location.bytes.assign(begin, begin + block.length);
    }
    else if (m_elfutils.dwarf_formsdata(&attribute, &number) == 0)
    {
        location.bytes.resize(std::max(size, sizeof(number)), number < 0 ? std::byte(0xff) : std::byte());
        std::memcpy(location.bytes.data(), &number, sizeof(number));
    }
    else if (const char* const text = m_elfutils.dwarf_formstring(&attribute))
    {
        const auto* const begin = reinterpret_cast<const std::byte*>(text);
        location.bytes.assign(begin, begin + std::strlen(text) + 1);
    }
    else
        return std::nullopt;
    location.bytes.resize(size);
    return location;
}

std::optional<Location> Variables::Locate(Dwarf_Attribute& attribute, std::size_t size) const
{
    Dwarf_Op* operations = nullptr;
    std::size_t count = 0;
    if (m_elfutils.dwarf_getlocation_addr(&attribute, m_code.FileAddress(), &operations, &count, 1) != 1)
        return std::nullopt;
    return Expression(m_elfutils, *this, &attribute).Locate(operations, count, size);
}

std::optional<std::uint64_t> Variables::FrameBase() const
{
    if (m_code.functions.empty())
        return std::nullopt;
    Dwarf_Die function = m_code.functions.front().die;
    Dwarf_Attribute attribute;
    Dwarf_Op* operations = nullptr;
    std::size_t count = 0;
    if (m_elfutils.dwarf_attr_integrate(&function, DW_AT_frame_base, &attribute) == nullptr ||
        m_elfutils.dwarf_getlocation_addr(&attribute, m_code.FileAddress(), &operations, &count, 1) != 1 ||
        std::any_of(operations, operations + count, [](const Dwarf_Op& op) { return op.atom == DW_OP_fbreg; }))
        return std::nullopt;
    const std::optional<Location> base =
        Expression(m_elfutils, *this, &attribute).Locate(operations, count, sizeof(std::uint64_t));
    if (!base || base->kind == Location::Kind::bytes)
        return std::nullopt;
    return base->kind == Location::Kind::reg ? Register(base->number) : base->number;
}

std::optional<std::uint64_t> Variables::AtEntry(std::uint64_t number) const
{
    const auto [entry, isNew] = m_entries.try_emplace({m_frame.address, number});
    if (isNew)
        entry->second = PassedIn(number);
    return entry->second;
}

/// What a recursive function was called with can go back through all its calls.
std::optional<std::uint64_t> Variables::PassedIn(std::uint64_t number) const
{
    // In the process that faulted it is the handler's own small stack that this takes.
    const unsigned maximumDepth = IsReportedHere() ? 8 : 1000;
    if (m_depth == maximumDepth)
        return std::nullopt;
    const std::optional<Frame> frame = m_unwinder.CallerOf(m_frame);
    if (!frame || !frame->isCall)
        return std::nullopt;
    const Variables caller(m_elfutils, m_program, m_unwinder, m_entries, *frame, m_depth + 1);
    const std::optional<Dwarf_Die> call = caller.CallOf(*this);
    return call ? caller.Passed(*call, number) : std::nullopt;
}

std::optional<Dwarf_Die> Variables::CallOf(const Variables& callee) const
{
    std::vector<Dwarf_Die> scopes;
    for (const Function& function : m_code.functions)
    {
        scopes.push_back(function.die);
        scopes.insert(scopes.end(), function.blocks.begin(), function.blocks.end());
    }
    for (Dwarf_Die& scope : scopes)
    {
        Dwarf_Die child;
        if (m_elfutils.dwarf_child(&scope, &child) != 0)
            continue;
        do
        {
            const int tag = m_elfutils.dwarf_tag(&child);
            if (tag != DW_TAG_call_site && tag != DW_TAG_GNU_call_site)
                continue;
            Dwarf_Attribute attribute;
            Dwarf_Addr returnAddress = 0;
            if (m_elfutils.dwarf_formaddr(
                    m_elfutils.dwarf_attr(&child, tag == DW_TAG_call_site ? DW_AT_call_return_pc : DW_AT_low_pc,
                                          &attribute),
                    &returnAddress) == 0 &&
                returnAddress == m_frame.ProgramCounter() - m_code.bias)
                return Calls(child, callee) ? std::optional(child) : std::nullopt;
        } while (m_elfutils.dwarf_siblingof(&child, &child) == 0);
    }
    return std::nullopt;
}

/// Else the callee was entered by a jump at the end of another function, and has what that one passed.
bool Variables::Calls(Dwarf_Die& call, const Variables& callee) const
{
    if (callee.m_code.functions.empty())
        return false;
    const Function& function = callee.m_code.functions.front();
    Dwarf_Attribute attribute;
    Dwarf_Die target;
    if (m_elfutils.dwarf_attr(&call, DW_AT_call_origin, &attribute) != nullptr ||
        m_elfutils.dwarf_attr(&call, DW_AT_abstract_origin, &attribute) != nullptr)
    {
        if (m_elfutils.dwarf_formref_die(&attribute, &target) == nullptr)
            return false;
        return OriginOf(m_elfutils, target).addr == OriginOf(m_elfutils, function.die).addr ||
               m_program.NameOf({target, {}}) == m_program.NameOf(function);
    }
    return Compute(call, DW_AT_call_target, DW_AT_GNU_call_site_target) == m_program.BeginOf(callee.m_code, function);
}

std::optional<std::uint64_t> Variables::Compute(Dwarf_Die& die, unsigned name, unsigned earlierName) const
{
    Dwarf_Attribute attribute;
    Dwarf_Op* operations = nullptr;
    std::size_t count = 0;
    if ((m_elfutils.dwarf_attr(&die, name, &attribute) == nullptr &&
         m_elfutils.dwarf_attr(&die, earlierName, &attribute) == nullptr) ||
        m_elfutils.dwarf_getlocation(&attribute, &operations, &count) != 0)
        return std::nullopt;
    return Expression(m_elfutils, *this, &attribute).Compute(operations, count);
}

std::optional<std::uint64_t> Variables::Passed(Dwarf_Die call, std::uint64_t number) const
{
    Dwarf_Die child;
    if (m_elfutils.dwarf_child(&call, &child) != 0)
        return std::nullopt;
    do
    {
        Dwarf_Attribute attribute;
        Dwarf_Op* operations = nullptr;
        std::size_t count = 0;
        if (m_elfutils.dwarf_attr(&child, DW_AT_location, &attribute) != nullptr &&
            m_elfutils.dwarf_getlocation(&attribute, &operations, &count) == 0 && count == 1 &&
            RegisterOf(*operations) == number)
            return Compute(child, DW_AT_call_value, DW_AT_GNU_call_site_value);
    } while (m_elfutils.dwarf_siblingof(&child, &child) == 0);
    return std::nullopt;
}

}

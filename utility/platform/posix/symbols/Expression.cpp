#include "utility/platform/posix/symbols/Expression.h"

#include "utility/platform/posix/faults/ReportedProcess.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <dwarf.h>
#include <initializer_list>
#include <span>

// The stack machine of DWARF, with its typed values: what is pushed by the older operations is an address, 64 bits
// without a sign, and the newer ones push integers of a size and floating numbers. Integers are kept in 64 bits,
// extended as their type wants it, and floating numbers by their bits.

namespace utility::platform::posix
{

namespace
{

using Operations = std::span<const Dwarf_Op>;

bool IsPiece(const Dwarf_Op& operation) { return operation.atom == DW_OP_piece || operation.atom == DW_OP_bit_piece; }

/// Of the newer operations and of those that compilers had before them.
bool IsOneOf(unsigned atom, std::initializer_list<unsigned> atoms)
{
    return std::find(atoms.begin(), atoms.end(), atom) != atoms.end();
}

std::optional<std::uint64_t> ReadWord(std::uint64_t address, std::size_t size)
{
    std::uint64_t word = 0;
    if (size > sizeof(word) || ReadReportedProcess(address, &word, size) != size)
        return std::nullopt;
    return word;
}

struct Type
{
    std::uint64_t size = 8;
    unsigned encoding = DW_ATE_address;

    bool IsFloating() const { return encoding == DW_ATE_float; }
    bool IsSigned() const { return encoding == DW_ATE_signed || encoding == DW_ATE_signed_char; }
};

struct Item
{
    std::uint64_t bits = 0;
    Type type;

    double Number() const
    {
        return type.size == sizeof(float) ? static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)))
                                          : std::bit_cast<double>(bits);
    }
};

std::uint64_t Extended(std::uint64_t bits, Type type)
{
    const auto spare = static_cast<int>(64 - 8 * type.size);
    if (spare <= 0)
        return bits;
    const std::uint64_t high = bits << spare;
    return type.IsSigned() ? static_cast<std::uint64_t>(static_cast<std::int64_t>(high) >> spare) : high >> spare;
}

Item OfNumber(double number, Type type)
{
    if (type.size == sizeof(float))
        return {std::bit_cast<std::uint32_t>(static_cast<float>(number)), type};
    return {std::bit_cast<std::uint64_t>(number), type};
}

class Machine
{
public:
    Machine(const Elfutils& elfutils, const ExpressionFrame& frame, Dwarf_Attribute* attribute)
        : m_elfutils(elfutils), m_frame(frame), m_attribute(attribute)
    {
    }

    void Push(std::uint64_t address) { m_stack.push_back({address, {}}); }

    /// What is on top at the end.
    std::optional<Item> Run(Operations operations, unsigned depth = 0)
    {
        // A loop in damaged information does not go on for ever, and neither does a call of itself.
        static constexpr unsigned maximumSteps = 10'000;
        static constexpr unsigned maximumDepth = 8;
        if (depth == maximumDepth)
            return std::nullopt;
        m_depth = depth;
        unsigned steps = 0;
        for (std::size_t i = 0; i < operations.size(); ++steps)
        {
            const Dwarf_Op& operation = operations[i];
            if (operation.atom == DW_OP_stack_value)
                break;
            if (steps == maximumSteps)
                return std::nullopt;
            if (operation.atom == DW_OP_skip || operation.atom == DW_OP_bra)
            {
                if (operation.atom == DW_OP_bra)
                {
                    const std::optional<Item> condition = Pop();
                    if (!condition)
                        return std::nullopt;
                    if (condition->bits == 0)
                    {
                        ++i;
                        continue;
                    }
                }
                const std::uint64_t target = operation.offset + 3 + operation.number;
                i = 0;
                while (i < operations.size() && operations[i].offset != target)
                    ++i;
                continue;
            }
            if (!Step(operation))
                return std::nullopt;
            ++i;
        }
        return Pop();
    }

    bool IsRelative() const { return m_isRelative; }

private:
    std::optional<Item> Pop()
    {
        if (m_stack.empty())
            return std::nullopt;
        const Item item = m_stack.back();
        m_stack.pop_back();
        return item;
    }

    bool PushKnown(std::optional<std::uint64_t> address)
    {
        if (address)
            Push(*address);
        return address.has_value();
    }

    bool PushRegister(std::uint64_t number, std::uint64_t offset)
    {
        m_isRelative = true;
        const std::optional<std::uint64_t> value = m_frame.Register(number);
        return PushKnown(value ? std::optional(*value + offset) : std::nullopt);
    }

    bool PushFrame(std::optional<std::uint64_t> address, std::uint64_t offset)
    {
        m_isRelative = true;
        return PushKnown(address ? std::optional(*address + offset) : std::nullopt);
    }

    bool Step(const Dwarf_Op& operation)
    {
        const unsigned atom = operation.atom;
        if (atom >= DW_OP_lit0 && atom <= DW_OP_lit31)
        {
            Push(atom - DW_OP_lit0);
            return true;
        }
        if (atom >= DW_OP_breg0 && atom <= DW_OP_breg31)
            return PushRegister(atom - DW_OP_breg0, operation.number);
        switch (atom)
        {
        case DW_OP_addr:
            Push(operation.number + m_frame.Bias());
            return true;
        case DW_OP_const1u:
        case DW_OP_const1s:
        case DW_OP_const2u:
        case DW_OP_const2s:
        case DW_OP_const4u:
        case DW_OP_const4s:
        case DW_OP_const8u:
        case DW_OP_const8s:
        case DW_OP_constu:
        case DW_OP_consts:
            Push(operation.number);
            return true;
        case DW_OP_bregx:
            return PushRegister(operation.number, operation.number2);
        case DW_OP_fbreg:
            return PushFrame(m_frame.FrameBase(), operation.number);
        case DW_OP_call_frame_cfa:
            return PushFrame(m_frame.CallFrameAddress(), 0);
        case DW_OP_nop:
        case DW_OP_GNU_uninit:
            return true;
        case DW_OP_dup:
            return Pick(0);
        case DW_OP_over:
            return Pick(1);
        case DW_OP_pick:
            return Pick(operation.number);
        case DW_OP_drop:
            return Pop().has_value();
        case DW_OP_swap:
            return Rotate(2);
        case DW_OP_rot:
            return Rotate(3);
        case DW_OP_deref:
            return Dereference(sizeof(std::uint64_t), {});
        case DW_OP_deref_size:
            return Dereference(operation.number, {});
        case DW_OP_abs:
        case DW_OP_neg:
        case DW_OP_not:
        case DW_OP_plus_uconst:
            return Unary(atom, operation.number);
        default:
            return IsBinary(atom) ? Binary(atom) : ByAttribute(operation);
        }
    }

    bool Pick(std::uint64_t depth)
    {
        if (depth >= m_stack.size())
            return false;
        m_stack.push_back(m_stack[m_stack.size() - 1 - depth]);
        return true;
    }

    /// The top goes below the others.
    bool Rotate(std::ptrdiff_t count)
    {
        if (m_stack.size() < static_cast<std::size_t>(count))
            return false;
        std::rotate(m_stack.end() - count, m_stack.end() - 1, m_stack.end());
        return true;
    }

    bool Dereference(std::uint64_t size, Type type)
    {
        const std::optional<Item> address = Pop();
        const std::optional<std::uint64_t> word = address ? ReadWord(address->bits, size) : std::nullopt;
        if (word)
            m_stack.push_back({Extended(*word, type), type});
        return word.has_value();
    }

    bool Unary(unsigned atom, std::uint64_t operand)
    {
        const std::optional<Item> item = Pop();
        if (!item)
            return false;
        const Type type = item->type;
        const auto value = static_cast<std::int64_t>(item->bits);
        std::uint64_t bits = item->bits;
        if (type.IsFloating())
        {
            const double number = item->Number();
            if (atom != DW_OP_neg && atom != DW_OP_abs)
                return false;
            m_stack.push_back(OfNumber(atom == DW_OP_neg || number < 0 ? -number : number, type));
            return true;
        }
        if (atom == DW_OP_plus_uconst)
            bits += operand;
        else if (atom == DW_OP_not)
            bits = ~bits;
        else if (atom == DW_OP_neg || value < 0)
            bits = 0 - bits;
        m_stack.push_back({Extended(bits, type), type});
        return true;
    }

    static bool IsBinary(unsigned atom)
    {
        return IsOneOf(atom,
                       {DW_OP_and, DW_OP_div, DW_OP_minus, DW_OP_mod, DW_OP_mul, DW_OP_or, DW_OP_plus, DW_OP_shl,
                        DW_OP_shr, DW_OP_shra, DW_OP_xor, DW_OP_eq, DW_OP_ge, DW_OP_gt, DW_OP_le, DW_OP_lt, DW_OP_ne});
    }

    bool Binary(unsigned atom)
    {
        const std::optional<Item> right = Pop();
        const std::optional<Item> left = Pop();
        if (!right || !left)
            return false;
        const Type type = left->type;
        if (type.IsFloating())
            return BinaryOfNumbers(atom, left->Number(), right->Number(), type);
        const std::uint64_t a = left->bits;
        const std::uint64_t b = right->bits;
        const auto signedA = static_cast<std::int64_t>(a);
        const auto signedB = static_cast<std::int64_t>(b);
        // Of addresses division and comparison have a sign, and the rest of a division has none.
        const bool isSigned = type.IsSigned() || (type.encoding == DW_ATE_address && atom != DW_OP_mod);
        const bool isLess = isSigned ? signedA < signedB : a < b;
        std::uint64_t bits = 0;
        switch (atom)
        {
        case DW_OP_and:
            bits = a & b;
            break;
        case DW_OP_or:
            bits = a | b;
            break;
        case DW_OP_xor:
            bits = a ^ b;
            break;
        case DW_OP_plus:
            bits = a + b;
            break;
        case DW_OP_minus:
            bits = a - b;
            break;
        case DW_OP_mul:
            bits = a * b;
            break;
        case DW_OP_div:
        case DW_OP_mod:
            if (b == 0)
                return false;
            if (isSigned && signedB == -1)
                bits = atom == DW_OP_div ? 0 - a : 0;
            else if (isSigned)
                bits = static_cast<std::uint64_t>(atom == DW_OP_div ? signedA / signedB : signedA % signedB);
            else
                bits = atom == DW_OP_div ? a / b : a % b;
            break;
        case DW_OP_shl:
            bits = b < 64 ? a << b : 0;
            break;
        case DW_OP_shr:
            bits = b < 64 ? Extended(a, {type.size, DW_ATE_unsigned}) >> b : 0;
            break;
        case DW_OP_shra:
            bits = static_cast<std::uint64_t>(signedA >> std::min<std::uint64_t>(b, 63));
            break;
        default:
            Push(Compare(atom, isLess, a == b));
            return true;
        }
        m_stack.push_back({Extended(bits, type), type});
        return true;
    }

    bool BinaryOfNumbers(unsigned atom, double a, double b, Type type)
    {
        switch (atom)
        {
        case DW_OP_plus:
            m_stack.push_back(OfNumber(a + b, type));
            return true;
        case DW_OP_minus:
            m_stack.push_back(OfNumber(a - b, type));
            return true;
        case DW_OP_mul:
            m_stack.push_back(OfNumber(a * b, type));
            return true;
        case DW_OP_div:
            m_stack.push_back(OfNumber(a / b, type));
            return true;
        case DW_OP_eq:
        case DW_OP_ge:
        case DW_OP_gt:
        case DW_OP_le:
        case DW_OP_lt:
        case DW_OP_ne:
            if (a != a || b != b)
                Push(atom == DW_OP_ne);
            else
                Push(Compare(atom, a < b, a == b));
            return true;
        default:
            return false;
        }
    }

    static bool Compare(unsigned atom, bool isLess, bool isEqual)
    {
        switch (atom)
        {
        case DW_OP_eq:
            return isEqual;
        case DW_OP_ne:
            return !isEqual;
        case DW_OP_lt:
            return isLess;
        case DW_OP_le:
            return isLess || isEqual;
        case DW_OP_gt:
            return !isLess && !isEqual;
        default:
            return !isLess;
        }
    }

    /// Operations that refer to something else in the debugging information.
    bool ByAttribute(const Dwarf_Op& operation)
    {
        if (m_attribute == nullptr)
            return false;
        const unsigned atom = operation.atom;
        Dwarf_Attribute other;
        if (IsOneOf(atom, {DW_OP_entry_value, DW_OP_GNU_entry_value}))
        {
            return m_elfutils.dwarf_getlocation_attr(m_attribute, &operation, &other) == 0 && AtEntry(other);
        }
        if (IsOneOf(atom, {DW_OP_addrx, DW_OP_constx, DW_OP_GNU_addr_index, DW_OP_GNU_const_index}))
        {
            Dwarf_Addr address = 0;
            if (m_elfutils.dwarf_getlocation_attr(m_attribute, &operation, &other) != 0)
                return false;
            if (IsOneOf(atom, {DW_OP_addrx, DW_OP_GNU_addr_index}))
            {
                if (m_elfutils.dwarf_formaddr(&other, &address) != 0)
                    return false;
                Push(address + m_frame.Bias());
                return true;
            }
            if (m_elfutils.dwarf_formudata(&other, &address) != 0 && m_elfutils.dwarf_formaddr(&other, &address) != 0)
                return false;
            Push(address);
            return true;
        }
        if (IsOneOf(atom, {DW_OP_call2, DW_OP_call4, DW_OP_call_ref}))
            return Call(operation);
        return Typed(operation);
    }

    bool AtEntry(Dwarf_Attribute& value)
    {
        Dwarf_Op* operations = nullptr;
        std::size_t count = 0;
        if (m_elfutils.dwarf_getlocation(&value, &operations, &count) != 0 || count != 1)
            return false;
        const bool isTyped = IsOneOf(operations->atom, {DW_OP_regval_type, DW_OP_GNU_regval_type});
        const std::optional<std::uint64_t> number = isTyped ? operations->number : RegisterOf(*operations);
        const std::optional<Type> type = isTyped ? TypeOf(*operations) : Type();
        const std::optional<std::uint64_t> held = number ? m_frame.AtEntry(*number) : std::nullopt;
        m_isRelative = true;
        if (held && type)
            m_stack.push_back({Extended(*held, *type), *type});
        return held && type;
    }

    bool Call(const Dwarf_Op& operation)
    {
        Dwarf_Die die;
        Dwarf_Attribute location;
        Dwarf_Op* operations = nullptr;
        std::size_t count = 0;
        if (m_elfutils.dwarf_getlocation_die(m_attribute, &operation, &die) != 0)
            return false;
        if (m_elfutils.dwarf_attr(&die, DW_AT_location, &location) == nullptr)
            return true;
        if (m_elfutils.dwarf_getlocation_addr(&location, m_frame.ProgramCounter(), &operations, &count, 1) != 1)
            return false;
        Machine callee(m_elfutils, m_frame, &location);
        callee.m_stack = m_stack;
        const std::optional<Item> result = callee.Run({operations, count}, m_depth + 1);
        m_isRelative = m_isRelative || callee.m_isRelative;
        if (!result)
            return false;
        m_stack = callee.m_stack;
        m_stack.push_back(*result);
        return true;
    }

    bool Typed(const Dwarf_Op& operation)
    {
        const unsigned atom = operation.atom;
        const std::optional<Type> type = TypeOf(operation);
        if (!type || type->size > sizeof(std::uint64_t))
            return false;
        if (IsOneOf(atom, {DW_OP_regval_type, DW_OP_GNU_regval_type}))
        {
            m_isRelative = true;
            const std::optional<std::uint64_t> value = m_frame.Register(operation.number);
            if (value)
                m_stack.push_back({Extended(*value, *type), *type});
            return value.has_value();
        }
        if (IsOneOf(atom, {DW_OP_deref_type, DW_OP_GNU_deref_type}))
            return Dereference(operation.number, *type);
        if (IsOneOf(atom, {DW_OP_const_type, DW_OP_GNU_const_type}))
        {
            Dwarf_Attribute constant;
            Dwarf_Block block;
            std::uint64_t bits = 0;
            if (m_elfutils.dwarf_getlocation_attr(m_attribute, &operation, &constant) != 0 ||
                m_elfutils.dwarf_formblock(&constant, &block) != 0 || block.length > sizeof(bits))
                return false;
            std::memcpy(&bits, block.data, block.length);
            m_stack.push_back({Extended(bits, *type), *type});
            return true;
        }
        const bool isConversion = IsOneOf(atom, {DW_OP_convert, DW_OP_GNU_convert});
        if (!isConversion && !IsOneOf(atom, {DW_OP_reinterpret, DW_OP_GNU_reinterpret}))
            return false;
        const std::optional<Item> item = Pop();
        if (item)
            m_stack.push_back(isConversion ? Converted(*item, *type) : Item{Extended(item->bits, *type), *type});
        return item.has_value();
    }

    std::optional<Type> TypeOf(const Dwarf_Op& operation)
    {
        if (IsOneOf(operation.atom, {DW_OP_convert, DW_OP_GNU_convert, DW_OP_reinterpret, DW_OP_GNU_reinterpret}) &&
            operation.number == 0)
            return Type();
        Dwarf_Die die;
        Dwarf_Attribute attribute;
        Dwarf_Word size = 0;
        Dwarf_Word encoding = 0;
        if (m_elfutils.dwarf_getlocation_die(m_attribute, &operation, &die) != 0 ||
            m_elfutils.dwarf_formudata(m_elfutils.dwarf_attr(&die, DW_AT_byte_size, &attribute), &size) != 0 ||
            m_elfutils.dwarf_formudata(m_elfutils.dwarf_attr(&die, DW_AT_encoding, &attribute), &encoding) != 0)
            return std::nullopt;
        return Type{size, static_cast<unsigned>(encoding)};
    }

    static Item Converted(const Item& item, Type type)
    {
        if (item.type.IsFloating() && type.IsFloating())
            return OfNumber(item.Number(), type);
        if (item.type.IsFloating())
        {
            const double number = item.Number();
            if (!(number > -0x1p63 && number < 0x1p64)) // it has no integer
                return {0, type};
            return {Extended(number < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(number))
                                        : static_cast<std::uint64_t>(number),
                             type),
                    type};
        }
        if (type.IsFloating())
            return OfNumber(item.type.IsSigned() ? static_cast<double>(static_cast<std::int64_t>(item.bits))
                                                 : static_cast<double>(item.bits),
                            type);
        return {Extended(item.bits, type), type};
    }

    const Elfutils& m_elfutils;
    const ExpressionFrame& m_frame;
    Dwarf_Attribute* m_attribute;
    std::vector<Item> m_stack;
    unsigned m_depth = 0;
    bool m_isRelative = false;
};

std::vector<std::byte> BytesOf(const Item& item, std::size_t size)
{
    std::vector<std::byte> bytes(size, item.type.IsSigned() && item.bits >> 63 != 0 ? std::byte(0xff) : std::byte());
    std::memcpy(bytes.data(), &item.bits, std::min(size, sizeof(item.bits)));
    return bytes;
}

/// A location that is of one piece.
class Part
{
public:
    Part(const Elfutils& elfutils, const ExpressionFrame& frame, Dwarf_Attribute* attribute)
        : m_elfutils(elfutils), m_frame(frame), m_attribute(attribute)
    {
    }

    std::optional<Location> Locate(Operations operations, std::size_t size) const
    {
        if (operations.empty())
            return std::nullopt;
        const Dwarf_Op& first = operations.front();
        if (const std::optional<std::uint64_t> number = RegisterOf(first))
            return InRegister(*number);
        Location location;
        if (first.atom == DW_OP_implicit_value)
        {
            Dwarf_Block block;
            if (m_attribute == nullptr || m_elfutils.dwarf_getlocation_implicit_value(m_attribute, &first, &block) != 0)
                return std::nullopt;
            const auto* const begin = reinterpret_cast<const std::byte*>(block.data);
            location.kind = Location::Kind::bytes;
            location.bytes.assign(begin, begin + block.length);
            return location;
        }
        Machine machine(m_elfutils, m_frame, m_attribute);
        const std::optional<Item> item = machine.Run(operations);
        if (!item)
            return std::nullopt;
        if (operations.back().atom == DW_OP_stack_value)
        {
            location.kind = Location::Kind::bytes;
            location.bytes = BytesOf(*item, size);
        }
        else
        {
            location.number = item->bits;
            location.isRelative = machine.IsRelative();
        }
        return location;
    }

private:
    std::optional<Location> InRegister(std::uint64_t number) const
    {
        if (!m_frame.Register(number))
            return std::nullopt;
        return Location{Location::Kind::reg, number, false, {}};
    }

    const Elfutils& m_elfutils;
    const ExpressionFrame& m_frame;
    Dwarf_Attribute* m_attribute;
};

}

std::optional<std::uint64_t> RegisterOf(const Dwarf_Op& operation)
{
    if (operation.atom >= DW_OP_reg0 && operation.atom <= DW_OP_reg31)
        return operation.atom - DW_OP_reg0;
    return operation.atom == DW_OP_regx ? std::optional(operation.number) : std::nullopt;
}

std::optional<std::uint64_t> Expression::Compute(const Dwarf_Op* operations, std::size_t count) const
{
    const std::optional<Item> item = Machine(m_elfutils, m_frame, m_attribute).Run({operations, count});
    return item ? std::optional(item->bits) : std::nullopt;
}

std::optional<Location> Expression::Locate(const Dwarf_Op* operations, std::size_t count, std::size_t size) const
{
    const Part part(m_elfutils, m_frame, m_attribute);
    Operations rest(operations, count);
    if (std::none_of(rest.begin(), rest.end(), IsPiece))
        return part.Locate(rest, size);

    Location whole;
    whole.kind = Location::Kind::bytes;
    while (!rest.empty())
    {
        const auto end = std::find_if(rest.begin(), rest.end(), IsPiece);
        if (end == rest.end())
            return std::nullopt;
        const bool isOfBits = end->atom == DW_OP_bit_piece;
        if (isOfBits && (end->number % 8 != 0 || end->number2 != 0))
            return std::nullopt;
        const std::uint64_t pieceSize = isOfBits ? end->number / 8 : end->number;
        if (pieceSize > size - std::min(size, whole.bytes.size()))
            return std::nullopt;
        const std::size_t begin = whole.bytes.size();
        whole.bytes.resize(begin + pieceSize);
        const std::span bytes(whole.bytes.begin() + static_cast<std::ptrdiff_t>(begin), whole.bytes.end());
        const auto found = part.Locate({rest.begin(), end}, pieceSize);
        const bool isKnown = found && Copy(*found, bytes);
        // Of a thing whose beginning is not known there is nothing to show. What is missing farther on is zero.
        if (!isKnown && begin == 0)
            return std::nullopt;
        rest = {end + 1, rest.end()};
    }
    whole.bytes.resize(size);
    return whole;
}

bool Expression::Copy(const Location& location, std::span<std::byte> bytes) const
{
    switch (location.kind)
    {
    case Location::Kind::memory:
        return ReadReportedProcess(location.number, bytes.data(), bytes.size()) == bytes.size();
    case Location::Kind::reg:
    {
        const std::optional<std::uint64_t> value = m_frame.Register(location.number);
        if (value)
            std::memcpy(bytes.data(), &*value, std::min(bytes.size(), sizeof(*value)));
        return value.has_value();
    }
    case Location::Kind::bytes:
        std::copy_n(location.bytes.begin(), std::min(bytes.size(), location.bytes.size()), bytes.begin());
        return true;
    }
    return false;
}

}

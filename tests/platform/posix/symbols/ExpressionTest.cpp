#include "utility/platform/posix/symbols/Expression.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <dwarf.h>
#include <iterator>
#include <optional>
#include <utility>
#include <vector>

using namespace utility::platform::posix;

namespace
{

class FixedFrame final : public ExpressionFrame
{
public:
    std::optional<std::uint64_t> Register(std::uint64_t number) const override
    {
        return number < 8 ? std::optional(100 * number) : std::nullopt;
    }
    std::optional<std::uint64_t> CallFrameAddress() const override { return 5000; }
    std::optional<std::uint64_t> FrameBase() const override { return 6000; }
    std::optional<std::uint64_t> AtEntry(std::uint64_t) const override { return std::nullopt; }
    std::uint64_t Bias() const override { return 0x10000; }
    std::uint64_t ProgramCounter() const override { return 0; }
};

struct ComputedNumber
{
    const char* what;
    std::vector<Dwarf_Op> operations;
    std::optional<std::int64_t> number;
};

Dwarf_Op Operation(int atom, std::int64_t number = 0, std::int64_t number2 = 0, std::uint64_t offset = 0)
{
    return {static_cast<std::uint8_t>(atom), static_cast<Dwarf_Word>(number), static_cast<Dwarf_Word>(number2), offset};
}

Dwarf_Op Number(std::int64_t number) { return Operation(DW_OP_consts, number); }

class ExpressionNumber : public testing::TestWithParam<ComputedNumber>
{
};

TEST_P(ExpressionNumber, IsWhatTheOperationsCompute)
{
    const Elfutils* const elfutils = Elfutils::Loaded();
    ASSERT_NE(elfutils, nullptr);
    const FixedFrame frame;
    const auto& [what, operations, number] = GetParam();
    const std::optional<std::uint64_t> computed =
        Expression(*elfutils, frame).Compute(operations.data(), operations.size());
    EXPECT_EQ(computed ? std::optional(static_cast<std::int64_t>(*computed)) : std::nullopt, number);
}

const std::int64_t word = 77;

INSTANTIATE_TEST_SUITE_P(
    Operations, ExpressionNumber,
    testing::Values(
        ComputedNumber{"Literal", {Operation(DW_OP_lit0 + 9)}, 9},
        ComputedNumber{"AddressIsMovedWithTheModule", {Operation(DW_OP_addr, 0x20)}, 0x10020},
        ComputedNumber{"RegisterAndOffset", {Operation(DW_OP_breg0 + 3, -1)}, 299},
        ComputedNumber{"RegisterThatIsNotKnown", {Operation(DW_OP_breg0 + 9)}, {}},
        ComputedNumber{"FrameBase", {Operation(DW_OP_fbreg, -20)}, 5980},
        ComputedNumber{"FrameAddress", {Operation(DW_OP_call_frame_cfa)}, 5000}, ComputedNumber{"Nothing", {}, {}},
        ComputedNumber{"Minus", {Number(3), Number(10), Operation(DW_OP_minus)}, -7},
        ComputedNumber{"DivisionHasASign", {Number(-7), Number(2), Operation(DW_OP_div)}, -3},
        ComputedNumber{"DivisionByZero", {Number(1), Number(0), Operation(DW_OP_div)}, {}},
        ComputedNumber{"SmallestByMinusOne", {Number(INT64_MIN), Number(-1), Operation(DW_OP_div)}, INT64_MIN},
        ComputedNumber{"RestHasNoSign", {Number(-1), Number(16), Operation(DW_OP_mod)}, 15},
        ComputedNumber{"ShiftedWithoutSign", {Number(-1), Number(60), Operation(DW_OP_shr)}, 15},
        ComputedNumber{"ShiftedWithSign", {Number(-16), Number(2), Operation(DW_OP_shra)}, -4},
        ComputedNumber{"ShiftedByAll", {Number(1), Number(64), Operation(DW_OP_shl)}, 0},
        ComputedNumber{"Compared", {Number(-1), Number(1), Operation(DW_OP_lt)}, 1},
        ComputedNumber{"Negated", {Number(5), Operation(DW_OP_neg)}, -5},
        ComputedNumber{"Absolute", {Number(-5), Operation(DW_OP_abs)}, 5},
        ComputedNumber{"Constant", {Number(5), Operation(DW_OP_plus_uconst, 4)}, 9},
        ComputedNumber{"Over", {Number(1), Number(2), Operation(DW_OP_over), Operation(DW_OP_minus)}, 1},
        ComputedNumber{"Swapped", {Number(1), Number(3), Operation(DW_OP_swap), Operation(DW_OP_minus)}, 2},
        ComputedNumber{
            "RotatedTopIsThird", {Number(1), Number(2), Number(3), Operation(DW_OP_rot), Operation(DW_OP_drop)}, 1},
        ComputedNumber{"PickedBelowTheStack", {Number(1), Operation(DW_OP_pick, 1)}, {}},
        ComputedNumber{"Memory",
                       {Operation(DW_OP_const8u, static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(&word))),
                        Operation(DW_OP_deref)},
                       77},
        ComputedNumber{"MemoryThatIsNotThere", {Number(8), Operation(DW_OP_deref)}, {}},
        ComputedNumber{"EndlessLoop", {Operation(DW_OP_skip, -3, 0, 0)}, {}},
        ComputedNumber{"Skipped", {Number(4), Operation(DW_OP_skip, 1, 0, 2), Operation(DW_OP_neg, 0, 0, 5)}, 4},
        ComputedNumber{"UnknownOperation", {Number(4), Operation(0xff)}, {}}),
    [](const auto& parameter) { return parameter.param.what; });

// Types as debugging information has them, each known by its number in an operation.

struct NumberType
{
    Dwarf_Word size;
    Dwarf_Word encoding;
};

constexpr NumberType types[] = {{},
                                {1, DW_ATE_signed_char},
                                {1, DW_ATE_unsigned_char},
                                {2, DW_ATE_signed},
                                {4, DW_ATE_signed},
                                {4, DW_ATE_unsigned},
                                {8, DW_ATE_signed},
                                {8, DW_ATE_unsigned},
                                {4, DW_ATE_float},
                                {8, DW_ATE_float}};
enum TypeNumber : std::int64_t
{
    signedChar = 1,
    unsignedChar,
    signedShort,
    signedInt,
    unsignedInt,
    signedLong,
    unsignedLong,
    singleFloat,
    doubleFloat,
};

/// Elfutils, but for what it is asked of a type.
Elfutils ElfutilsOfTypes(const Elfutils& real)
{
    Elfutils elfutils = real;
    elfutils.dwarf_getlocation_die = [](Dwarf_Attribute*, const Dwarf_Op* operation, Dwarf_Die* die)
    {
        const bool isConversion = operation->atom == DW_OP_convert || operation->atom == DW_OP_reinterpret;
        die->addr = const_cast<NumberType*>(&types[isConversion ? operation->number : operation->number2]);
        return 0;
    };
    elfutils.dwarf_attr = [](Dwarf_Die* die, unsigned name, Dwarf_Attribute* attribute)
    {
        const auto& type = *static_cast<const NumberType*>(die->addr);
        attribute->valp = reinterpret_cast<unsigned char*>(
            const_cast<Dwarf_Word*>(name == DW_AT_byte_size ? &type.size : &type.encoding));
        return attribute;
    };
    elfutils.dwarf_formudata = [](Dwarf_Attribute* attribute, Dwarf_Word* value)
    {
        *value = *reinterpret_cast<const Dwarf_Word*>(attribute->valp);
        return 0;
    };
    return elfutils;
}

Dwarf_Op To(TypeNumber type) { return Operation(DW_OP_convert, type); }

class TypedExpressionNumber : public testing::TestWithParam<ComputedNumber>
{
};

TEST_P(TypedExpressionNumber, IsWhatItsTypeMakesOfIt)
{
    ASSERT_NE(Elfutils::Loaded(), nullptr);
    const Elfutils elfutils = ElfutilsOfTypes(*Elfutils::Loaded());
    const FixedFrame frame;
    Dwarf_Attribute attribute = {};
    const auto& [what, operations, number] = GetParam();
    const std::optional<std::uint64_t> computed =
        Expression(elfutils, frame, &attribute).Compute(operations.data(), operations.size());
    EXPECT_EQ(computed ? std::optional(static_cast<std::int64_t>(*computed)) : std::nullopt, number);
}

const std::int16_t shortNumber = -5;
const std::int64_t addressOfShort = static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(&shortNumber));

INSTANTIATE_TEST_SUITE_P(
    Operations, TypedExpressionNumber,
    testing::Values(
        ComputedNumber{"SignOfASmallOne", {Number(200), To(signedChar)}, -56},
        ComputedNumber{"NoSignOfASmallOne", {Number(-1), To(unsignedChar)}, 255},
        ComputedNumber{"SignIsKeptInALargerOne", {Number(200), To(signedChar), To(signedLong)}, -56},
        ComputedNumber{"SignIsLostInALargerOne", {Number(-1), To(unsignedInt), To(signedLong)}, 0xFFFFFFFF},
        ComputedNumber{"Register", {Operation(DW_OP_regval_type, 2, signedChar)}, -56},
        ComputedNumber{"RegisterThatIsNotKnown", {Operation(DW_OP_regval_type, 9, signedChar)}, {}},
        ComputedNumber{"Memory", {Number(addressOfShort), Operation(DW_OP_deref_type, 2, signedShort)}, -5},
        ComputedNumber{"SumBeyondTheEnd",
                       {Number(0x7FFFFFFF), To(signedInt), Number(1), To(signedInt), Operation(DW_OP_plus)},
                       -0x80000000LL},
        ComputedNumber{"DifferenceBelowZero",
                       {Number(0), To(unsignedInt), Number(1), To(unsignedInt), Operation(DW_OP_minus)},
                       0xFFFFFFFF},
        ComputedNumber{"NegatedSmallest", {Number(-128), To(signedChar), Operation(DW_OP_neg)}, -128},
        ComputedNumber{
            "DivisionWithSign", {Number(-7), To(signedInt), Number(2), To(signedInt), Operation(DW_OP_div)}, -3},
        ComputedNumber{"DivisionWithoutSign",
                       {Number(-7), To(unsignedLong), Number(2), To(unsignedLong), Operation(DW_OP_div)},
                       0x7FFFFFFFFFFFFFFC},
        ComputedNumber{"RestWithSign", {Number(-7), To(signedInt), Number(2), To(signedInt), Operation(DW_OP_mod)}, -1},
        ComputedNumber{
            "LessWithSign", {Number(200), To(signedChar), Number(1), To(signedChar), Operation(DW_OP_lt)}, 1},
        ComputedNumber{
            "LessWithoutSign", {Number(-1), To(unsignedLong), Number(1), To(unsignedLong), Operation(DW_OP_lt)}, 0},
        ComputedNumber{"ShiftedWithoutSign", {Number(-16), To(signedInt), Number(28), Operation(DW_OP_shr)}, 15},
        ComputedNumber{"ShiftedWithSign", {Number(-16), To(signedInt), Number(2), Operation(DW_OP_shra)}, -4},
        ComputedNumber{"FloatingQuotient",
                       {Number(-7), To(signedInt), To(doubleFloat), Number(2), To(doubleFloat), Operation(DW_OP_div),
                        To(signedInt)},
                       -3},
        ComputedNumber{
            "FloatingFromUnsigned", {Number(-1), To(unsignedInt), To(doubleFloat), To(signedLong)}, 0xFFFFFFFF},
        ComputedNumber{"FloatingIsRounded", {Number(0x1000001), To(singleFloat), To(signedInt)}, 0x1000000},
        ComputedNumber{
            "BitsOfAFloatingOne", {Number(1), To(singleFloat), Operation(DW_OP_reinterpret, unsignedInt)}, 0x3F800000}),
    [](const auto& parameter) { return parameter.param.what; });

TEST(TypedExpression, ValueIsAsLongAsItsVariable)
{
    ASSERT_NE(Elfutils::Loaded(), nullptr);
    const Elfutils elfutils = ElfutilsOfTypes(*Elfutils::Loaded());
    const FixedFrame frame;
    Dwarf_Attribute attribute = {};
    for (const auto& [type, rest] : {std::pair(signedInt, std::byte(0xFF)), std::pair(unsignedInt, std::byte(0))})
    {
        const Dwarf_Op operations[] = {Number(-2), To(type), Operation(DW_OP_stack_value)};
        const std::optional<Location> location =
            Expression(elfutils, frame, &attribute).Locate(operations, std::size(operations), 16);
        ASSERT_TRUE(location);
        std::vector<std::byte> expected(16, rest);
        std::fill_n(expected.begin(), 4, std::byte(0xFF));
        expected[0] = std::byte(0xFE);
        EXPECT_EQ(location->bytes, expected);
    }
}

}

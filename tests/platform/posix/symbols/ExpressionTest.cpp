#include "utility/platform/posix/symbols/Expression.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <dwarf.h>
#include <optional>
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

}

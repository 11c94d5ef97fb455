#pragma once

#include "utility/platform/posix/symbols/Expression.h"
#include "utility/platform/posix/symbols/Unwinder.h"

#include <functional>
#include <map>
#include <optional>
#include <utility>

namespace utility::platform::posix
{

/// A parameter or a local variable that has a value.
struct Variable
{
    const char* name = nullptr;
    Dwarf_Die type;
    bool isParameter = false;
    bool isConstant = false;
    Location location;
};

/// What registers held when a function was entered, by the address of its frame, as far as it was asked for.
using EntryValues = std::map<std::pair<std::uint64_t, std::uint64_t>, std::optional<std::uint64_t>>;

/// Evaluates what debugging information tells of a frame's variables.
class Variables final : public ExpressionFrame
{
public:
    Variables(const Elfutils& elfutils, Program& program, const Unwinder& unwinder, EntryValues& entries,
              const Frame& frame)
        : Variables(elfutils, program, unwinder, entries, frame, 0)
    {
    }

    /// Those of a function that has the frame, or is inlined in the one that has it.
    void Each(const Function& function, const std::function<void(const Variable&)>& visit) const;

    std::optional<std::uint64_t> Register(std::uint64_t number) const override { return m_frame.registers[number]; }
    std::optional<std::uint64_t> CallFrameAddress() const override { return m_frame.address; }
    std::optional<std::uint64_t> FrameBase() const override;
    std::optional<std::uint64_t> AtEntry(std::uint64_t number) const override;
    std::uint64_t Bias() const override { return m_code.bias; }
    std::uint64_t ProgramCounter() const override { return m_code.FileAddress(); }

private:
    Variables(const Elfutils& elfutils, Program& program, const Unwinder& unwinder, EntryValues& entries,
              const Frame& frame, unsigned depth)
        : m_elfutils(elfutils),
          m_program(program),
          m_unwinder(unwinder),
          m_entries(entries),
          m_frame(frame),
          m_code(program.CodeAt(frame.LookUp())),
          m_depth(depth)
    {
    }

    void EachOfScope(Dwarf_Die scope, const std::function<void(const Variable&)>& visit) const;
    void Visit(Dwarf_Die die, const std::function<void(const Variable&)>& visit) const;
    std::optional<Location> Constant(Dwarf_Attribute& attribute, std::size_t size) const;
    std::optional<Location> Locate(Dwarf_Attribute& attribute, std::size_t size) const;
    std::optional<std::uint64_t> Compute(Dwarf_Die& die, unsigned attribute, unsigned earlierAttribute) const;

    std::optional<std::uint64_t> PassedIn(std::uint64_t number) const;
    /// The description of the call from which `callee` is to return.
    std::optional<Dwarf_Die> CallOf(const Variables& callee) const;
    bool Calls(Dwarf_Die& call, const Variables& callee) const;
    std::optional<std::uint64_t> Passed(Dwarf_Die call, std::uint64_t number) const;

    const Elfutils& m_elfutils;
    Program& m_program;
    const Unwinder& m_unwinder;
    EntryValues& m_entries;
    const Frame& m_frame;
    const Code& m_code;
    const unsigned m_depth;
};

}

#pragma once

#include "utility/platform/posix/symbols/Program.h"
#include "utility/platform/posix/symbols/Registers.h"

#include <cstdint>
#include <optional>

namespace utility::platform::posix
{

/// A call on the stack, with all the functions that are inlined in it.
struct Frame
{
    Registers registers;
    bool isCall = false;       ///< what is running is a call: the program counter is behind it
    std::uint64_t address = 0; ///< the canonical frame address
    std::optional<Registers> caller;
    bool isCallersCall = true;

    std::uint64_t ProgramCounter() const { return registers[Registers::programCounter].value_or(0); }
    /// An address of what is running, be it the last instruction of the function.
    std::uint64_t LookUp() const { return ProgramCounter() - (isCall ? 1 : 0); }
};

/// Finds out who called whom, by call frame information, and where there is none by the chain of frame pointers.
class Unwinder
{
public:
    Unwinder(const Elfutils& elfutils, const Program& program) : m_elfutils(elfutils), m_program(program) {}

    /// The one that was running.
    Frame First(const Registers& registers) const;
    /// Nothing at the end of the stack.
    std::optional<Frame> CallerOf(const Frame& frame) const;

private:
    void FindCaller(Frame& frame) const;
    bool ByInformation(Frame& frame, Dwarf_CFI* information, std::uint64_t bias) const;

    const Elfutils& m_elfutils;
    const Program& m_program;
};

}

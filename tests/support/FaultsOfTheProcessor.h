#pragma once

#include "tests/support/KeepFloatingControl.h"
#include "utility/platform/FloatingPoint.h"
#include "utility/platform/Types.h"

#include <cstdint>
#include <string>

namespace support
{

// Each does what its name says, and the compiler does not see it come.

inline int ReadAt(std::uintptr_t address) { return *reinterpret_cast<volatile int*>(address); }
inline void WriteAt(std::uintptr_t address) { *reinterpret_cast<volatile int*>(address) = 1; }
inline void CallAt(std::uintptr_t address)
{
    void (*volatile function)() = reinterpret_cast<void (*)()>(address);
    function();
}
inline int DivideByNothing()
{
    volatile int dividend = 1;
    volatile int divisor = 0;
    volatile int result = dividend / divisor;
    return result;
}
/// With the conditions unmasked that _controlfp calls so.
[[gnu::noinline]] inline double DivideUnmasked(double dividend, double divisor, unsigned int conditions)
{
    utility::platform::FloatingControl(0, conditions);
    volatile double result = dividend / divisor;
    return result;
}
inline void ExecuteNoInstruction() { asm volatile("ud2"); }
/// In a function without a frame, whose stack is not aligned as at a call.
[[gnu::naked]] inline void ExecuteNoInstructionWithoutAFrame() { asm volatile("ud2\n\tret"); }
inline void ExecuteInstructionOfTheKernel() { asm volatile("hlt"); }
inline void Breakpoint() { asm volatile("int3"); }

/// Calls itself until the stack is at its end.
[[gnu::noinline]] inline int ExhaustStack(int depth = 0)
{
    volatile char frame[1000];
    frame[0] = static_cast<char>(depth);
    return depth < 0 ? 0 : ExhaustStack(depth + 1) + frame[0];
}

}

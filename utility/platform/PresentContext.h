#pragma once

#include "utility/platform/ExceptionRecord.h"

#include <cstdint>

namespace utility::platform
{

/// The registers of the function that calls this, from which a walk over its stack can begin.
[[gnu::always_inline]] inline void CapturePresentContext(_CONTEXT& context) noexcept
{
#ifdef _WIN32
    ::RtlCaptureContext(&context);
#else
    asm volatile("leaq 0(%%rip), %%rax\n\t"
                 "movq %%rax, %0\n\t"
                 "movq %%rsp, %1\n\t"
                 "movq %%rbp, %2\n\t"
                 "movq %%rbx, %3\n\t"
                 "movq %%r12, %4\n\t"
                 "movq %%r13, %5\n\t"
                 "movq %%r14, %6\n\t"
                 "movq %%r15, %7"
                 : "=m"(context.Rip), "=m"(context.Rsp), "=m"(context.Rbp), "=m"(context.Rbx), "=m"(context.R12),
                   "=m"(context.R13), "=m"(context.R14), "=m"(context.R15)
                 :
                 : "rax");
#endif
}

}

#include "utility/platform/posix/symbols/Registers.h"

namespace utility::platform::posix
{

Registers::Registers(const _CONTEXT& context)
    : m_values{context.Rax, context.Rdx, context.Rcx, context.Rbx, context.Rsi, context.Rdi,
               context.Rbp, context.Rsp, context.R8,  context.R9,  context.R10, context.R11,
               context.R12, context.R13, context.R14, context.R15, context.Rip}
{
    for (std::size_t i = 0; i < 16; ++i)
        m_values[vectors + i] = context.Xmm[i];
}

std::uint32_t Registers::CodeView(std::uint64_t number)
{
    // RAX 328, RBX 329, RCX 330, RDX 331, RSI 332, RDI 333, RBP 334, RSP 335, R8 336 and on, RIP 33.
    static constexpr std::uint16_t numbers[] = {328, 331, 330, 329, 332, 333, 334, 335, 336,
                                                337, 338, 339, 340, 341, 342, 343, 33};
    if (number < vectors)
        return numbers[number];
    // XMM0 to XMM7 154 and on, XMM8 252 and on.
    const auto vector = static_cast<std::uint32_t>(number - vectors);
    return vector < 8 ? 154 + vector : 252 + vector - 8;
}

}

#pragma once

#include "utility/platform/ExceptionRecord.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace utility::platform::posix
{

/// The registers of a frame, by the numbers that debugging information has for them. The upper half of a vector is
/// not kept.
class Registers
{
public:
    static constexpr std::size_t stackPointer = 7;
    static constexpr std::size_t programCounter = 16;
    static constexpr std::size_t vectors = 17;
    static constexpr std::size_t count = 33;

    Registers() = default;
    explicit Registers(const _CONTEXT& context);

    /// Nothing if it was overwritten since, or is none of these.
    std::optional<std::uint64_t> operator[](std::uint64_t number) const
    {
        return number < count ? m_values[number] : std::nullopt;
    }

    void Set(std::size_t number, std::optional<std::uint64_t> value) { m_values[number] = value; }

    /// CodeView's number of a register.
    static std::uint32_t CodeView(std::uint64_t number);

private:
    std::array<std::optional<std::uint64_t>, count> m_values;
};

}

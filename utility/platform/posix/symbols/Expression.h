#pragma once

#include "utility/platform/posix/symbols/Elfutils.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace utility::platform::posix
{

/// What an expression of debugging information may ask of the frame for which it is evaluated.
class ExpressionFrame
{
public:
    virtual std::optional<std::uint64_t> Register(std::uint64_t number) const = 0;
    /// Where the caller's stack pointer was ahead of its call: the canonical frame address.
    virtual std::optional<std::uint64_t> CallFrameAddress() const = 0;
    virtual std::optional<std::uint64_t> FrameBase() const = 0;
    /// What a register held when the function was entered.
    virtual std::optional<std::uint64_t> AtEntry(std::uint64_t number) const = 0;
    /// What has to be added to an address of the file.
    virtual std::uint64_t Bias() const = 0;
    /// As it was looked up: of the file.
    virtual std::uint64_t ProgramCounter() const = 0;

protected:
    ~ExpressionFrame() = default;
};

/// Where a variable is, or what it is.
struct Location
{
    enum class Kind
    {
        memory,
        reg,
        bytes, ///< nowhere, but this is what it would hold
    };

    Kind kind = Kind::memory;
    std::uint64_t number = 0; ///< of the register, or the address
    bool isRelative = false;  ///< the address was found by the frame
    std::vector<std::byte> bytes;
};

/// The register that an operation stands for.
std::optional<std::uint64_t> RegisterOf(const Dwarf_Op& operation);

/// Evaluates the expressions of one attribute, or those of call frame information, which are of none.
class Expression
{
public:
    Expression(const Elfutils& elfutils, const ExpressionFrame& frame, Dwarf_Attribute* attribute = nullptr)
        : m_elfutils(elfutils), m_frame(frame), m_attribute(attribute)
    {
    }

    /// The number that operations compute. Nothing if what they need is not known.
    std::optional<std::uint64_t> Compute(const Dwarf_Op* operations, std::size_t count) const;

    /// What a location description stands for, a thing of `size` bytes.
    std::optional<Location> Locate(const Dwarf_Op* operations, std::size_t count, std::size_t size) const;

private:
    bool Copy(const Location& location, std::span<std::byte> bytes) const;

    const Elfutils& m_elfutils;
    const ExpressionFrame& m_frame;
    Dwarf_Attribute* m_attribute;
};

}

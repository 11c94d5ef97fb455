#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace executables
{

/// The bytes of an executable, or a part of them, in which every offset and every count may be anything. They belong
/// to the caller, and nothing outside them is read.
class Bytes
{
public:
    explicit Bytes(std::string_view bytes = {}, bool isBigEndian = false) : m_bytes(bytes), m_isBigEndian(isBigEndian)
    {
    }

    std::uint64_t Size() const { return m_bytes.size(); }

    bool Has(std::uint64_t at, std::uint64_t size) const { return at <= Size() && size <= Size() - at; }

    /// A number of up to eight bytes; 0 if they are not all there.
    std::uint64_t Number(std::uint64_t at, unsigned size) const
    {
        std::uint64_t number = 0;
        for (unsigned i = 0; Has(at, size) && i < size; ++i)
            number = number << 8 | static_cast<unsigned char>(m_bytes[at + (m_isBigEndian ? i : size - 1 - i)]);
        return number;
    }

    /// None if it is not all there.
    Bytes Part(std::uint64_t at, std::uint64_t size) const
    {
        return Bytes(Has(at, size) ? m_bytes.substr(at, size) : std::string_view(), m_isBigEndian);
    }

    /// What is there of a part.
    Bytes Rest(std::uint64_t at) const { return Part(at, Size() - std::min(at, Size())); }

    /// A text up to its null or the end. A file may name one text any number of times: a long one is cut.
    std::string Text(std::uint64_t at) const
    {
        constexpr std::size_t longest = 255;
        const std::string_view text = Rest(at).m_bytes.substr(0, longest);
        return std::string(text.substr(0, text.find('\0')));
    }

    bool IsBigEndian() const { return m_isBigEndian; }

private:
    std::string_view m_bytes;
    bool m_isBigEndian;
};

}

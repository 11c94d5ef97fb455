#pragma once

#include "utility/codec/BlastDecoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace support
{

/// A prefix code: how many symbols there are of each length in bits, and all of them in the order of their codes.
class BlastCode
{
public:
    static const BlastCode& Literals()
    {
        static const BlastCode code(
            {11, 124, 8,  7,  28, 7,  188, 13,  76,  4,   10,  8,   12, 10, 12, 10, 8,  23, 8,  9,  7,  6,  7,  8,  7,
             6,  55,  8,  23, 24, 12, 11,  7,   9,   11,  12,  6,   7,  22, 5,  7,  24, 6,  11, 9,  6,  7,  22, 7,  11,
             38, 7,   9,  8,  25, 11, 8,   11,  9,   12,  8,   12,  5,  38, 5,  38, 5,  11, 7,  5,  6,  21, 6,  10, 53,
             8,  7,   24, 10, 27, 44, 253, 253, 253, 252, 252, 252, 13, 12, 45, 12, 45, 12, 61, 12, 45, 44, 173});
        return code;
    }

    static const BlastCode& Lengths()
    {
        static const BlastCode code({2, 35, 36, 53, 38, 23});
        return code;
    }

    static const BlastCode& Distances()
    {
        static const BlastCode code({2, 20, 53, 230, 247, 151, 248});
        return code;
    }

    std::array<int, 14> counts = {};
    std::vector<int> symbols;

private:
    explicit BlastCode(const std::vector<int>& runs)
    {
        std::vector<int> lengths;
        for (const int run : runs)
            lengths.insert(lengths.end(), static_cast<std::size_t>(run) / 16 + 1, run % 16);
        for (std::size_t length = 1; length < counts.size(); ++length)
        {
            for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol)
            {
                if (lengths[symbol] != static_cast<int>(length))
                    continue;
                ++counts[length];
                symbols.push_back(static_cast<int>(symbol));
            }
        }
    }
};

inline constexpr std::array<int, 16> blastLengths = {3, 2, 4, 5, 6, 7, 8, 9, 10, 12, 16, 24, 40, 72, 136, 264};
inline constexpr std::array<int, 16> blastExtraBits = {0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};
inline constexpr int blastEndMark = 519; // a length

/// The expanding of an imploded stream, slow and obvious: one bit at a time, over a window that wraps around.
class BlastModel
{
public:
    BlastModel(BlastInput input, void* context) : m_input(input), m_context(context) {}

    int Init()
    {
        try
        {
            m_literalMode = Bits(8);
            if (m_literalMode > 1)
                return -1;
            m_dictionaryBits = Bits(8);
            return m_dictionaryBits < 4 || m_dictionaryBits > 6 ? -2 : 0;
        }
        catch (const NoInput&)
        {
            return 2;
        }
    }

    int More(void* buffer, std::uint64_t size, std::uint64_t& stored)
    {
        int result = IsAtEnd() ? 1 : 0;
        stored = 0;
        if (size == 0)
            return result;
        while (result == 0 && stored < size)
        {
            if (m_read == m_write)
            {
                result = Refill();
                if (result != 0)
                    break;
                if (m_read == m_write)
                    continue;
            }
            const auto count = std::min<std::uint64_t>(m_write - m_read, size - stored);
            std::copy_n(m_window.data() + m_read, count, static_cast<unsigned char*>(buffer) + stored);
            m_read += static_cast<unsigned int>(count);
            stored += count;
            if (IsAtEnd())
                break;
        }
        return result;
    }

    int EndMarkRead(std::uint64_t& size) const
    {
        if (m_isEndMarkRead)
            size = m_sizeAtEndMark;
        return m_isEndMarkRead ? 1 : 0;
    }

private:
    static constexpr unsigned int windowSize = 4096;

    class NoInput
    {
    };

    bool IsAtEnd() const { return m_copyLength == blastEndMark && m_read == m_write; }

    int Byte()
    {
        if (m_left == 0)
        {
            m_left = m_input(m_context, &m_next);
            if (m_left == 0)
                throw NoInput();
        }
        --m_left;
        return *m_next++;
    }

    int Bits(int count)
    {
        while (m_bitCount < count)
        {
            m_bits |= Byte() << m_bitCount;
            m_bitCount += 8;
        }
        const int value = m_bits & ((1 << count) - 1);
        m_bits >>= count;
        m_bitCount -= count;
        return value;
    }

    int Symbol(const BlastCode& all)
    {
        int code = 0;
        int first = 0;
        int index = 0;
        int bits = m_bits;
        int bitCount = m_bitCount;
        for (std::size_t length = 1;; ++length)
        {
            if (bitCount == 0)
            {
                bits = Byte();
                bitCount = 8;
            }
            code |= (bits & 1) ^ 1;
            bits >>= 1;
            --bitCount;
            const int count = all.counts[length];
            if (code < first + count)
            {
                m_bits = bits;
                m_bitCount = bitCount;
                return all.symbols[static_cast<std::size_t>(index + code - first)];
            }
            index += count;
            first = (first + count) * 2;
            code *= 2;
        }
    }

    int Refill()
    {
        m_size += m_write;
        m_read = 0;
        m_write = 0;
        try
        {
            const int result = Expand();
            if (result == 0)
                m_isFirstWindow = false;
            return result;
        }
        catch (const NoInput&)
        {
            return 2;
        }
    }

    int Expand()
    {
        while (m_write != windowSize)
        {
            if (m_isMatch == 0 || m_copyLength == 0)
                m_isMatch = Bits(1);
            if (m_isMatch == 0)
            {
                m_window[m_write] =
                    static_cast<unsigned char>(m_literalMode == 1 ? Symbol(BlastCode::Literals()) : Bits(8));
                ++m_write;
                continue;
            }
            if (m_copyLength == 0)
            {
                const auto symbol = static_cast<std::size_t>(Symbol(BlastCode::Lengths()));
                m_copyLength = Bits(blastExtraBits[symbol]) + blastLengths[symbol];
                if (m_copyLength == blastEndMark)
                {
                    if (!m_isEndMarkRead)
                        m_sizeAtEndMark = m_size + m_write;
                    m_isEndMarkRead = true;
                    return 0;
                }
                const int shift = m_copyLength == 2 ? 2 : m_dictionaryBits;
                const int high = Symbol(BlastCode::Distances()) << shift;
                m_copyDistance = static_cast<unsigned int>(high + Bits(shift) + 1);
                if (m_isFirstWindow && m_copyDistance > m_write)
                    return -3;
            }
            for (; m_copyLength != 0 && m_write != windowSize; --m_copyLength, ++m_write)
                m_window[m_write] = m_window[(m_write + windowSize - m_copyDistance) % windowSize];
        }
        return 0;
    }

    BlastInput m_input;
    void* m_context;
    const unsigned char* m_next = nullptr;
    std::uint32_t m_left = 0;
    int m_bits = 0;
    int m_bitCount = 0;
    int m_literalMode = 0;
    int m_dictionaryBits = 0;
    int m_isMatch = 0;
    int m_copyLength = 0;
    unsigned int m_copyDistance = 0;
    unsigned int m_read = 0;
    unsigned int m_write = 0;
    std::uint64_t m_size = 0; // ahead of the window
    std::uint64_t m_sizeAtEndMark = 0;
    bool m_isEndMarkRead = false;
    bool m_isFirstWindow = true;
    std::array<unsigned char, windowSize> m_window = {};
};

}

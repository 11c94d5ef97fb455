#pragma once

#include "tests/support/BlastModel.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace support
{

/// Writes an imploded stream, element by element.
class BlastWriter
{
public:
    BlastWriter(bool isCoded, int dictionaryBits) : m_isCoded(isCoded), m_dictionaryBits(dictionaryBits)
    {
        Bits(isCoded ? 1 : 0, 8);
        Bits(dictionaryBits, 8);
    }

    BlastWriter& Literal(char literal)
    {
        const auto byte = static_cast<unsigned char>(literal);
        Bits(0, 1);
        if (!m_isCoded)
            return Bits(byte, 8);
        static const std::vector<Symbol> literals = SymbolsOf(BlastCode::Literals());
        return Put(literals[byte]);
    }

    BlastWriter& Literals(std::string_view bytes)
    {
        for (const char byte : bytes)
            Literal(byte);
        return *this;
    }

    /// A length of 2 to 518, and a distance of at most Farthest(length).
    BlastWriter& Match(int length, int distance)
    {
        static const std::vector<Symbol> distances = SymbolsOf(BlastCode::Distances());
        Length(length);
        const int shift = Shift(length);
        return Put(distances[static_cast<std::size_t>((distance - 1) >> shift)]).Bits(distance - 1, shift);
    }

    BlastWriter& End() { return Length(blastEndMark); }

    BlastWriter& Length(int length)
    {
        static const std::vector<Symbol> lengths = SymbolsOf(BlastCode::Lengths());
        std::size_t symbol = 0;
        while (length < blastLengths[symbol] || length >= blastLengths[symbol] + (1 << blastExtraBits[symbol]))
            ++symbol;
        return Bits(1, 1).Put(lengths[symbol]).Bits(length - blastLengths[symbol], blastExtraBits[symbol]);
    }

    int Farthest(int length) const { return 64 << Shift(length); }

    /// The lowest bits of a value, the lowest first.
    BlastWriter& Bits(int value, int count)
    {
        for (int bit = 0; bit < count; ++bit, ++m_bitCount)
        {
            if (m_bitCount % 8 == 0)
                m_bytes += '\0';
            m_bytes.back() = static_cast<char>(m_bytes.back() | (value >> bit & 1) << m_bitCount % 8);
        }
        return *this;
    }

    std::size_t BitCount() const { return m_bitCount; }
    const std::string& Bytes() const { return m_bytes; }

private:
    struct Symbol
    {
        int bits;
        int count;
    };

    /// The bits of each symbol in the order of the stream, the first the lowest.
    static std::vector<Symbol> SymbolsOf(const BlastCode& code)
    {
        std::vector<Symbol> symbols(code.symbols.size());
        std::size_t index = 0;
        int next = 0;
        for (std::size_t length = 1; length < code.counts.size(); ++length, next *= 2)
        {
            for (int i = 0; i < code.counts[length]; ++i, ++next, ++index)
            {
                const int count = static_cast<int>(length);
                int bits = 0;
                for (int bit = 0; bit < count; ++bit)
                    bits |= (~next >> (count - 1 - bit) & 1) << bit;
                symbols[static_cast<std::size_t>(code.symbols[index])] = {bits, count};
            }
        }
        return symbols;
    }

    BlastWriter& Put(const Symbol& symbol) { return Bits(symbol.bits, symbol.count); }

    int Shift(int length) const { return length == 2 ? 2 : m_dictionaryBits; }

    bool m_isCoded;
    int m_dictionaryBits;
    std::string m_bytes;
    std::size_t m_bitCount = 0;
};

/// Implodes bytes: the longest match each time, among the last ones that begin with the same two bytes.
inline std::string Implode(std::string_view bytes, bool isCoded, int dictionaryBits)
{
    constexpr int mostTried = 100;
    constexpr std::size_t longest = 518;
    constexpr std::size_t none = SIZE_MAX;
    BlastWriter writer(isCoded, dictionaryBits);
    std::vector<std::size_t> last(65536, none);
    std::vector<std::size_t> earlier(bytes.size(), none);
    const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
    const auto pairAt = [&](std::size_t at) { return byteAt(at) + std::size_t{256} * byteAt(at + 1); };
    const auto remember = [&](std::size_t at)
    {
        if (at + 1 < bytes.size())
            earlier[at] = std::exchange(last[pairAt(at)], at);
    };
    for (std::size_t at = 0; at < bytes.size();)
    {
        const std::size_t most = std::min(longest, bytes.size() - at);
        std::size_t length = 1;
        std::size_t distance = 0;
        std::size_t candidate = most < 2 ? none : last[pairAt(at)];
        for (int tried = 0; candidate != none && tried < mostTried; ++tried, candidate = earlier[candidate])
        {
            std::size_t same = 2;
            while (same < most && bytes[candidate + same] == bytes[at + same])
                ++same;
            if (at - candidate > static_cast<std::size_t>(writer.Farthest(3)))
                break;
            if (same <= length || at - candidate > static_cast<std::size_t>(writer.Farthest(static_cast<int>(same))))
                continue;
            length = same;
            distance = at - candidate;
        }
        if (length == 1)
            writer.Literal(bytes[at]);
        else
            writer.Match(static_cast<int>(length), static_cast<int>(distance));
        for (std::size_t i = 0; i < length; ++i)
            remember(at + i);
        at += length;
    }
    return writer.End().Bytes();
}

}

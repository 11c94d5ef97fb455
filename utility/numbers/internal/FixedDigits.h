#pragma once

// The decimal digits of the magnitude of a double with a fixed number of places: its exact binary value rounded
// correctly, ties to even, whatever the thread's rounding direction. A FixedNumber is the usual one, FixedDigits any.
//
//     utility::detail::FixedNumber number;
//     if (number.Holds(1234.5678, 2))
//     {
//         wchar_t text[6];
//         number.WriteWhole(text);        // 1234
//         number.WriteFraction(text + 4); // 57
//     }

#include "utility/numbers/PowersOfTen.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>
#include <type_traits>

namespace utility::detail
{

__extension__ typedef unsigned __int128 Uint128; // NOLINT(modernize-use-using): an alias would be warned of

inline std::size_t CountDigits(std::uint64_t number)
{
    number |= 1; // 0 has a digit too; no other number gains one
    const auto atLeast = static_cast<unsigned>(std::bit_width(number)) * 1233U >> 12; // times log10(2)
    return atLeast + (number >= integerPowers[atLeast] ? 1 : 0);
}

/// The eight digits each of two numbers below 10^8, in bytes, the first in the lowest. All are found at once: the numbers
/// are split in halves until each has one digit, dividing by a multiplication and a shift.
inline Uint128 EightDigitsEach(std::uint64_t first, std::uint64_t second)
{
    const auto halves = [](__m128i all, __m128i upper, __m128i scale, int bits)
    { return _mm_or_si128(upper, _mm_slli_epi64(_mm_sub_epi16(all, _mm_mullo_epi16(upper, scale)), bits)); };
    __m128i all = _mm_set_epi64x(static_cast<std::int64_t>(second), static_cast<std::int64_t>(first));
    __m128i upper = _mm_srli_epi64(_mm_mul_epu32(all, _mm_set1_epi64x(3518437209)), 45); // by 10000
    all = _mm_or_si128(upper, _mm_slli_epi64(_mm_sub_epi32(all, _mm_mul_epu32(upper, _mm_set1_epi64x(10000))), 32));
    upper = _mm_srli_epi16(_mm_mulhi_epu16(all, _mm_set1_epi32(5243)), 3); // by 100
    all = halves(all, upper, _mm_set1_epi32(100), 16);
    upper = _mm_mulhi_epu16(all, _mm_set1_epi16(6554)); // by 10
    all = halves(all, upper, _mm_set1_epi16(10), 8);
    return static_cast<Uint128>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(all, all))) << 64 |
           static_cast<std::uint64_t>(_mm_cvtsi128_si64(all));
}

/// The sixteen digits of a number below 10^16.
inline Uint128 SixteenDigits(std::uint64_t number)
{
    constexpr std::uint64_t eight = 100'000'000;
    return EightDigitsEach(number / eight, number % eight);
}

/// What makes characters of digits.
inline constexpr Uint128 zeroCharacters = ~static_cast<Uint128>(0) / 255 * '0';

/// Eight bytes as characters.
template <class Char>
void WriteEight(Char* to, std::uint64_t bytes)
{
    if constexpr (sizeof(Char) == 1)
        std::memcpy(to, &bytes, sizeof bytes);
    else
    {
        const __m128i zero = _mm_setzero_si128();
        const __m128i pairs = _mm_unpacklo_epi8(_mm_cvtsi64_si128(static_cast<std::int64_t>(bytes)), zero);
        auto* const place = reinterpret_cast<__m128i*>(to);
        if constexpr (sizeof(Char) == 2)
            _mm_storeu_si128(place, pairs);
        else
        {
            _mm_storeu_si128(place, _mm_unpacklo_epi16(pairs, zero));
            _mm_storeu_si128(place + 1, _mm_unpackhi_epi16(pairs, zero));
        }
    }
}

/// Sixteen bytes as characters.
template <class Char>
void WriteSixteen(Char* to, Uint128 bytes)
{
    WriteEight(to, static_cast<std::uint64_t>(bytes));
    WriteEight(to + 8, static_cast<std::uint64_t>(bytes >> 64));
}

/// The first `count` bytes of sixteen as characters, and nothing behind them.
template <class Char>
void WriteBytes(Char* to, Uint128 bytes, std::size_t count)
{
    if (count >= 8)
    {
        // The two may overlap.
        WriteEight(to, static_cast<std::uint64_t>(bytes));
        WriteEight(to + count - 8, static_cast<std::uint64_t>(bytes >> 8 * (count - 8)));
        return;
    }
    Char eight[8];
    WriteEight(eight, static_cast<std::uint64_t>(bytes));
    if (count >= 4)
    {
        std::memcpy(to, eight, 4 * sizeof(Char));
        WriteEight(eight, static_cast<std::uint64_t>(bytes) >> 8 * (count - 4));
        std::memcpy(to + count - 4, eight, 4 * sizeof(Char));
        return;
    }
    for (std::size_t i = 0; i != count; ++i)
        to[i] = eight[i];
}

/// The same where there is room for sixteen characters, of which those behind are read and written back.
template <class Char>
void WriteFirst(Char* to, Uint128 bytes, std::size_t count)
{
    constexpr std::size_t all = 16;
    constexpr std::size_t atOnce = sizeof(__m128i) / sizeof(Char);
    // All bits set ahead of the end, none behind it.
    static constexpr auto masks = []
    {
        std::array<std::make_unsigned_t<Char>, 2 * all> made{};
        std::fill_n(made.begin(), all, static_cast<std::make_unsigned_t<Char>>(-1));
        return made;
    }();
    Char characters[all];
    WriteSixteen(characters, bytes);
    for (std::size_t i = 0; i != all; i += atOnce)
    {
        const auto at = [](auto* place) { return reinterpret_cast<const __m128i*>(place); };
        const __m128i mask = _mm_loadu_si128(at(masks.data() + all - count + i));
        const __m128i written = _mm_and_si128(mask, _mm_loadu_si128(at(characters + i)));
        const __m128i kept = _mm_andnot_si128(mask, _mm_loadu_si128(at(to + i)));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i), _mm_or_si128(written, kept));
    }
}

/// The `count` digits of a number that has no more, leading zeros included.
template <class Char>
void WriteDigits(Char* to, std::uint64_t number, std::size_t count)
{
    constexpr std::size_t atOnce = 16;
    for (; count > atOnce; number /= integerPowers[atOnce])
    {
        count -= atOnce;
        WriteBytes(to + count, SixteenDigits(number % integerPowers[atOnce]) ^ zeroCharacters, atOnce);
    }
    if (count != 0)
        WriteBytes(to, (SixteenDigits(number) ^ zeroCharacters) >> 8 * (atOnce - count), count);
}

/// One whose whole part is below 2^64, with up to nineteen places.
class FixedNumber
{
public:
    /// Takes a value, if it is such a one with so many places.
    bool Holds(double value, int decimals);

    /// At least 1.
    std::size_t WholeLength() const { return CountDigits(m_whole); }
    std::size_t FractionLength() const { return m_fractionLength; }

    /// Drops the zeros at the end of the fraction.
    void TrimFraction()
    {
        for (; m_fractionLength != 0 && m_fraction % 10 == 0; m_fraction /= 10)
            --m_fractionLength;
    }

    template <class Char>
    void WriteWhole(Char* to) const
    {
        WriteDigits(to, m_whole, WholeLength());
    }
    template <class Char>
    void WriteFraction(Char* to) const
    {
        WriteDigits(to, m_fraction, m_fractionLength);
    }

    /// A whole part of up to seven digits, a symbol and up to eight places as characters in sixteen bytes, with zeros
    /// behind the last place.
    Uint128 Bytes(unsigned char symbol) const
    {
        const std::size_t bits = 8 * WholeLength();
        const Uint128 characters =
            EightDigitsEach(m_whole, m_fraction * integerPowers[8 - m_fractionLength]) ^ zeroCharacters;
        const std::uint64_t whole = static_cast<std::uint64_t>(characters) >> (64 - bits);
        const auto fraction = static_cast<std::uint64_t>(characters >> 64);
        return static_cast<Uint128>(fraction >> (56 - bits)) << 64 | (fraction << 8 | symbol) << bits | whole;
    }

    /// Writes a whole part of up to seven digits, a symbol and nine to fifteen places. The parts overlap.
    template <class Char>
    void WriteManyPlaces(Char* to, Char symbol) const
    {
        const std::size_t wholeLength = WholeLength();
        const Uint128 whole = EightDigitsEach(m_whole, 0) ^ zeroCharacters;
        const Uint128 fraction = SixteenDigits(m_fraction) ^ zeroCharacters;
        WriteEight(to, static_cast<std::uint64_t>(whole) >> (64 - 8 * wholeLength));
        to += wholeLength;
        *to++ = symbol;
        WriteEight(to, static_cast<std::uint64_t>(fraction >> 8 * (16 - m_fractionLength)));
        WriteEight(to + m_fractionLength - 8, static_cast<std::uint64_t>(fraction >> 64));
    }

private:
    std::uint64_t m_whole = 0;
    std::uint64_t m_fraction = 0; ///< in units of the last place
    std::size_t m_fractionLength = 0;
};

inline bool FixedNumber::Holds(double value, int decimals)
{
    constexpr int bias = 1023;
    constexpr int mantissaBits = 52;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const int exponent = static_cast<int>(bits >> mantissaBits & 0x7FF);
    // The value is mantissa / 2^shift, but for the subnormal ones: to any place here they are as good as any tiny
    // value.
    const int shift = bias + mantissaBits - exponent;
    if (static_cast<unsigned>(decimals) >= integerPowers.size() || shift <= -12)
        return false;
    const std::uint64_t mantissa = (bits & ((1ULL << mantissaBits) - 1)) | 1ULL << mantissaBits;
    m_fractionLength = static_cast<std::size_t>(decimals);
    const std::uint64_t one = integerPowers[m_fractionLength];
    if (shift <= 0)
    {
        m_whole = mantissa << -shift;
        m_fraction = 0;
        return true;
    }

    // What is dropped, in units of 2^-64. Its last bit stands for all below.
    std::uint64_t dropped = 0;
    m_whole = 0;
    m_fraction = 0;
    if (shift < 64) [[likely]]
    {
        m_whole = mantissa >> shift;
        const Uint128 scaled = static_cast<Uint128>(mantissa << (64 - shift)) * one;
        m_fraction = static_cast<std::uint64_t>(scaled >> 64);
        dropped = static_cast<std::uint64_t>(scaled);
    }
    else if (shift < 128)
    {
        const Uint128 scaled = static_cast<Uint128>(mantissa) * one;
        const Uint128 rest = scaled << (128 - shift);
        m_fraction = static_cast<std::uint64_t>(scaled >> shift);
        dropped = static_cast<std::uint64_t>(rest >> 64) | (static_cast<std::uint64_t>(rest) != 0 ? 1 : 0);
    }
    // Without a branch, which would be a toss-up: ties go to even. Without places the last digit is that of the whole part.
    constexpr std::uint64_t half = 1ULL << 63;
    const std::uint64_t isOdd = (m_fraction ^ (m_whole & one)) & 1;
    m_fraction += dropped > half - isOdd ? 1 : 0;
    const std::uint64_t carry = m_fraction >= one ? 1 : 0;
    m_whole += carry;
    m_fraction -= one & (0 - carry);
    return true;
}

/// All digits of any finite value. With a negative number of places the whole part is rounded to tens, hundreds and so
/// on.
class FixedDigits
{
public:
    FixedDigits(double value, int decimals);
    FixedDigits(const FixedDigits&) = delete;
    FixedDigits& operator=(const FixedDigits&) = delete;

    /// At least 1.
    std::size_t WholeLength() const { return m_wholeLength; }
    /// How many of the places have a digit of their own; those behind them are zeros.
    std::size_t FractionLength() const { return m_fractionLength; }

    /// Drops the zeros at the end of the fraction.
    void TrimFraction()
    {
        while (m_fractionLength != 0 && m_text[m_wholeLength + m_fractionLength - 1] == '0')
            --m_fractionLength;
    }

    template <class Char>
    void WriteWhole(Char* to) const
    {
        std::copy_n(m_text, m_wholeLength, to);
    }
    template <class Char>
    void WriteFraction(Char* to) const
    {
        std::copy_n(m_text + m_wholeLength, m_fractionLength, to);
    }

private:
    static constexpr int longestWhole = 309;
    static constexpr int longestFraction = 1074;

    const char* m_text;
    std::size_t m_wholeLength;
    std::size_t m_fractionLength;
    char m_buffer[1 + longestWhole + 1 + longestFraction];
};

}

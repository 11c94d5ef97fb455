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
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace utility::detail
{

__extension__ typedef unsigned __int128 Uint128; // NOLINT(modernize-use-using): an alias would be warned of

inline std::size_t CountDigits(std::uint64_t number)
{
    number |= 1; // 0 has a digit too; no other number gains one
    const auto atLeast = static_cast<unsigned>(std::bit_width(number)) * 1233U >> 12; // times log10(2)
    return atLeast + (number >= integerPowers[atLeast] ? 1 : 0);
}

/// The sixteen digits of a number below 10^16, in bytes, the first in the lowest. All are found at once: the number is
/// split in halves until each has one digit, dividing by a multiplication and a shift.
inline Uint128 SixteenDigits(std::uint64_t number)
{
    constexpr std::uint64_t eight = 100'000'000;
    const auto halves = [](__m128i all, __m128i upper, __m128i scale, int bits)
    { return _mm_or_si128(upper, _mm_slli_epi64(_mm_sub_epi16(all, _mm_mullo_epi16(upper, scale)), bits)); };
    __m128i all = _mm_set_epi64x(static_cast<std::int64_t>(number % eight), static_cast<std::int64_t>(number / eight));
    __m128i upper = _mm_srli_epi64(_mm_mul_epu32(all, _mm_set1_epi64x(3518437209)), 45); // by 10000
    all = _mm_or_si128(upper, _mm_slli_epi64(_mm_sub_epi32(all, _mm_mul_epu32(upper, _mm_set1_epi64x(10000))), 32));
    upper = _mm_srli_epi16(_mm_mulhi_epu16(all, _mm_set1_epi32(5243)), 3); // by 100
    all = halves(all, upper, _mm_set1_epi32(100), 16);
    upper = _mm_mulhi_epu16(all, _mm_set1_epi16(6554)); // by 10
    all = halves(all, upper, _mm_set1_epi16(10), 8);
    return static_cast<Uint128>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(all, all))) << 64 |
           static_cast<std::uint64_t>(_mm_cvtsi128_si64(all));
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

/// One that is, without its point, below 2^64, as all are of which a double holds the digits.
class FixedNumber
{
public:
    /// Takes a value, if it is such a one with so many places.
    bool Holds(double value, int decimals);

    /// At least 1.
    std::size_t WholeLength() const { return std::max(CountDigits(m_number), m_fractionLength + 1) - m_fractionLength; }
    std::size_t FractionLength() const { return m_fractionLength; }

    /// Drops the zeros at the end of the fraction.
    void TrimFraction()
    {
        for (; m_fractionLength != 0 && m_number % 10 == 0; m_number /= 10)
            --m_fractionLength;
    }

    template <class Char>
    void WriteWhole(Char* to) const
    {
        WriteDigits(to, m_number / integerPowers[m_fractionLength], WholeLength());
    }
    template <class Char>
    void WriteFraction(Char* to) const
    {
        WriteDigits(to, m_number % integerPowers[m_fractionLength], m_fractionLength);
    }

    /// All of it in sixteen bytes, of which it must not need more.
    Uint128 Bytes() const { return Digits() ^ zeroCharacters; }
    /// The same with a symbol, behind seven digits at the most.
    Uint128 Bytes(unsigned char symbol) const
    {
        const Uint128 digits = Digits();
        const std::size_t bits = 8 * WholeLength();
        const std::uint64_t whole = static_cast<std::uint64_t>(digits) & ~(~0ULL << bits);
        return ((digits ^ whole) << 8 | whole | static_cast<std::uint64_t>(symbol ^ '0') << bits) ^ zeroCharacters;
    }

private:
    Uint128 Digits() const { return SixteenDigits(m_number) >> 8 * (16 - WholeLength() - m_fractionLength); }

    std::uint64_t m_number = 0;
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
    const Uint128 scaled = static_cast<Uint128>(mantissa) * integerPowers[static_cast<unsigned>(decimals)];
    m_fractionLength = static_cast<std::size_t>(decimals);

    // What is dropped, in units of 2^-64. Its last bit stands for all below.
    std::uint64_t dropped = 0;
    Uint128 number = 0;
    if (shift <= 0)
        number = scaled << -shift;
    else if (shift < 64)
    {
        number = scaled >> shift;
        dropped = static_cast<std::uint64_t>(scaled) << (64 - shift);
    }
    else if (shift < 128)
    {
        number = scaled >> shift;
        const Uint128 rest = scaled << (128 - shift);
        dropped = static_cast<std::uint64_t>(rest >> 64) | (static_cast<std::uint64_t>(rest) != 0 ? 1 : 0);
    }
    // Without a branch, which would be a toss-up: ties go to even.
    constexpr std::uint64_t half = 1ULL << 63;
    number += dropped > half - (static_cast<std::uint64_t>(number) & 1) ? 1 : 0;
    m_number = static_cast<std::uint64_t>(number);
    return number == m_number;
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

#pragma once

// The decimal digits of the magnitude of a double with a fixed number of places: its exact binary value rounded
// correctly, ties to even, whatever the thread's rounding direction.
//
//     utility::detail::FixedDigits digits(1234.5678, 2);
//     wchar_t text[8];
//     digits.WriteWhole(text);         // 1234
//     digits.WriteFraction(text + 4);  // 57

#include "utility/numbers/PowersOfTen.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace utility::detail
{

__extension__ typedef unsigned __int128 Uint128; // NOLINT(modernize-use-using): an alias would be warned of

inline std::size_t CountDigits(std::uint64_t number)
{
    number |= 1; // 0 has a digit too; no other number gains one
    const auto atLeast = static_cast<unsigned>(std::bit_width(number)) * 1233U >> 12; // times log10(2)
    return atLeast + (number >= integerPowers[atLeast] ? 1 : 0);
}

/// 00 to 99.
struct DigitPairs
{
    wchar_t pairs[100][2] = {};

    constexpr DigitPairs()
    {
        for (int i = 0; i < 100; ++i)
        {
            pairs[i][0] = static_cast<wchar_t>(L'0' + i / 10);
            pairs[i][1] = static_cast<wchar_t>(L'0' + i % 10);
        }
    }
};
inline constexpr DigitPairs digitPairs;

/// The last `count` digits of a number, leading zeros included.
inline void WriteDigits(wchar_t* to, std::uint64_t number, std::size_t count)
{
    for (; count >= 2; number /= 100)
    {
        count -= 2;
        std::memcpy(to + count, digitPairs.pairs[number % 100], sizeof digitPairs.pairs[0]);
    }
    if (count != 0)
        *to = static_cast<wchar_t>(L'0' + number % 10);
}

/// The eight digits of a number below 10^8. All are found at once, in the bytes of one integer, the first in the
/// lowest: it is split in halves until each has one digit, dividing by a multiplication and a shift.
inline void WriteEightDigits(wchar_t* to, std::uint64_t number)
{
    const std::uint64_t fours = number / 10000 | number % 10000 << 32;
    const std::uint64_t hundreds = fours * 10486 >> 20 & 0x0000'007F'0000'007F;
    const std::uint64_t pairs = hundreds | (fours - hundreds * 100) << 16;
    const std::uint64_t tens = pairs * 103 >> 10 & 0x000F'000F'000F'000F;
    const std::uint64_t digits = (tens | (pairs - tens * 10) << 8) + 0x3030'3030'3030'3030;
    std::uint8_t bytes[8];
    std::memcpy(bytes, &digits, sizeof bytes);
    for (int i = 0; i < 8; ++i)
        to[i] = bytes[i];
}

class FixedDigits
{
public:
    /// Of a finite value. Any number of places will do: with a negative one the whole part is rounded to tens, hundreds
    /// and so on.
    FixedDigits(double value, int decimals)
    {
        if (!FitsNumbers(value, decimals))
            SpellOut(value, decimals);
    }
    FixedDigits(const FixedDigits&) = delete;
    FixedDigits& operator=(const FixedDigits&) = delete;

    /// At least 1.
    std::size_t WholeLength() const { return m_wholeLength; }
    /// What WriteWhole needs, however few digits there are: lengths differ from number to number, and the usual ones
    /// are written without a loop.
    static constexpr std::size_t leastRoomForWhole = 8;
    void WriteWhole(wchar_t* to) const
    {
        if (m_text != nullptr)
            Widen(to, m_text, m_wholeLength);
        else if (m_wholeLength <= leastRoomForWhole)
            WriteEightDigits(to, m_whole * integerPowers[leastRoomForWhole - m_wholeLength]);
        else
            WriteDigits(to, m_whole, m_wholeLength);
    }

    /// How many of the places have a digit of their own; those behind them are zeros.
    std::size_t FractionLength() const { return m_fractionLength; }
    void WriteFraction(wchar_t* to) const
    {
        if (m_text != nullptr)
            Widen(to, m_text + m_wholeLength, m_fractionLength);
        else
            WriteDigits(to, m_fraction, m_fractionLength);
    }

    /// Drops the zeros at the end of the fraction.
    void TrimFraction();

private:
    static constexpr int longestWhole = 309;
    static constexpr int longestFraction = 1074;

    bool FitsNumbers(double value, int decimals);
    void SpellOut(double value, int decimals);
    static void Widen(wchar_t* to, const char* digits, std::size_t count);

    std::size_t m_wholeLength;
    std::size_t m_fractionLength;
    std::uint64_t m_whole;
    std::uint64_t m_fraction;
    const char* m_text = nullptr; ///< all digits, where two numbers do not hold them
    char m_buffer[1 + longestWhole + 1 + longestFraction];
};

/// The two numbers, if they hold the digits: magnitudes below 2^64 with 0 to 19 places.
inline bool FixedDigits::FitsNumbers(double value, int decimals)
{
    constexpr int bias = 1023;
    constexpr int mantissaBits = 52;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const int exponent = static_cast<int>(bits >> mantissaBits & 0x7FF);
    if (static_cast<unsigned>(decimals) >= integerPowers.size() || exponent >= bias + 64)
        return false;

    // The value is mantissa / 2^shift, but for the subnormal ones: to any place here they are as good as any tiny
    // value.
    const std::uint64_t mantissa = (bits & ((1ULL << mantissaBits) - 1)) | 1ULL << mantissaBits;
    const int shift = bias + mantissaBits - exponent;
    const std::uint64_t scale = integerPowers[static_cast<unsigned>(decimals)];
    m_whole = 0;
    m_fraction = 0;
    if (shift <= 0)
        m_whole = mantissa << -shift;
    else if (shift < 128)
    {
        // What is behind the point times the scale: exact in 128 bits. `rest` is what is dropped of it, in units of
        // 2^-128.
        Uint128 rest = 0;
        if (shift < 64)
        {
            m_whole = mantissa >> shift;
            const Uint128 scaled = static_cast<Uint128>(mantissa << (64 - shift)) * scale;
            m_fraction = static_cast<std::uint64_t>(scaled >> 64);
            rest = scaled << 64;
        }
        else
        {
            const Uint128 scaled = static_cast<Uint128>(mantissa) * scale;
            m_fraction = static_cast<std::uint64_t>(scaled >> shift);
            rest = scaled << (128 - shift);
        }
        constexpr Uint128 half = static_cast<Uint128>(1) << 127;
        // Without a branch, which would be a toss-up: ties go to even.
        const std::uint64_t oddness = (decimals == 0 ? m_whole : m_fraction) & 1;
        m_fraction += rest + oddness > half ? 1 : 0;
        if (m_fraction == scale)
        {
            m_fraction = 0;
            ++m_whole;
        }
    }
    m_wholeLength = CountDigits(m_whole);
    m_fractionLength = static_cast<std::size_t>(decimals);
    return true;
}

inline void FixedDigits::TrimFraction()
{
    if (m_text != nullptr)
    {
        while (m_fractionLength != 0 && m_text[m_wholeLength + m_fractionLength - 1] == '0')
            --m_fractionLength;
        return;
    }
    if (m_fraction == 0)
        m_fractionLength = 0;
    for (; m_fractionLength != 0 && m_fraction % 10 == 0; m_fraction /= 10)
        --m_fractionLength;
}

}

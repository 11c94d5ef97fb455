#pragma once

// The mantissa of a real while its characters are read: sign, whole part, point and fraction. The text cursor feeds it
// (records/TextRecordPtr.h); it knows nothing of lines and messages.
//
// A mispredicted branch costs several times what a digit costs, and where a number's sign, point and end stand cannot
// be predicted. So a mantissa is one loop for sign, whole part, point and fraction alike, whose only unpredictable
// branch is the one at its end: a table says for each character what it is, what may follow it and what it adds to a
// sum of all digits, and the state of the grammar is a set of bits that is and-ed with the table's. The sum up to the
// point is kept as it goes by; the fraction is what the rest of the sum amounts to.
//
// Whole part and fraction are each defined as a chain of doubles, x = x * 10.0 + digit. Up to 2^53 every step of such a
// chain is exact, so that an integer gives the same value, and RoundedChain takes the rest of the steps for a longer
// one. Where the integers might not hold the digits, or the line ends, LongMantissa goes on, by the same table, in
// doubles.

#include "utility/numbers/PowersOfTen.h"
#include "utility/platform/Export.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace utility::detail
{

/// What a character is to a mantissa.
struct alignas(4) MantissaCharacter // aligned, so that an index needs no multiplication
{
    std::uint8_t kind = 0;  ///< the one bit of MantissaState that allows it; none if it cannot be part of a mantissa
    std::uint8_t next = 0;  ///< the bits of MantissaState that it leaves
    std::uint8_t digit = 0; ///< its worth; a sign and a point are a 0, too
};

enum MantissaState : std::uint8_t
{
    mayBeDigit = 1,
    mayBePoint = 2, // as long as the whole part lasts
    mayBeSign = 4,
    isPositive = 8,
    mantissaStart = mayBeDigit | mayBePoint | mayBeSign | isPositive,
};

inline constexpr auto mantissaCharacters = []
{
    std::array<MantissaCharacter, 256> table{};
    // Deliberately as if a leading zero were not there: a sign may follow it.
    table['0'] = {mayBeDigit, mantissaStart, 0};
    for (std::uint8_t digit = 1; digit <= 9; ++digit)
        table[std::size_t{'0'} + digit] = {mayBeDigit, mayBeDigit | mayBePoint | isPositive, digit};
    table['+'] = {mayBeSign, mayBeDigit | mayBePoint | isPositive, 0};
    table['-'] = {mayBeSign, mayBeDigit | mayBePoint, 0};
    table['.'] = {mayBePoint, mayBeDigit | isPositive, 0};
    return table;
}();

inline const MantissaCharacter& ToMantissa(char c) { return mantissaCharacters[static_cast<unsigned char>(c)]; }

/// More characters would not fit into the sum.
inline constexpr int longestMantissa = 19;
static_assert(longestMantissa < integerPowers.size());

// What rounds is compiled with the library: a user may let a compiler make one operation, which rounds once, of a
// product and a sum.

/// What x = x * 10.0 + digit gives over the digits of an integer above 2^53.
UTILITY_API double RoundedChain(std::uint64_t digits);

/// What it gives over those of any integer.
inline double ChainOfDoubles(std::uint64_t digits)
{
    constexpr std::uint64_t exactLimit = std::uint64_t{1} << 53;
    return digits <= exactLimit ? static_cast<double>(static_cast<std::int64_t>(digits)) : RoundedChain(digits);
}

/// A mantissa of any length, over any number of lines.
class UTILITY_API LongMantissa
{
public:
    LongMantissa(unsigned int state, double whole, double fraction, std::int64_t fractionDigits)
        : m_state(state), m_whole(whole), m_fraction(fraction), m_fractionDigits(fractionDigits)
    {
    }

    bool Allows(char c) const { return (ToMantissa(c).kind & m_state) != 0; }
    void Add(char c);
    bool IsWhole() const { return (m_state & mayBePoint) != 0; }
    double Value() const;

    const LongMantissa& Lengthened() const { return *this; }

private:
    unsigned int m_state;
    double m_whole;
    double m_fraction; // its digits, as a whole number
    std::int64_t m_fractionDigits;
};

/// A mantissa of at most `longestMantissa` characters within a line, at the end of which it stands.
class ShortMantissa
{
public:
    explicit ShortMantissa(const char* start) : m_place(start), m_wholeEnd(start) {}

    const char* Place() const { return m_place; }

    bool Allows(char c) const { return (ToMantissa(c).kind & m_state) != 0; }

    void AddNext()
    {
        const MantissaCharacter& character = ToMantissa(*m_place++);
        m_state &= character.next;
        m_sum = m_sum * 10 + character.digit;
        // Written to become conditional moves.
        m_whole = IsWhole() ? m_sum : m_whole;
        m_wholeEnd = IsWhole() ? m_place : m_wholeEnd;
    }

    bool IsWhole() const { return (m_state & mayBePoint) != 0; }

    double Value() const
    {
        // Without a point a fraction of 0 is divided, by a tenth.
        return WithSign(ChainOfDoubles(Fraction()) / pow10(BehindWhole() - 1)) + WithSign(ChainOfDoubles(m_whole));
    }

    LongMantissa Lengthened() const
    {
        return {m_state, ChainOfDoubles(m_whole), ChainOfDoubles(Fraction()), std::max(BehindWhole() - 1, 0)};
    }

private:
    /// How many characters follow the whole part, the point among them.
    int BehindWhole() const { return static_cast<int>(m_place - m_wholeEnd); }

    std::uint64_t Fraction() const { return m_sum - m_whole * integerPowers[static_cast<unsigned int>(BehindWhole())]; }

    /// Negation without a branch.
    double WithSign(double value) const
    {
        const std::uint64_t sign = std::uint64_t{(m_state & isPositive) == 0} << 63;
        return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) ^ sign);
    }

    unsigned int m_state = mantissaStart;
    std::uint64_t m_sum = 0;
    std::uint64_t m_whole = 0;
    const char* m_place;
    const char* m_wholeEnd;
};

}

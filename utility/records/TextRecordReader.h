#pragma once

// The number reader of the text cursor, as a template over the cursor's type, and a base class for cursors that want it
// compiled for their own tests.
//
// CTextRecordPtr instantiates it for itself, where each test is a virtual call. A format whose tests can be inlined
// derives from CInlineTextRecordPtr instead; the same algorithm then runs without a call per character:
//
//     class CommaCursor final : public CInlineTextRecordPtr<CommaCursor>
//     {
//     public:
//         using CInlineTextRecordPtr::CInlineTextRecordPtr;
//         bool IsTerminator(char c) override { return c == ',' || c == '\n' || c == '\0'; }
//     };
//
// The method. What a mispredicted branch costs is a multiple of what a digit costs, and where a number's sign, point and
// end stand cannot be predicted. So a mantissa is one loop for sign, whole part, point and fraction alike, whose only
// unpredictable branch is the one at its end: a table says for each character what it is, what may follow it and what it
// adds to a sum of all digits, and the state of the grammar is a set of bits that is and-ed with the table's. The sum up
// to the point is kept as it goes by; the fraction is what the rest of the sum amounts to.
//
// Whole part and fraction are each defined as a chain of doubles, x = x * 10.0 + digit. Up to 2^53 every step of such a
// chain is exact, so that an integer gives the same value, and RoundedChain takes the rest of the steps for a longer one.
// Where the integers might not hold the digits, or the line ends, LongMantissa goes on, by the same table, in doubles.
//
// The cursor's place is kept in a local as well as in the object: the tests may look at the cursor, but the next
// character need not wait for the object to be read back. And all this is compiled with its user, not within the
// library: processors predict calls into another module badly, and the tests are called for every character.

#include "utility/numbers/FloatHygiene.h"
#include "utility/platform/Export.h"
#include "utility/records/TextRecordPtr.h"

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

constexpr auto mantissaCharacters = []
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
constexpr int longestMantissa = 19;

/// 10 to the power i.
constexpr auto integerPowers = []
{
    std::array<std::uint64_t, longestMantissa + 1> table{1};
    for (std::size_t i = 1; i < table.size(); ++i)
        table[i] = table[i - 1] * 10;
    return table;
}();

// What rounds is compiled with the library: a user may let a compiler make one operation, which rounds once, of a product
// and a sum.

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

/// The text messages that the reader issues, by number.
enum ReaderMessage : int
{
    endOfFileInInteger = 8300,
    endOfFileInReal = 8301,
    badCharacterInInteger = 8302,
    badCharacterInReal = 8303,
};

}

template <class Format>
bool CTextRecordPtr::ReadIntAs(int& value)
{
    auto& format = static_cast<Format&>(*this);
    format.SkipBlanks();
    const char* at = m_pCurrent;
    // Wraps without notice, which signed arithmetic may not.
    std::uint32_t sum = 0;
    char sign = '\0';
    bool failed = false;
    while (!format.IsTerminator(*at) && !failed)
    {
        const char c = *at;
        const auto digit = static_cast<std::uint32_t>(c) - std::uint32_t{'0'};
        if (digit <= 9)
        {
            sum = sum * 10 + digit;
        }
        else if ((c == '-' || c == '+') && sum == 0 && sign == '\0')
        {
            sign = c;
        }
        else if (IsEndOfRecord())
        {
            IssueAtCursor(utility::detail::endOfFileInInteger);
            failed = true;
        }
        else
        {
            format.SkipBlanks();
            if (format.IsTerminator(*m_pCurrent))
                break;
            IssueAtCursor(utility::detail::badCharacterInInteger);
            failed = true;
            at = m_pCurrent;
        }
        // Deliberately in case of failure too: it leaves the cursor behind the bad character.
        at = StepFrom(at);
    }
    value = static_cast<int>(sign == '-' ? 0 - sum : sum);
    return !failed;
}

template <class Format>
bool CTextRecordPtr::ReadRealAs(double& value)
{
    auto& format = static_cast<Format&>(*this);
    format.SkipBlanks();
    utility::detail::ShortMantissa mantissa(m_pCurrent);
    const auto toLast = static_cast<std::size_t>(m_pLast - m_pCurrent);
    const char* const limit = m_pCurrent + std::min<std::size_t>(toLast, utility::detail::longestMantissa - 1) + 1;
    bool atTerminator = false;
    while (!(atTerminator = format.IsTerminator(*mantissa.Place())) && mantissa.Allows(*mantissa.Place()))
    {
        mantissa.AddNext();
        if (mantissa.Place() == limit) [[unlikely]]
        {
            AdvancePtr();
            return ReadLongRealAs<Format>(mantissa.Lengthened(), value);
        }
        m_pCurrent = mantissa.Place();
    }
    return EndRealAs<Format>(mantissa, atTerminator, value);
}

template <class Format>
bool CTextRecordPtr::ReadLongRealAs(utility::detail::LongMantissa mantissa, double& value)
{
    auto& format = static_cast<Format&>(*this);
    bool atTerminator = false;
    while (!(atTerminator = format.IsTerminator(*m_pCurrent)) && mantissa.Allows(*m_pCurrent))
    {
        mantissa.Add(*m_pCurrent);
        AdvancePtr();
    }
    return EndRealAs<Format>(mantissa, atTerminator, value);
}

template <class Format, class Mantissa>
inline bool CTextRecordPtr::EndRealAs(const Mantissa& mantissa, bool atTerminator, double& value)
{
    auto& format = static_cast<Format&>(*this);
    char c = *m_pCurrent;
    if (!atTerminator && !format.IsExponentChar(c)) [[unlikely]]
    {
        if (!SkipToTerminatorAs<Format>(mantissa.IsWhole()))
        {
            if (!mantissa.IsWhole())
                value = mantissa.Value();
            return false;
        }
        // Deliberately not so in the fraction, where no exponent can follow blanks.
        if (mantissa.IsWhole())
            c = *m_pCurrent;
    }
    if (mantissa.IsWhole() && c == '.') [[unlikely]]
    {
        // Deliberately taken: behind a whole part a point goes on with the number even if it ends fields.
        utility::detail::LongMantissa longer = mantissa.Lengthened();
        longer.Add(c);
        AdvancePtr();
        return ReadLongRealAs<Format>(longer, value);
    }
    value = mantissa.Value();
    if (!format.IsExponentChar(c))
        return true;

    AdvancePtr();
    int exponent = 0;
    if (!ReadIntAs<Format>(exponent))
        return false;
    constexpr int lowestExponent = -307; // deliberately not -308
    constexpr int highestExponent = 308;
    value = pow10(std::clamp(exponent, lowestExponent, highestExponent)) * value;
    return true;
}

template <class Format>
bool CTextRecordPtr::SkipToTerminatorAs(bool isWhole)
{
    auto& format = static_cast<Format&>(*this);
    if (isWhole && IsEndOfRecord())
    {
        IssueAtCursor(utility::detail::endOfFileInReal);
        return false;
    }
    format.SkipBlanks();
    if (format.IsTerminator(*m_pCurrent))
        return true;
    IssueAtCursor(utility::detail::badCharacterInReal);
    return false;
}

inline bool CTextRecordPtr::ReadInt(int& value) { return ReadIntAs<CTextRecordPtr>(value); }

inline bool CTextRecordPtr::ReadReal(double& value) { return ReadRealAs<CTextRecordPtr>(value); }

/// A text cursor whose reads call the tests of `Format`, the final class derived from it, directly. It behaves as one
/// derived from CTextRecordPtr, and is one.
template <class Format>
class CInlineTextRecordPtr : public CTextRecordPtr
{
public:
    using CTextRecordPtr::CTextRecordPtr;

    bool ReadInt(int& value) { return ReadIntAs<Format>(value); }
    bool ReadReal(double& value) { return ReadRealAs<Format>(value); }
};

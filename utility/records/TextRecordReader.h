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
// The method. A value is two accumulations, whole part and fraction, each of which is defined as a chain of doubles:
// x = x * 10.0 + digit. As long as such a chain stays within 2^53 every step of it is exact, and an integer gives the same
// value without waiting for two roundings a digit; DigitSum changes over to doubles in the step that would leave that range.
// The cursor's place is kept in a local as well as in the object: the tests may look at the cursor, but the next
// character need not wait for the object to be read back.

#include "utility/numbers/FloatHygiene.h"
#include "utility/records/TextRecordPtr.h"

#include <algorithm>
#include <cstdint>

namespace utility::detail
{

/// x = x * 10.0 + digit over a run of digits, in doubles, computed in integers while that is the same.
class DigitSum
{
public:
    void Add(int digit)
    {
        if (m_exact <= exactLimit)
            m_exact = m_exact * 10 + digit;
        else
            AddRounded(digit);
    }

    bool IsZero() const { return m_exact == 0; }

    double Value() const { return m_exact == roundedMark ? m_rounded : static_cast<double>(m_exact); }

private:
    static constexpr std::int64_t exactLimit = ((std::int64_t{1} << 53) - 9) / 10;
    static constexpr std::int64_t roundedMark = INT64_MAX;

    void AddRounded(int digit)
    {
        m_rounded = Value() * 10.0 + digit;
        m_exact = roundedMark;
    }

    std::int64_t m_exact = 0;
    double m_rounded = 0.0;
};

inline bool IsDigit(char c) { return static_cast<unsigned char>(c - '0') <= 9; }
inline bool IsSign(char c) { return c == '-' || c == '+'; }

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
    // Wraps without notice, which signed arithmetic may not.
    std::uint32_t sum = 0;
    char sign = '\0';
    bool failed = false;
    char c = *m_pCurrent;
    while (!failed && !format.IsTerminator(c))
    {
        if (utility::detail::IsDigit(c))
        {
            sum = sum * 10 + static_cast<std::uint32_t>(c - '0');
        }
        else if (utility::detail::IsSign(c) && sum == 0 && sign == '\0')
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
        }
        // Deliberately in case of failure too: it leaves the cursor behind the bad character.
        AdvancePtr();
        c = *m_pCurrent;
    }
    value = static_cast<int>(sign == '-' ? 0 - sum : sum);
    return !failed;
}

template <class Format>
bool CTextRecordPtr::ReadRealAs(double& value)
{
    using utility::detail::DigitSum;
    using utility::detail::IsDigit;

    auto& format = static_cast<Format&>(*this);
    format.SkipBlanks();
    const char* at = m_pCurrent;
    const auto step = [this, &at]
    {
        if (at == m_pLast)
        {
            NextLine();
            at = m_pCurrent;
        }
        else
        {
            m_pCurrent = ++at;
        }
    };

    // Each test of a digit stands in the branch of the digits, where a test that is inlined folds away.
    char sign = '\0';
    DigitSum whole;
    for (char c = *at;; c = *at)
    {
        if (IsDigit(c))
        {
            if (format.IsTerminator(c))
                break;
            whole.Add(c - '0');
        }
        else if (format.IsTerminator(c) || c == '.')
        {
            break;
        }
        else if (utility::detail::IsSign(c) && sign == '\0' && whole.IsZero())
        {
            sign = c;
        }
        else
        {
            if (format.IsExponentChar(c))
                break;
            if (IsEndOfRecord())
            {
                IssueAtCursor(utility::detail::endOfFileInReal);
                return false;
            }
            format.SkipBlanks();
            at = m_pCurrent;
            if (format.IsTerminator(*at))
                break;
            IssueAtCursor(utility::detail::badCharacterInReal);
            return false;
        }
        step();
    }

    bool failed = false;
    double fraction = 0.0;
    // Deliberately without asking whether the character is a terminator: a point goes on with the number in any case.
    char c = *at;
    if (c == '.')
    {
        DigitSum digits;
        std::int64_t count = 0;
        step();
        for (c = *at;; c = *at)
        {
            if (!IsDigit(c))
            {
                if (format.IsTerminator(c) || format.IsExponentChar(c))
                    break;
                // c deliberately stays what it is, so that no exponent can follow blanks.
                format.SkipBlanks();
                at = m_pCurrent;
                failed = !format.IsTerminator(*at);
                if (failed)
                    IssueAtCursor(utility::detail::badCharacterInReal);
                break;
            }
            if (format.IsTerminator(c))
                break;
            digits.Add(c - '0');
            ++count;
            step();
        }
        // A quotient, not a product with the inverse, which would round otherwise.
        fraction = digits.Value() / pow10(static_cast<int>(std::min<std::int64_t>(count, INT32_MAX)));
    }
    value = sign == '-' ? -fraction + -whole.Value() : fraction + whole.Value();
    if (failed)
        return false;
    if (!format.IsExponentChar(c))
        return true;

    step();
    int exponent = 0;
    if (!ReadIntAs<Format>(exponent))
        return false;
    constexpr int lowestExponent = -307; // deliberately not -308
    constexpr int highestExponent = 308;
    value = pow10(std::clamp(exponent, lowestExponent, highestExponent)) * value;
    return true;
}

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

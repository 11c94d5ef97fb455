#pragma once

// A cursor that walks the characters of a record as one stream across its lines, and reads characters, integers and
// reals from them, straight from the mapped file. A format derives a cursor that says what ends a field:
//
//     class CommaCursor final : public CTextRecordPtr
//     {
//     public:
//         using CTextRecordPtr::CTextRecordPtr;
//         bool IsTerminator(char c) override { return c == ',' || c == '\n' || c == '\0'; }
//     };
//
//     CommaCursor cursor(&file);
//     cursor.Add(line, line + length - 1); // the last character is part of the line
//     double x;
//     if (!cursor.ReadReal(x))
//         cursor.SkipField(); // or a number within the bad field would be the next
//     cursor.AdvancePtr(); // a read never passes the terminator
//
// A number is: blanks, a sign, digits, a point and digits, an exponent letter (D or E of either case, as FORTRAN writes
// them), blanks, a sign and digits, blanks in front of a terminator. Every piece may be missing, and an empty field is
// 0. A number may run on from one line into the next. Unlike with the standard conversions a sign may follow leading
// zeros, the point is the decimal symbol in every locale, there is neither a hexadecimal form nor infinity or NaN, an
// exponent is clamped to -307..308, and the value is not correctly rounded: it is the sum of a whole part and a
// fraction, scaled once, so that its last bits may differ.
//
// Bad input is reported to the file as a numbered message, and the read gives false; the cursor stays usable. Only Add
// and a report need memory, and throw std::bad_alloc without; nothing outside the lines is read.
//
// A cursor belongs to one thread. It owns neither the file nor the text, which must outlive it.

#include "utility/platform/Export.h"
#include "utility/records/Mantissa.h"
#include "utility/records/RecordLines.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <list>
#include <span>
#include <type_traits>

class CTextInputOutputFile;
struct TextPosition;

/// What the characters of a field say of its number.
enum class TextFieldForm : std::uint8_t
{
    empty, ///< nothing but blanks
    whole, ///< neither a point nor an exponent letter
    real,  ///< one of them, at least
};

namespace utility::detail
{

/// The text messages that the reader issues, by number.
enum ReaderMessage : int
{
    endOfFileInInteger = 8300,
    endOfFileInReal = 8301,
    badCharacterInInteger = 8302,
    badCharacterInReal = 8303,
};

inline constexpr int lowestExponent = -307; // deliberately not -308
inline constexpr int highestExponent = 308;

}

class UTILITY_API CTextRecordPtr : public CTextRecord
{
public:
    /// An empty record: Add or Reset comes before the first read. Messages go to `file`; with null there are none.
    explicit CTextRecordPtr(CTextInputOutputFile* file);
    virtual ~CTextRecordPtr();

    /// Skips blanks (0x20 and nothing else), across lines.
    virtual void SkipBlanks()
    {
        while (*m_pCurrent == ' ')
            AdvancePtr();
    }

    /// Whether a character ends the current field. It is asked about every character at which a read stands, and about
    /// the 0 at the end of the record: with false for that, a field that the end cuts short is reported. It may look at
    /// the cursor, but not move it.
    virtual bool IsTerminator(char c) = 0;

    /// Whether a letter introduces an exponent.
    virtual bool IsExponentChar(char c) const { return c == 'D' || c == 'E' || c == 'd' || c == 'e'; }

    /// The file that messages go to, as given to the constructor.
    CTextInputOutputFile* InputFile() const { return m_pFile; }

    /// Appends a line, `last` being its last character, and moves to the start of the record. A line without a
    /// character, `last` being in front of `first`, is passed like one that is not there.
    void Add(const char* first, const char* last);

    /// Moves to the first character of the first line.
    void Reset();

    /// Whether the cursor is behind the last line. A zero byte in the text is not an end.
    bool IsEndOfRecord() { return m_pCurrent == &m_cNULL; }

    /// The character at the cursor, 0 at the end of the record.
    char GetCurrentChar() const { return *m_pCurrent; }
    char operator*() const { return *m_pCurrent; }
    operator char() const { return *m_pCurrent; }

    /// The place of the cursor.
    operator const char*() const { return m_pCurrent; }

    /// One character on, into the next line behind the last one of a line. Does nothing at the end of the record.
    void AdvancePtr() { StepFrom(m_pCurrent); }

    /// The next character that is not blank. False, and `c` unchanged, at a terminator and at the end of the record.
    bool ReadChar(char& c);

    /// An integer of 32 bits; more wraps without notice. On false `value` is what was read so far, and the cursor is
    /// behind the bad character.
    bool ReadInt(int& value);

    /// A real. On false the cursor is on the bad character, or behind it if that stands in the exponent, and `value` is
    /// what was read so far, or unchanged if the bad character stands ahead of point and exponent.
    bool ReadReal(double& value);

    /// Reads one field after the other as ReadReal does, stepping over `separator` between them, and gives in `count` how
    /// many were good. It ends on what ends the last one, because that is another character or the end of the record, or
    /// because there are no more values; or at the first bad field, where it gives false and cursor and value are as
    /// ReadReal leaves them. `forms` is empty, or as long as `values`, and tells of the fields as they stand in the text,
    /// the bad one among them. No other value or form is written. (Reads of CDelimitedTextRecordPtr are several times as
    /// fast.)
    bool ReadReals(std::span<double> values, char separator, std::size_t& count, std::span<TextFieldForm> forms = {});

    /// The same by ReadInt.
    bool ReadInts(std::span<int> values, char separator, std::size_t& count);

    /// Moves to what ends the field, by IsTerminator, or to the end of the record. This passes the rest of a bad field
    /// behind a read that failed.
    void SkipField();

    /// Line and column of the cursor in the file, and behind the last line at the end of the record. None if that is
    /// not a place in the file (files/TextInputOutputFile.h).
    TextPosition Position() const;

    /// Moves behind the next run of line ends (CR and LF). One must follow: without it this never returns.
    void SkipLine();

protected:
    /// The number reader, as a template over the type of the cursor whose tests it calls. Each module has its own.
    template <class Format>
    UTILITY_LOCAL bool ReadIntAs(int& value);
    template <class Format>
    UTILITY_LOCAL bool ReadRealAs(double& value);
    /// The reader of runs, which are read one by one.
    template <class Format, class Value>
    UTILITY_LOCAL bool ReadRunAs(std::span<Value> values, char separator, std::size_t& count,
                                 std::span<TextFieldForm> forms);

    static const char m_cNULL; ///< stands for the end of the record

private:
    friend class CDelimitedTextRecordPtr;

    // What few numbers need is kept apart: within a read it would take registers that each character needs.
    template <class Format>
    [[gnu::noinline]] UTILITY_LOCAL bool ReadLongIntAs(std::uint32_t sum, bool hasSign, bool isNegative, int& value);
    template <class Format>
    UTILITY_LOCAL TextFieldForm FormAs();
    template <class Format>
    [[gnu::noinline]] UTILITY_LOCAL bool ReadLongRealAs(utility::detail::LongMantissa mantissa, double& value);
    // Not inlined, it would need the mantissa in memory, from the first character on.
    template <class Format, class Mantissa>
    [[gnu::always_inline]] bool EndRealAs(const Mantissa& mantissa, bool atTerminator, double& value);
    template <class Format>
    [[gnu::noinline]] UTILITY_LOCAL bool SkipToTerminatorAs(bool isWhole);
    /// AdvancePtr, for a caller who knows where the cursor is and wants to know where it is then.
    const char* StepFrom(const char* place)
    {
        if (place == m_pLast)
            NextLine();
        else
            m_pCurrent = place + 1;
        return m_pCurrent;
    }
    void NextLine();
    UTILITY_LOCAL void EnterLine();
    void IssueAtCursor(int messageId) const;
    UTILITY_LOCAL std::size_t CopyAhead(char* to, std::size_t most, bool& isAll) const;
    UTILITY_LOCAL void AdvanceBy(std::size_t count);

    CTextInputOutputFile* m_pFile;
    std::list<TextLine>::const_iterator m_itLine;
    const char* m_pCurrent;
    const char* m_pLast; // of the current line; at the end of the record the end mark, like the cursor
};

// The number reader. The cursor's place is kept in a local as well as in the object: the tests may look at the cursor,
// but the next character need not wait for the object to be read back. And all this is compiled with its user, not
// within the library: processors predict calls into another module badly, and the tests are called for every character.

template <class Format>
bool CTextRecordPtr::ReadIntAs(int& value)
{
    using namespace utility::detail;
    auto& format = static_cast<Format&>(*this);
    format.SkipBlanks();
    // As far as the line goes, and without a branch on whether there is a sign.
    const char* at = m_pCurrent;
    const char* const last = m_pLast;
    std::uint32_t sum = 0;
    bool hasSign = false;
    bool isNegative = false;
    bool atTerminator = format.IsTerminator(*at);
    const auto first = static_cast<std::uint32_t>(*at) - std::uint32_t{'0'};
    const bool isMinus = *at == '-';
    const bool isSign = isMinus | (*at == '+');
    if (!atTerminator && ((isSign | (first <= 9)) & (at != last))) [[likely]]
    {
        isNegative = isMinus;
        hasSign = isSign;
        sum = isSign ? 0 : first;
        m_pCurrent = ++at;
        while (!(atTerminator = format.IsTerminator(*at)))
        {
            const auto digit = static_cast<std::uint32_t>(*at) - std::uint32_t{'0'};
            if ((digit > 9) | (at == last)) [[unlikely]]
                break;
            sum = sum * 10 + digit; // wraps without notice, which signed arithmetic may not
            m_pCurrent = ++at;
        }
    }
    if (!atTerminator) [[unlikely]]
        return ReadLongIntAs<Format>(sum, hasSign, isNegative, value);
    value = static_cast<int>(isNegative ? 0 - sum : sum);
    return true;
}

/// The rest of an integer, from a character on that does not end it: it goes on in the next line, or ends in blanks, or
/// is bad.
template <class Format>
bool CTextRecordPtr::ReadLongIntAs(std::uint32_t sum, bool hasSign, bool isNegative, int& value)
{
    auto& format = static_cast<Format&>(*this);
    const char* at = m_pCurrent;
    bool failed = false;
    do
    {
        const char c = *at;
        const auto digit = static_cast<std::uint32_t>(c) - std::uint32_t{'0'};
        if (digit <= 9)
            sum = sum * 10 + digit;
        else if ((c == '-' || c == '+') && sum == 0 && !hasSign)
        {
            hasSign = true;
            isNegative = c == '-';
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
    } while (!format.IsTerminator(*at) && !failed);
    value = static_cast<int>(isNegative ? 0 - sum : sum);
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
    using namespace utility::detail;
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

template <class Format>
TextFieldForm CTextRecordPtr::FormAs()
{
    auto& format = static_cast<Format&>(*this);
    const auto line = m_itLine;
    const char* const current = m_pCurrent;
    const char* const last = m_pLast;
    TextFieldForm form = TextFieldForm::empty;
    for (; form != TextFieldForm::real && !IsEndOfRecord() && !format.IsTerminator(*m_pCurrent); AdvancePtr())
    {
        if (*m_pCurrent == '.' || format.IsExponentChar(*m_pCurrent))
            form = TextFieldForm::real;
        else if (*m_pCurrent != ' ')
            form = TextFieldForm::whole;
    }
    m_itLine = line;
    m_pCurrent = current;
    m_pLast = last;
    return form;
}

template <class Format, class Value>
bool CTextRecordPtr::ReadRunAs(std::span<Value> values, char separator, std::size_t& count,
                               std::span<TextFieldForm> forms)
{
    const auto read = [this](Value& value)
    {
        if constexpr (std::is_same_v<Value, int>)
            return ReadIntAs<Format>(value);
        else
            return ReadRealAs<Format>(value);
    };
    for (count = 0; count < values.size(); AdvancePtr())
    {
        if (!forms.empty())
            forms[count] = FormAs<Format>();
        if (!read(values[count]))
            return false;
        if (++count == values.size() || *m_pCurrent != separator || IsEndOfRecord())
            break;
    }
    return true;
}

inline bool CTextRecordPtr::ReadReals(std::span<double> values, char separator, std::size_t& count,
                                      std::span<TextFieldForm> forms)
{
    return ReadRunAs<CTextRecordPtr>(values, separator, count, forms);
}

inline bool CTextRecordPtr::ReadInts(std::span<int> values, char separator, std::size_t& count)
{
    return ReadRunAs<CTextRecordPtr>(values, separator, count, {});
}

inline bool CTextRecordPtr::ReadInt(int& value) { return ReadIntAs<CTextRecordPtr>(value); }

inline bool CTextRecordPtr::ReadReal(double& value) { return ReadRealAs<CTextRecordPtr>(value); }

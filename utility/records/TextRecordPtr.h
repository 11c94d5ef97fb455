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
//         throw CTextRecordException(__FILE__, __LINE__, 0, cursor);
//     cursor.AdvancePtr(); // a read never passes the terminator
//
// A number is: blanks, a sign, digits, a point and digits, an exponent letter (D or E of either case, as FORTRAN writes
// them), blanks, a sign and digits, blanks in front of a terminator. Every piece may be missing, and an empty field is 0.
// A number may run on from one line into the next. Unlike with the standard conversions a sign may follow leading zeros,
// the point is the decimal symbol in every locale, there is neither a hexadecimal form nor infinity or NaN, an exponent
// is clamped to -307..308, and the value is not correctly rounded: it is the sum of a whole part and a fraction,
// scaled once, so that its last bits may differ.
//
// Bad input is reported to the file as a numbered message, and the read gives false; the cursor stays usable. Nothing is
// thrown but what Add may throw, no read allocates, and nothing outside the lines is read.
//
// A cursor belongs to one thread. It owns neither the file nor the text, which must outlive it.

#include "utility/platform/Export.h"
#include "utility/records/RecordLines.h"

class CTextInputOutputFile;

namespace utility::detail
{
class LongMantissa;
}

class UTILITY_API CTextRecordPtr : public CTextRecord
{
public:
    /// An empty record: Add or Reset comes before the first read. Messages go to `file`.
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

    CTextInputOutputFile* InputFile() const { return m_pFile; }

    /// Appends a line, `last` being its last character, and moves to the start of the record.
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

    /// A real. On false the cursor is on the bad character, and `value` is what was read so far, or unchanged if the bad
    /// character stands ahead of point and exponent.
    bool ReadReal(double& value);

    /// Moves behind the next run of line ends (CR and LF). One must follow: without it this never returns.
    void SkipLine();

protected:
    /// The number reader, for a cursor of type Format; see records/TextRecordReader.h, which defines it.
    template <class Format>
    bool ReadIntAs(int& value);
    template <class Format>
    bool ReadRealAs(double& value);

    static const char m_cNULL; ///< stands for the end of the record

private:
    template <class Format>
    bool ReadLongRealAs(utility::detail::LongMantissa mantissa, double& value);
    // Not inlined, it would need the mantissa in memory, from the first character on.
    template <class Format, class Mantissa>
    [[gnu::always_inline]] bool EndRealAs(const Mantissa& mantissa, bool atTerminator, double& value);
    template <class Format>
    bool SkipToTerminatorAs(bool isWhole);
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
    void IssueAtCursor(int messageId) const;

    CTextInputOutputFile* m_pFile;
    std::list<TextLine>::const_iterator m_itLine;
    const char* m_pCurrent;
    const char* m_pLast; // of the current line; at the end of the record the end mark, like the cursor
};

#include "utility/records/TextRecordReader.h"

#include "examples/iges/IgesRecordPtr.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace iges
{

namespace
{

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

/// number * 10 + digit, but no more than `limit`.
std::int64_t AppendDigit(std::int64_t number, char digit, std::int64_t limit)
{
    return std::min(number * 10 + (digit - '0'), limit);
}

}

void Complain(const CTextInputOutputFile& file, const std::wstring& text)
{
    if (file.IssueMessages())
        LogFile(LogSeverityError, GetThreadDatabase()) << text;
}

double Field::Number() const
{
    switch (kind)
    {
    case FieldKind::empty:
        return 0.0;
    case FieldKind::integer:
        return integer;
    case FieldKind::real:
        return real;
    default:
        return std::numeric_limits<double>::quiet_NaN();
    }
}

RecordPtr::RecordPtr(CTextInputOutputFile* file, Delimiters delimiters, std::span<const std::string_view> lines,
                     std::vector<int> numbers)
    : CDelimitedTextRecordPtr(file, std::string{delimiters.parameter, delimiters.record}),
      m_delimiters(delimiters),
      m_lineNumbers(std::move(numbers))
{
    for (const std::string_view line : lines)
        Add(line.data(), line.data() + line.size() - 1);
    m_line = Lines().begin();
}

bool RecordPtr::ReadField(Field& field)
{
    bool good = LookAhead(field.kind);
    const char* const start = *this;
    switch (field.kind)
    {
    case FieldKind::integer:
        good = ReadInt(field.integer) && good;
        break;
    case FieldKind::real:
        good = ReadReal(field.real);
        break;
    case FieldKind::text:
        good = ReadText(field.text);
        break;
    default:
        break;
    }
    if (!good)
    {
        ComplainOfField(start);
        if (field.kind != FieldKind::text)
            field.kind = FieldKind::bad;
    }
    return good;
}

bool RecordPtr::NextField()
{
    SkipField();
    const bool more = GetCurrentChar() == m_delimiters.parameter;
    if (IsEndOfRecord())
        Complain(L"The record delimiter is missing.");
    AdvancePtr();
    ++m_number;
    return more;
}

/// What the field at the cursor is. The cursor stays, but for blanks. False for an integer that is too large.
bool RecordPtr::LookAhead(FieldKind& kind)
{
    kind = FieldKind::empty;
    SkipBlanks();
    if (IsEndOfRecord())
        return true;
    const char* place = *this;
    while (place < m_line->First() || place > m_line->Last())
    {
        ++m_line;
        ++m_lineIndex;
    }

    // ReadInt wraps at 32 bits without notice.
    constexpr std::int64_t highest = std::numeric_limits<int>::max();
    std::int64_t magnitude = 0;
    bool onlyDigits = true;
    bool negative = false; // the sign may follow zeros
    auto line = m_line;
    while (!IsDelimiter(*place))
    {
        const char c = *place;
        if (c == 'H' && onlyDigits && kind == FieldKind::integer)
        {
            kind = FieldKind::text;
            return true;
        }
        if (c == '.' || IsExponentChar(c))
        {
            kind = FieldKind::real;
            return true;
        }
        kind = FieldKind::integer;
        if (IsDigit(c))
            magnitude = AppendDigit(magnitude, c, highest + 2);
        else
            onlyDigits = false;
        negative = negative || c == '-';
        if (place != line->Last())
            ++place;
        else if (++line != Lines().end())
            place = line->First();
        else
            break;
    }
    const bool fits = magnitude <= (negative ? highest + 1 : highest);
    if (!fits)
        Complain(L"An integer has more than 32 bits.");
    return fits;
}

void RecordPtr::Complain(const wchar_t* text) const
{
    if (InputFile() != nullptr)
        iges::Complain(*InputFile(), text);
}

void RecordPtr::ComplainOfField(const char* field) const
{
    if (InputFile() == nullptr)
        return;
    std::wstring text = L"Field " + std::to_wstring(m_number) + L" is bad";
    if (!m_lineNumbers.empty())
        text += L", in line " + std::to_wstring(m_lineNumbers[m_lineIndex]) + L", column " +
                std::to_wstring(field - m_line->First() + 1);
    iges::Complain(*InputFile(), text + L".");
}

bool RecordPtr::ReadText(std::string& text)
{
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    text.clear();
    std::int64_t count = 0;
    for (; GetCurrentChar() != 'H'; AdvancePtr())
        count = AppendDigit(count, *this, most);
    AdvancePtr();
    for (; count > 0 && !IsEndOfRecord(); --count, AdvancePtr())
        text += GetCurrentChar();
    if (count > 0)
    {
        Complain(L"A text runs past the end of the record.");
        return false;
    }
    SkipBlanks();
    if (!IsTerminator(*this))
    {
        Complain(L"A text is longer than its count.");
        return false;
    }
    return true;
}

}

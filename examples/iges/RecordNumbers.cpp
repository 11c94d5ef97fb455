#include "examples/iges/RecordNumbers.h"

namespace iges
{

/// Of lines end to end, which is the one place where text is copied: a cursor goes over one line faster than over
/// hundreds.
bool RecordNumbers::Read(const Record& record, Delimiters delimiters)
{
    m_text.resize(record.lines.size() * Record::width);
    char* to = m_text.data();
    for (const char* const line : record.lines)
        to = std::copy_n(line, Record::width, to);
    const std::array<std::string_view, 1> line = {m_text};
    RecordPtr cursor(nullptr, delimiters, line);
    m_numbers.clear();
    m_integers = 0;
    m_reals = 0;
    do
    {
        if (!cursor.ReadField(m_field) || m_field.kind == FieldKind::text)
            return false;
        m_integers += m_field.kind == FieldKind::integer;
        m_reals += m_field.kind == FieldKind::real;
        m_numbers.push_back(m_field.Number());
    } while (cursor.NextField());
    return !cursor.IsEndOfRecord();
}

}

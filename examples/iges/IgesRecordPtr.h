#pragma once

// The cursor over a record of an IGES file: fields between delimiters, each of which tells by its characters what it
// is.
//
//     RecordPtr cursor(&file, delimiters, lines);
//     Field field;
//     do
//     {
//         if (cursor.ReadField(field) && field.kind == FieldKind::real)
//             Use(field.real);
//     } while (cursor.NextField());
//
// What is wrong with a field is a message of the file, and reading goes on behind the next delimiter.
// The cursor owns no text: the lines must outlive it. It belongs to one thread.

#include "utility/Utility.h"

#include <list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace iges
{

/// Logs an error of the calling thread's database, as the file's own messages are, and if the file issues any.
void Complain(const CTextInputOutputFile& file, const std::wstring& text);

struct Delimiters
{
    char parameter = ',';
    char record = ';';
};

enum class FieldKind
{
    empty,
    integer,
    real, ///< with a point or an exponent letter
    text, ///< nH and n characters
    bad,  ///< could not be read
};

struct Field
{
    FieldKind kind = FieldKind::empty;
    int integer = 0;
    double real = 0.0;
    std::string text;

    /// The value as a number: 0 for an empty field, NaN for what is none.
    double Number() const;
};

class RecordPtr final : public CDelimitedTextRecordPtr
{
public:
    /// At the first field. A line must not be empty. With the numbers of the lines a message says where a bad field is;
    /// without a file there is none.
    RecordPtr(CTextInputOutputFile* file, Delimiters delimiters, std::span<const std::string_view> lines,
              std::vector<int> numbers = {});

    /// Reads the field at the cursor. False if it is bad: what there is of a text is kept, a number is FieldKind::bad.
    bool ReadField(Field& field);

    /// Moves behind the next parameter delimiter. False at the record delimiter, and where that is missing.
    bool NextField();

private:
    bool LookAhead(FieldKind& kind);
    bool ReadText(std::string& text);
    void Complain(const wchar_t* text) const;
    void ComplainOfField(const char* field) const;
    bool IsDelimiter(char c) const { return c == m_delimiters.parameter || c == m_delimiters.record; }

    Delimiters m_delimiters;
    std::vector<int> m_lineNumbers;
    std::list<TextLine>::const_iterator m_line; // not behind the cursor's; where a field begins, that of the field
    std::size_t m_lineIndex = 0;
    int m_number = 1;
};

}

#pragma once

// Records: ordered lists of lines, where a line is a pair of pointers into a mapped file. The lines of one record need
// not be adjacent, so a record is assembled from continuation lines, and what lies between is skipped, without a copy.
//
//     CTextRecord record;
//     record.Add(line, line + 63);              // columns 1 to 64: the last character is part of the line
//     record.Add(line + 81, line + 81 + 63);
//
// The two families differ on purpose: the last pointer of a TextLine is its last character, that of an InputLine is one
// past its last byte.
//
// A record belongs to one thread and owns its list, never the bytes: the file must stay open while it is used, which
// nothing checks. Add may throw std::bad_alloc. None of these has virtual operations: a cursor is not to be deleted
// through a pointer to its record.

#include <list>

namespace utility::detail
{

template <class Character>
class RecordLine
{
public:
    RecordLine(const Character* first = nullptr, const Character* last = nullptr) : m_pFirst(first), m_pLast(last) {}

    const Character* First() const { return m_pFirst; }
    const Character* Last() const { return m_pLast; }

    /// Whether both lines are the same place. Equal text at another place is another line.
    bool operator==(const RecordLine&) const = default;

protected:
    const Character* m_pFirst;
    const Character* m_pLast;
};

template <class Line, class Character>
class Record
{
public:
    /// Appends a line. The pair is taken as it is, without any check.
    void Add(const Character* first, const Character* last) { m_lines.emplace_back(first, last); }

    const std::list<Line>& Lines() const { return m_lines; }

private:
    std::list<Line> m_lines;
};

}

/// A line of text; `Last` is its last character.
class TextLine : public utility::detail::RecordLine<char>
{
public:
    using RecordLine::RecordLine;
};

/// A line of bytes; `Last` is one past its last byte.
class InputLine : public utility::detail::RecordLine<unsigned char>
{
public:
    using RecordLine::RecordLine;

    /// Moves the first pointer by `count` bytes, back if it is negative, without a check.
    void AdvanceStart(int count) { m_pFirst += count; }
};

/// A record of text, which is not copied.
class CTextRecord : public utility::detail::Record<TextLine, char>
{
public:
    /// Without a line.
    CTextRecord() = default;
    CTextRecord(const CTextRecord&) = delete;
    CTextRecord& operator=(const CTextRecord&) = delete;
};

/// A record of bytes. Can be copied; the lines of a copy point into the same file.
class CInputRecord : public utility::detail::Record<InputLine, unsigned char>
{
};

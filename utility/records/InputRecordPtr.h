#pragma once

// A cursor that walks the bytes of a record as one stream across its lines, and copies raw values out of them.
//
//     CInputRecordPtr cursor(&file);
//     cursor.Add(block, block + 512);
//     int count;
//     double length;
//     if (!cursor.ReadInt(count) || !cursor.ReadReal(length))
//         file.IssueError(messageId);
//
// Values are copied as they stand, little-endian: no conversion, no message. A read either fits or gives false, and
// then cursor and destination are unchanged. Nothing is thrown but std::bad_alloc, by Add and by a copy.
//
// A cursor belongs to one thread. It owns neither the file nor the bytes, which must outlive it.

#include "utility/platform/Export.h"
#include "utility/records/RecordLines.h"

#include <cstdint>

class CInputOutputFile;

class UTILITY_API CInputRecordPtr : public CInputRecord
{
public:
    /// An empty record: Add or Reset comes before the first read.
    explicit CInputRecordPtr(CInputOutputFile* file);
    /// Stands at the start of the record, wherever `other` stood.
    CInputRecordPtr(const CInputRecordPtr& other);
    CInputRecordPtr& operator=(const CInputRecordPtr&) = delete;
    ~CInputRecordPtr();

    /// The file that messages go to, as given to the constructor.
    CInputOutputFile* InputFile() const noexcept;

    /// Appends a line, `last` being one past its last byte, and moves to the start of the record. A line must not be
    /// empty: the cursor would run past it.
    void Add(const unsigned char* first, const unsigned char* last);

    /// Moves to the first byte of the first line.
    void Reset() noexcept;

    /// Whether the cursor is behind the last line.
    bool IsEndOfRecord() const noexcept;

    /// The byte at the cursor, which must not be at the end of the record.
    char GetCurrentByte() const;

    /// One step, or `count` steps taken as an unsigned number. At the end of the record a step does nothing.
    void AdvancePtr() noexcept;
    void AdvancePtr(int count) noexcept;

    /// Copies bytes from the cursor on and steps over them. They must stand in the current line, or in it and the one
    /// byte behind it; bytes of two lines are never joined. `count` must not be negative.
    bool Read(void* destination, int count);
    bool ReadChar(char& value);
    bool ReadInt(int& value);
    bool ReadFloat(float& value);
    bool ReadReal(double& value);

private:
    UTILITY_LOCAL void NextLine() noexcept;

    CInputOutputFile* m_pFile;
    std::list<InputLine>::const_iterator m_itLine;
    const unsigned char* m_pCurrent;
};

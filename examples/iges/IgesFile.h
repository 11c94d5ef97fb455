#pragma once

// What an IGES file consists of, found without copying any of it: lines of 80 columns, with the letter of their section
// in column 73. They end in LF, CR LF or CR, or follow each other without an end.
//
//     CTextInputOutputFile mapped(path);
//     const iges::File file(mapped.DataPtr(), mapped.GetFileSize(), &mapped);
//     for (const iges::Record& record : file.Records())
//         Read(iges::RecordPtr(&mapped, file.FieldDelimiters(), record.Lines(), record.LineNumbers()));
//
// Bad input throws nothing: what can be made out is there, and the rest is a message.
// All of it points into the text, which must outlive it. Once made, it may be read by any thread.

#include "examples/iges/IgesRecordPtr.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace iges
{

/// Lines one behind the other in the file, all equally long.
struct LineRun
{
    const char* first = nullptr; ///< where the first one begins
    std::size_t distance = 0;    ///< from there to where the next one does
    int count = 0;
    int number = 0; ///< of the first one in the file, from 1

    const char* operator[](int i) const { return first + static_cast<std::size_t>(i) * distance; }
};

/// A parameter record: columns 1 to 64 of the lines that name the same directory entry.
struct Record
{
    static constexpr std::size_t width = 64;

    std::vector<std::string_view> Lines() const;
    std::vector<int> LineNumbers() const;

    std::string_view name;         ///< columns 65 to 72, without blanks around: the number of the directory entry
    int directory = 0;             ///< the same as a number, 0 if it is none
    std::span<const LineRun> runs; ///< its lines, mostly in one run
    std::size_t lineCount = 0;
    std::wstring trouble; ///< what is wrong with its lines, empty if nothing is
};

/// A directory entry, which is two lines of fields of eight columns.
struct Entry
{
    int number = 0; ///< of its first line
    int type = 0;
    int form = 0;
    int matrix = 0; ///< number of the entry of its transformation, 0 for none
    int use = 0;    ///< what it is for: 0 geometry, 1 annotation, 2 definition, 5 curve in a surface's parameters, ...
    bool isDependent = false;       ///< a part of another entity, which moves with it
    const Record* record = nullptr; ///< null if it has none
};

struct Unit
{
    std::string name;         ///< as the file has it
    double millimetres = 0.0; ///< 0 if the unit is not known
};

class File
{
public:
    /// `messages` may be a closed file, if the text is not that of a file.
    File(const char* text, std::size_t size, CTextInputOutputFile* messages);
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    /// False if no line has a section letter: then this is something else, of whose lines nothing is said.
    bool IsIges() const { return m_hasSections; }

    Delimiters FieldDelimiters() const { return m_delimiters; }
    const Unit& LengthUnit() const { return m_unit; }

    /// In the order of their numbers.
    const std::vector<Entry>& Directory() const { return m_directory; }

    /// The entry with this number, null if there is none.
    const Entry* Find(int directory) const;

    /// In the order of the file.
    const std::vector<Record>& Records() const { return m_records; }

    /// Where messages go.
    CTextInputOutputFile* Messages() const { return m_messages; }

private:
    struct Line
    {
        std::string_view text;
        int number = 0;
    };

    void SortLines(std::string_view text);
    void AddParameterLine(const Line& line);
    void HandOutRuns();
    void ReadGlobalSection();
    void ReadDirectory();
    void ReadEntry(const Line& first, const Line& second, Entry& entry);
    int ReadColumns(const Line& line, std::size_t first, std::size_t last);
    void ComplainOf(const Line& line, const wchar_t* text) const;

    CTextInputOutputFile* m_messages;
    bool m_hasSections;
    std::vector<std::string_view> m_globalLines;
    std::vector<Line> m_directoryLines;
    Delimiters m_delimiters;
    Unit m_unit;
    std::vector<Entry> m_directory;
    std::vector<Record> m_records;
    std::vector<LineRun> m_runs;          ///< those of all records
    std::vector<std::size_t> m_firstRuns; ///< of each record among them
};

}

#include "examples/iges/IgesFile.h"

#include <algorithm>
#include <array>

namespace iges
{

namespace
{

constexpr std::size_t lineLength = 80;
constexpr std::size_t sectionColumn = 73;

/// The cursor over a field that is given by its columns: only their end ends it.
class ColumnsPtr final : public CInlineTextRecordPtr<ColumnsPtr>
{
public:
    ColumnsPtr(CTextInputOutputFile* file, std::string_view columns) : CInlineTextRecordPtr(file)
    {
        if (!columns.empty())
            Add(columns.data(), columns.data() + columns.size() - 1);
    }
    bool IsTerminator(char) override { return IsEndOfRecord(); }
};

/// Columns of a line, counted from 1, as far as it has them.
std::string_view Columns(std::string_view line, std::size_t first, std::size_t last)
{
    return line.substr(std::min(first - 1, line.size()), last - first + 1);
}

std::string_view Trimmed(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

/// What ends a line: LF, with or without a CR ahead of it, CR, or 0 for nothing, where lines follow each other.
char LineEndOf(std::string_view text)
{
    const std::size_t first = text.find_first_of("\r\n");
    if (first == std::string_view::npos || (first > lineLength && first % lineLength == 0))
        return '\0';
    return text[first] == '\r' && text.substr(first + 1, 1) != "\n" ? '\r' : '\n';
}

std::string_view TakeLine(std::string_view& text, char lineEnd)
{
    const std::size_t length = std::min(lineEnd == '\0' ? lineLength : text.find(lineEnd), text.size());
    std::string_view line = text.substr(0, length);
    text.remove_prefix(std::min(length + (lineEnd == '\0' ? 0 : 1), text.size()));
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

/// Takes a delimiter (such as 1H,) and the parameter delimiter behind it from the start of the global section. An empty
/// field stands for the usual one, and a character that can stand in a number for none.
char TakeDelimiter(std::string_view& global, char usual)
{
    char delimiter = usual;
    if (global.starts_with("1H") && global.size() > 2)
    {
        delimiter = global[2];
        global.remove_prefix(3);
    }
    global.remove_prefix(std::min<std::size_t>(1, global.size()));
    return delimiter;
}

bool CanDelimit(char c)
{
    return c > ' ' && c < 127 && std::string_view("0123456789+-.DEH").find(c) == std::string_view::npos;
}

struct KnownUnit
{
    int flag;
    const char* name;
    double millimetres;
};

constexpr std::array<KnownUnit, 11> knownUnits = {{
    {1, "IN", 25.4},
    {1, "INCH", 25.4},
    {2, "MM", 1.0},
    {4, "FT", 304.8},
    {5, "MI", 1609344.0},
    {6, "M", 1000.0},
    {7, "KM", 1000000.0},
    {8, "MIL", 0.0254},
    {9, "UM", 0.001},
    {10, "CM", 10.0},
    {11, "UIN", 0.0000254},
}};

Unit UnitOf(int flag, const std::string& name)
{
    constexpr int flagOfNamed = 3;
    const auto known = std::ranges::find_if(knownUnits, [&](const KnownUnit& unit)
                                            { return flag == flagOfNamed ? name == unit.name : flag == unit.flag; });
    if (known == knownUnits.end())
        return {name, 0.0};
    return {name.empty() ? known->name : name, known->millimetres};
}

}

File::File(const char* text, std::size_t size, CTextInputOutputFile* messages) : m_messages(messages)
{
    SortLines({text, size});
    if (!m_hasSections)
        return;
    ReadGlobalSection();
    ReadDirectory();
}

const Entry* File::Find(int directory) const
{
    const auto entry = m_directory.find(directory);
    return entry == m_directory.end() ? nullptr : &entry->second;
}

void File::SortLines(std::string_view text)
{
    const char lineEnd = LineEndOf(text);
    bool terminated = false;
    Line line;
    while (!text.empty())
    {
        line.text = TakeLine(text, lineEnd);
        ++line.number;
        const std::string_view section = Columns(line.text, sectionColumn, sectionColumn);
        bool known = true;
        if (section == "G")
            m_globalLines.push_back(Columns(line.text, 1, 72));
        else if (section == "D")
            m_directoryLines.push_back(line);
        else if (section == "P")
            AddParameterLine(line);
        else if (section == "T")
            terminated = true;
        else
            known = section == "S";
        m_hasSections = m_hasSections || known;

        // What may follow the last section is nobody's business.
        if ((known && line.text.size() == lineLength) || (terminated && !known))
            continue;
        const wchar_t* const trouble =
            line.text.size() == lineLength ? L"has no section letter in column 73" : L"does not have 80 columns";
        if (m_records.empty())
            ComplainOf(line, trouble);
        else if (m_records.back().trouble.empty())
            m_records.back().trouble = L"Line " + std::to_wstring(line.number) + L" " + trouble + L".";
    }
    if (m_hasSections && !terminated)
        Complain(*m_messages, L"The file ends before its last section.");
}

void File::AddParameterLine(const Line& line)
{
    const std::string_view name = Trimmed(Columns(line.text, 65, 72));
    if (m_records.empty() || m_records.back().name != name)
    {
        m_records.emplace_back().name = name;
        m_records.back().directory = ReadColumns(line, 65, 72);
    }
    m_records.back().lines.push_back(Columns(line.text, 1, 64));
    m_records.back().numbers.push_back(line.number);
}

void File::ReadGlobalSection()
{
    if (m_globalLines.empty())
    {
        Complain(*m_messages, L"There is no global section.");
        return;
    }
    std::string_view start = m_globalLines.front();
    const Delimiters usual;
    const char parameter = TakeDelimiter(start, usual.parameter);
    const char record = TakeDelimiter(start, usual.record);
    if (CanDelimit(parameter) && CanDelimit(record) && parameter != record)
        m_delimiters = {parameter, record};
    else
        Complain(*m_messages, L"The delimiters in the global section cannot be delimiters.");

    constexpr int unitFlagField = 14;
    constexpr int unitNameField = 15;
    int unitFlag = 1;
    std::string unitName;
    RecordPtr cursor(m_messages, m_delimiters, m_globalLines);
    Field field;
    int number = 1;
    do
    {
        cursor.ReadField(field);
        if (number == unitFlagField && field.kind == FieldKind::integer)
            unitFlag = field.integer;
        else if (number == unitNameField && field.kind == FieldKind::text)
            unitName = Trimmed(field.text);
        ++number;
    } while (cursor.NextField());
    m_unit = UnitOf(unitFlag, unitName);
}

void File::ReadDirectory()
{
    for (std::size_t at = 0; at < m_directoryLines.size(); ++at)
    {
        const Line& first = m_directoryLines[at];
        const int number = ReadColumns(first, 74, 80);
        const bool isPair = number % 2 == 1 && at + 1 < m_directoryLines.size() &&
                            ReadColumns(m_directoryLines[at + 1], 74, 80) == number + 1;
        if (!isPair)
            ComplainOf(first, L"is half a directory entry without the other half");
        else if (!m_directory.emplace(number, ReadEntry(first, m_directoryLines[++at])).second)
            ComplainOf(first, L"repeats the number of a directory entry");
    }
    for (const Record& record : m_records)
    {
        const auto entry = m_directory.find(record.directory);
        if (entry != m_directory.end() && entry->second.record == nullptr)
            entry->second.record = &record;
    }
    for (const auto& [number, entry] : m_directory)
    {
        if (entry.record == nullptr && entry.type != 0)
            Complain(*m_messages, L"D " + std::to_wstring(number) + L" has no parameter record.");
    }
}

Entry File::ReadEntry(const Line& first, const Line& second)
{
    const auto field = [this](const Line& line, std::size_t number)
    { return ReadColumns(line, 8 * number - 7, 8 * number); };
    Entry entry;
    entry.type = field(first, 1);
    entry.matrix = field(first, 7);
    const int status = field(first, 9);
    entry.use = status / 100 % 100;
    entry.isDependent = status / 10000 % 2 == 1;
    entry.form = field(second, 5);
    return entry;
}

/// Blank columns are 0, and so are bad ones.
int File::ReadColumns(const Line& line, std::size_t first, std::size_t last)
{
    int value = 0;
    if (ColumnsPtr(m_messages, Columns(line.text, first, last)).ReadInt(value))
        return value;
    ComplainOf(line, L"has no number where one should be");
    return 0;
}

void File::ComplainOf(const Line& line, const wchar_t* text) const
{
    Complain(*m_messages, L"Line " + std::to_wstring(line.number) + L" " + text + L".");
}

}

#include "examples/iges/IgesFile.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

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

/// The letter in the section column, or 0.
char SectionOf(std::string_view line) { return line.size() < sectionColumn ? '\0' : line[sectionColumn - 1]; }

/// Asked first: of what is another kind of file nothing is to be said line by line.
bool HasSections(std::string_view text)
{
    const char lineEnd = LineEndOf(text);
    while (!text.empty())
    {
        const char section = SectionOf(TakeLine(text, lineEnd));
        if (section != '\0' && std::strchr("SGDPT", section) != nullptr)
            return true;
    }
    return false;
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

std::vector<std::string_view> Record::Lines() const
{
    std::vector<std::string_view> lines;
    for (const LineRun& run : runs)
    {
        for (int i = 0; i < run.count; ++i)
            lines.emplace_back(run[i], width);
    }
    return lines;
}

std::vector<int> Record::LineNumbers() const
{
    std::vector<int> numbers;
    for (const LineRun& run : runs)
    {
        for (int i = 0; i < run.count; ++i)
            numbers.push_back(run.number + i);
    }
    return numbers;
}

File::File(const char* text, std::size_t size, CTextInputOutputFile* messages)
    : m_messages(messages), m_hasSections(HasSections({text, size}))
{
    if (!m_hasSections)
        return;
    SortLines({text, size});
    HandOutRuns();
    ReadGlobalSection();
    ReadDirectory();
}

/// Most files number their entries 1, 3, 5 and so on.
const Entry* File::Find(int directory) const
{
    const auto usual = static_cast<std::size_t>(directory) / 2;
    if (usual < m_directory.size() && m_directory[usual].number == directory)
        return &m_directory[usual];
    const auto entry = std::ranges::lower_bound(m_directory, directory, {}, &Entry::number);
    return entry == m_directory.end() || entry->number != directory ? nullptr : &*entry;
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
        const char section = SectionOf(line.text);
        bool known = true;
        if (section == 'P')
            AddParameterLine(line);
        else if (section == 'D')
            m_directoryLines.push_back(line);
        else if (section == 'G')
            m_globalLines.push_back(Columns(line.text, 1, 72));
        else if (section == 'T')
            terminated = true;
        else
            known = section == 'S';

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
    if (!terminated)
        Complain(*m_messages, L"The file ends before its last section.");
}

void File::AddParameterLine(const Line& line)
{
    constexpr std::size_t nameWidth = 8;
    const char* const start = line.text.data();
    const std::string_view name(start + Record::width, nameWidth);
    // As a rule the name is to the letter that of the lines before.
    const bool isNew =
        m_runs.empty() || (std::memcmp(name.data(), m_runs.back().first + Record::width, nameWidth) != 0 &&
                           Trimmed(name) != m_records.back().name);
    if (isNew)
    {
        m_firstRuns.push_back(m_runs.size());
        m_records.emplace_back().name = Trimmed(name);
        m_records.back().directory = ReadColumns(line, 65, 72);
    }
    ++m_records.back().lineCount;
    if (!isNew && line.number == m_runs.back().number + m_runs.back().count)
    {
        LineRun& run = m_runs.back();
        if (run.count == 1)
            run.distance = static_cast<std::size_t>(start - run.first);
        if (start == run[run.count])
        {
            ++run.count;
            return;
        }
    }
    m_runs.push_back({start, 0, 1, line.number});
}

/// When their list does not grow any more.
void File::HandOutRuns()
{
    m_firstRuns.push_back(m_runs.size());
    for (std::size_t i = 0; i < m_records.size(); ++i)
        m_records[i].runs = std::span(m_runs).subspan(m_firstRuns[i], m_firstRuns[i + 1] - m_firstRuns[i]);
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
    std::vector<bool> isThere;
    for (std::size_t at = 0; at < m_directoryLines.size(); ++at)
    {
        const Line& first = m_directoryLines[at];
        Entry entry;
        entry.number = ReadColumns(first, 74, 80);
        const bool isPair = entry.number % 2 == 1 && at + 1 < m_directoryLines.size() &&
                            ReadColumns(m_directoryLines[at + 1], 74, 80) == entry.number + 1;
        if (!isPair)
        {
            ComplainOf(first, L"is half a directory entry without the other half");
            continue;
        }
        ReadEntry(first, m_directoryLines[++at], entry);
        const auto number = static_cast<std::size_t>(entry.number);
        isThere.resize(std::max(isThere.size(), number + 1));
        if (isThere[number])
            ComplainOf(first, L"repeats the number of a directory entry");
        else
            m_directory.push_back(entry);
        isThere[number] = true;
    }
    if (!std::ranges::is_sorted(m_directory, {}, &Entry::number))
        std::ranges::sort(m_directory, {}, &Entry::number);
    for (const Record& record : m_records)
    {
        const Entry* const entry = Find(record.directory);
        if (entry != nullptr && entry->record == nullptr)
            m_directory[static_cast<std::size_t>(entry - m_directory.data())].record = &record;
    }
    for (const Entry& entry : m_directory)
    {
        if (entry.record == nullptr && entry.type != 0)
            Complain(*m_messages, L"D " + std::to_wstring(entry.number) + L" has no parameter record.");
    }
}

void File::ReadEntry(const Line& first, const Line& second, Entry& entry)
{
    const auto field = [this](const Line& line, std::size_t number)
    { return ReadColumns(line, 8 * number - 7, 8 * number); };
    entry.type = field(first, 1);
    entry.matrix = field(first, 7);
    const int status = field(first, 9);
    entry.use = status / 100 % 100;
    entry.isDependent = status / 10000 % 2 == 1;
    entry.form = field(second, 5);
}

/// Blank columns are 0, and so are bad ones.
int File::ReadColumns(const Line& line, std::size_t first, std::size_t last)
{
    const std::string_view columns = Columns(line.text, first, last);
    const std::string_view digits = Trimmed(columns);
    int value = 0;
    // A cursor, which takes more and says what is wrong, has to be made first.
    if (std::from_chars(digits.data(), digits.data() + digits.size(), value).ptr == digits.data() + digits.size() ||
        ColumnsPtr(m_messages, columns).ReadInt(value))
        return value;
    ComplainOf(line, L"has no number where one should be");
    return 0;
}

void File::ComplainOf(const Line& line, const wchar_t* text) const
{
    Complain(*m_messages, L"Line " + std::to_wstring(line.number) + L" " + text + L".");
}

}

// What is in an IGES file: the road of a file through the library, from the mapping to the messages.
//
// The file is mapped and never copied. iges::File finds its records, each a list of lines that need not be adjacent;
// iges::RecordPtr, a cursor derived from the library's CTextRecordPtr, walks such a list as one stream and reads its
// numbers. What is wrong with them becomes a message in the log, which is collected here, record by record.

#include "examples/Console.h"
#include "examples/iges/EntityNames.h"
#include "examples/iges/Survey.h"
#include "utility/Utility.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <string>

/// To the library the database is an address. This program is its own host, and this is what it works on.
class CEntityDatabase
{
};

namespace
{

enum ExitStatus
{
    exitGood = 0,
    exitBadRecords = 1,
    exitNotReadable = 2,
};

constexpr unsigned int codePageUtf8 = 65001;
constexpr std::uint64_t longFile = 1 << 20;
constexpr std::uint64_t mostMessages = 10'000'000; // of the file as a whole, or of one record

struct Options
{
    boost::filesystem::path path;
    bool help = false;
    bool dump = false;
    bool verbose = false;
};

void ShowHelp()
{
    std::printf(
        "usage: iges_survey [--verbose] [--dump] FILE\n"
        "\n"
        "Tells what is in an IGES file: its entities by type, how many integers, reals and texts its\n"
        "parameter records hold, the extents of the geometry, and what could not be read.\n"
        "\n"
        "  --verbose  also says how long each record is\n"
        "  --dump     prints nothing but the parameter records, one a line: the number of the directory\n"
        "             entry, then the fields, each behind a tab; messages go to the standard error stream\n"
        "  --help     prints this\n"
        "\n"
        "The extents are those of %s,\n"
        "exactly, and of %s, which\n"
        "enclose them, so that the box may be larger than the part. Each is moved by the transformation matrices\n"
        "(124) that it names. Subfigures (308) count where they are placed (408, 412, 414). The extents leave out\n"
        "what the directory does not call geometry, curves in the parameters of a surface, and axes of revolution.\n"
        "A surface of revolution counts by its curves alone, and beside what is neither a line nor a circle an\n"
        "offset curve by a box.\n"
        "\n"
        "Exit status: 0, 1 if there was something bad in the file, 2 if it cannot be read.\n",
        iges::drawnTypes, iges::hullTypes);
}

bool ParseArguments(const std::vector<boost::filesystem::path>& arguments, Options& options)
{
    for (const boost::filesystem::path& argument : arguments)
    {
        if (argument == "--help")
            options.help = true;
        else if (argument == "--dump")
            options.dump = true;
        else if (argument == "--verbose")
            options.verbose = true;
        else if (options.path.empty() && console::Utf8(argument).substr(0, 2) != "--")
            options.path = argument;
        else
            return false;
    }
    return options.help || !options.path.empty();
}

/// With all significant digits, in every locale.
std::string Text(double value)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::general, 17).ptr};
}

std::string Quoted(const std::string& bytes)
{
    constexpr char hexDigits[] = "0123456789ABCDEF";
    std::string text = "\"";
    for (const char c : bytes)
    {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 32)
            text += c;
        else
            text += {'\\', 'x', hexDigits[byte / 16], hexDigits[byte % 16]};
    }
    return text + '"';
}

std::string Dumped(const iges::Field& field)
{
    switch (field.kind)
    {
    case iges::FieldKind::integer:
        return std::to_string(field.integer);
    case iges::FieldKind::real:
        return Text(field.real);
    case iges::FieldKind::text:
        return Quoted(field.text);
    default:
        return {};
    }
}

/// A text with a # in place of each number.
std::string WithoutNumbers(const std::string& text)
{
    std::string kind;
    for (const char c : text)
    {
        if (c < '0' || c > '9')
            kind += c;
        else if (!kind.ends_with('#'))
            kind += '#';
    }
    return kind;
}

/// Collects messages from the log, and says of each what it is about. Of those that differ by their numbers alone it
/// keeps the first, and how many there are.
class Messages
{
public:
    void Collect(const std::string& subject)
    {
        CLogMessages::instance(GetThreadDatabase()).pop(m_popped);
        for (const CLogMessage& message : m_popped)
        {
            const std::string text = from_utf(message.m_strMessage, codePageUtf8);
            if (++m_counts[WithoutNumbers(text)] <= shownOfAKind)
                m_text += subject + ": " + text;
            m_hasErrors = m_hasErrors || message.m_eSeverity >= LogSeverityError;
        }
    }

    bool HasErrors() const { return m_hasErrors; }

    std::string All() const
    {
        std::string text = m_text;
        for (const auto& [kind, count] : m_counts)
        {
            if (count > shownOfAKind)
                text += "and " + std::to_string(count - shownOfAKind) + " more: " + kind;
        }
        return text;
    }

private:
    static constexpr std::uint64_t shownOfAKind = 20;

    boost::circular_buffer_space_optimized<CLogMessage> m_popped;
    std::map<std::string, std::uint64_t> m_counts;
    std::string m_text;
    bool m_hasErrors = false;
};

std::string SubjectOf(const iges::File& file, const iges::Record& record)
{
    const iges::Entry* const entry = file.Find(record.directory);
    return "D " + (record.name.empty() ? "(no number)" : std::string(record.name)) +
           (entry == nullptr ? ", no type" : ", type " + std::to_string(entry->type));
}

/// As dialogs show a length, or by its power of ten if that is long.
std::string ShownLength(double length, int places)
{
    const bool isLong = std::fabs(length) >= 1e9;
    return from_utf(isLong ? QLMFormatFloatE(length, places) : QLMFormatFloatPrecise(length, places), codePageUtf8);
}

void ShowExtents(const iges::Extents& extents, const char* unit, double factor, int places)
{
    std::printf("extents in %s\n", unit);
    for (std::size_t i = 0; i < 3; ++i)
        std::printf("  %c  %s to %s\n", "xyz"[i], ShownLength(extents.axes[i].minimum * factor, places).c_str(),
                    ShownLength(extents.axes[i].maximum * factor, places).c_str());
}

void Show(const iges::File& file, const iges::Survey& survey)
{
    std::map<int, int> types;
    for (const auto& [number, entry] : file.Directory())
        ++types[entry.type];
    std::printf("entities\n");
    for (const auto& [type, count] : types)
        std::printf("  %3d  %-36s %8d\n", type, iges::EntityName(type), count);
    std::printf("fields\n  %llu integers, %llu reals, %llu texts\n", static_cast<unsigned long long>(survey.Integers()),
                static_cast<unsigned long long>(survey.Reals()), static_cast<unsigned long long>(survey.Texts()));

    const StatSeries& lengths = survey.RecordLengths();
    if (lengths.count != 0)
        std::printf("records\n  %u, of %.0f to %.0f fields, %s on average\n", lengths.count, lengths.minimum,
                    lengths.maximum,
                    from_utf(QLMFormatFloatPrecise(lengths.sum / lengths.count, 1), codePageUtf8).c_str());

    const iges::Extents& extents = survey.ExtentsOfGeometry();
    const iges::Unit& unit = file.LengthUnit();
    if (extents.IsEmpty())
    {
        std::printf("extents\n  none\n");
        return;
    }
    const int placesOfMillimetres = DialogDecimalPlaces(DISTANCE_UNITS_MM);
    if (unit.millimetres != 1.0)
        ShowExtents(extents, unit.name.c_str(), 1.0, DialogDecimalPlaces(DISTANCE_UNITS_METRE));
    if (unit.millimetres > 0.0)
        ShowExtents(extents, "millimetres", unit.millimetres, placesOfMillimetres);
    else
        std::printf("extents in millimetres\n  unknown: the file has a unit of its own\n");
}

ExitStatus Run(const Options& options)
{
    CTextInputOutputFile mapped(options.path);
    if (!mapped.IsValid())
    {
        console::Print(stderr, console::Utf8(options.path) + " is empty or cannot be mapped\n");
        return exitNotReadable;
    }
    const iges::File file(mapped.DataPtr(), mapped.GetFileSize(), &mapped);
    if (!file.IsIges())
    {
        console::Print(stderr,
                       console::Utf8(options.path) + " is no IGES file: no line has a section letter in column 73\n");
        return exitNotReadable;
    }

    Messages messages;
    messages.Collect("file");
    iges::Part part(file);
    iges::Survey survey(file, part);
    {
        console::Progress progress(mapped.GetFileSize() >= longFile && !options.dump ? mapped.GetFileSize() : 0);
        std::string line;
        std::function<void(const iges::Field&)> dumpField;
        if (options.dump)
            dumpField = [&line](const iges::Field& field) { line += '\t' + Dumped(field); };
        for (const iges::Record& record : file.Records())
        {
            line = record.name;
            survey.Read(record, dumpField);
            if (options.dump)
                console::Print(stdout, line + '\n');
            messages.Collect(SubjectOf(file, record));
            progress.Show(static_cast<std::uint64_t>(record.lines.back().data() - mapped.DataPtr()));
        }
    }

    if (!options.dump)
        Show(file, survey);
    const std::string said = messages.All();
    if (!options.dump && !said.empty())
        console::Print(stdout, "messages\n");
    console::Print(options.dump ? stderr : stdout, said);
    if (std::fflush(stdout) != 0)
    {
        console::Print(stderr, "the output cannot be written\n");
        return exitNotReadable;
    }
    return messages.HasErrors() ? exitBadRecords : exitGood;
}

}

int main(int argumentCount, char** arguments)
{
    InitialiseUtilityDLL();
    SetLogDebugMessages(true);
    CEntityDatabase database;
    SetThreadDatabase(&database);
    CLogMessages::instance(&database).SetLogCapacity(mostMessages);

    Options options;
    if (!ParseArguments(console::Arguments(argumentCount, arguments), options))
    {
        console::Print(stderr, "usage: iges_survey [--verbose] [--dump] FILE, or iges_survey --help\n");
        return exitNotReadable;
    }
    if (options.help)
    {
        ShowHelp();
        return exitGood;
    }
    SetLogLevel(options.verbose ? LogSeverityInformation : LogSeverityWarning);
    try
    {
        return Run(options);
    }
    catch (CException* failure)
    {
        console::Print(stderr, console::ReasonOf(failure, options.path));
        return exitNotReadable;
    }
}

// What is in an IGES file: the road of a file through the library, from the mapping to the messages.
//
// The file is mapped and never copied. iges::File finds its records, each a list of lines that need not be adjacent;
// iges::RecordPtr, a cursor derived from the library's CTextRecordPtr, walks such a list as one stream and reads its
// numbers. What is wrong with them becomes a message in the log, which is collected here, record by record. iges::Part
// knows what of it is the part, and hands its shapes on to what measures or draws them.

#include "examples/Console.h"
#include "examples/iges/EntityNames.h"
#include "examples/iges/Picture.h"
#include "examples/iges/Survey.h"
#include "utility/Utility.h"

#include <boost/filesystem/operations.hpp>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
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
    exitInterrupted = 130, // as shells have it
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
    boost::filesystem::path picture;
    boost::filesystem::path scene;
    double error = 0.0; // 0 for one of its own
};

void ShowHelp()
{
    std::printf(
        "usage: iges_survey [--verbose] [--dump] [--svg FILE.svg] [--out FILE.wrl] [--error LENGTH] FILE\n"
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
        "Pictures and scenes have what the extents have, without surfaces. A file that was there before is replaced\n"
        "when the new one is whole, and stays as it was if the program is interrupted.\n"
        "\n"
        "Exit status: 0, 1 if there was something bad in the file, 2 if it cannot be read or another one not be\n"
        "written, 130 if it was interrupted.\n",
        iges::drawnTypes, iges::hullTypes);
}

bool EndsIn(const boost::filesystem::path& path, const std::string& end) { return console::Utf8(path).ends_with(end); }

bool ParseArguments(const std::vector<boost::filesystem::path>& arguments, Options& options)
{
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument)
    {
        const bool hasNext = argument + 1 != arguments.end();
        if (*argument == "--help")
            options.help = true;
        else if (*argument == "--dump")
            options.dump = true;
        else if (*argument == "--verbose")
            options.verbose = true;
        else if (*argument == "--svg" && hasNext && EndsIn(argument[1], ".svg"))
            options.picture = *++argument;
        else if (*argument == "--out" && hasNext && (EndsIn(argument[1], ".wrl") || EndsIn(argument[1], ".wrl.gz")))
            options.scene = *++argument;
        else if (*argument == "--error" && hasNext &&
                 QLMParseFloat(console::Wide(argument[1]).c_str(), options.error) && options.error > 0.0)
            ++argument;
        else if (options.path.empty() && console::Utf8(*argument).substr(0, 2) != "--")
            options.path = *argument;
        else
            return false;
    }
    return options.help || !options.path.empty();
}

/// With all significant digits or fewer, in every locale.
std::string Text(double value, int digits = 17)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits).ptr};
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
    for (const iges::Entry& entry : file.Directory())
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

/// What of the part is drawn, with what is to be said about that.
iges::Wireframe WireframeOf(const iges::File& file, iges::Part& part, const iges::Extents& extents, double error)
{
    constexpr double share = 1e-4;
    const double diagonal = extents.Diagonal();
    if (error == 0.0)
        error = diagonal > 0.0 && std::isfinite(diagonal) ? share * diagonal : 1.0;
    iges::Wireframe wireframe(error);
    for (const iges::Entry& entry : file.Directory())
    {
        if (part.Has(entry.number) && !wireframe.IsFull())
            part.Show(entry.number, part.NumbersOf(entry), wireframe);
    }
    if (wireframe.IsFull())
        iges::Complain(*file.Messages(), L"There is more than can be drawn, and the rest is left out.");
    return wireframe;
}

void ShowDrawing(const iges::Wireframe& wireframe, const char* unit)
{
    std::size_t points = 0;
    for (const std::vector<iges::Point>& polyline : wireframe.Polylines())
        points += polyline.size();
    std::printf("drawing\n  %zu points, %zu polylines of %zu points, within %s %s of their curves\n",
                wireframe.Points().size(), wireframe.Polylines().size(), points, Text(wireframe.Error(), 3).c_str(),
                unit);
}

/// Whether two names are those of one file.
bool IsSame(const boost::filesystem::path& one, const boost::filesystem::path& other)
{
    boost::system::error_code ignored;
    return one == other || boost::filesystem::equivalent(one, other, ignored);
}

/// False if it was interrupted.
bool Save(const Options& options, const iges::Wireframe& wireframe)
{
    const console::Interruption interruption;
    const std::wstring title = console::Wide(options.path.filename());
    return (options.picture.empty() ||
            iges::SavePicture(options.picture, wireframe, title, console::Interruption::IsAsked)) &&
           (options.scene.empty() || iges::SaveScene(options.scene, wireframe, title, console::Interruption::IsAsked));
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
            progress.Show(static_cast<std::uint64_t>(record.lines.back() - mapped.DataPtr()));
        }
    }

    if (!options.dump)
        Show(file, survey);
    const bool isDrawn = !options.picture.empty() || !options.scene.empty();
    if (isDrawn)
    {
        const iges::Wireframe wireframe = WireframeOf(file, part, survey.ExtentsOfGeometry(), options.error);
        messages.Collect("drawing");
        if (!options.dump)
            ShowDrawing(wireframe, file.LengthUnit().name.c_str());
        if (!Save(options, wireframe))
        {
            console::Print(stderr, "interrupted\n");
            return exitInterrupted;
        }
    }
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
        console::Print(
            stderr,
            "usage: iges_survey [--verbose] [--dump] [--svg FILE.svg] [--out FILE.wrl] FILE, or iges_survey --help\n");
        return exitNotReadable;
    }
    if (options.help)
    {
        ShowHelp();
        return exitGood;
    }
    if (IsSame(options.picture, options.path) || IsSame(options.scene, options.path))
    {
        console::Print(stderr, console::Utf8(options.path) + " is to be read, and is not written over\n");
        return exitNotReadable;
    }
    SetLogLevel(options.verbose ? LogSeverityInformation : LogSeverityWarning);
    try
    {
        return Run(options);
    }
    catch (CException* failure)
    {
        console::Print(stderr, console::ReasonOf(failure, options.path));
    }
    catch (const std::exception& failure)
    {
        console::Print(stderr, std::string(failure.what()) + '\n');
    }
    return exitNotReadable;
}

// What is in an IGES file: the road of a file through the library, from the mapping to the messages.
//
// The file is mapped. iges::File finds its records, each of lines that need not be adjacent; iges::RecordPtr, a cursor
// derived from the library's CDelimitedTextRecordPtr, reads their numbers in runs. What is wrong with them becomes a
// message in the log, which is collected here, record by record. iges::Part knows what of it is the part, and hands its
// shapes on to what measures or draws them.
//
// Threads read batches of records, each with a survey and an owner in the log of its own. The batches are those of the
// file, however many threads there are, and what comes of them is put together in their order: so is the output.

#include "examples/Console.h"
#include "examples/iges/EntityNames.h"
#include "examples/iges/Picture.h"
#include "examples/iges/Survey.h"
#include "examples/InOrder.h"
#include "utility/Utility.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

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
    bool times = false;
    std::size_t jobs = 0; // 0 for as many as there are processors
    boost::filesystem::path picture;
    boost::filesystem::path scene;
    double error = 0.0; // 0 for one of its own
};

void ShowHelp()
{
    std::printf(
        "usage: iges_survey [--verbose] [--dump] [--jobs COUNT] [--times]\n"
        "                   [--svg FILE.svg] [--out FILE.wrl] [--error LENGTH] FILE\n"
        "\n"
        "Tells what is in an IGES file: its entities by type, how many integers, reals and texts its\n"
        "parameter records hold, the extents of the geometry, and what could not be read.\n"
        "\n"
        "  --verbose  also says how long each record is\n"
        "  --dump     prints nothing but the parameter records, one a line: the number of the directory\n"
        "             entry, then the fields, each behind a tab; messages go to the standard error stream\n"
        "  --jobs     reads records on so many threads, and not on one for each processor; the output is the same\n"
        "  --times    says on the standard error stream when each step began, and its milliseconds\n"
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

/// A count from 1 on.
bool ParseCount(const std::string& text, std::size_t& count)
{
    const char* const end = text.data() + text.size();
    const auto [last, error] = std::from_chars(text.data(), end, count);
    return error == std::errc() && last == end && count > 0;
}

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
        else if (*argument == "--times")
            options.times = true;
        else if (*argument == "--jobs" && hasNext && ParseCount(console::Utf8(argument[1]), options.jobs))
            ++argument;
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

struct Message
{
    std::string subject; ///< what it is about
    std::string text;
    std::string kind; ///< the text without its numbers
};

std::string SubjectOf(const iges::File& file, const iges::Record& record)
{
    const iges::Entry* const entry = file.Find(record.directory);
    return "D " + (record.name.empty() ? "(no number)" : std::string(record.name)) +
           (entry == nullptr ? ", no type" : ", type " + std::to_string(entry->type));
}

/// Of messages that differ by their numbers alone no more than this are shown.
constexpr std::uint64_t shownOfAKind = 20;

/// What is kept of many messages: a bad file may have more of them than there is memory for.
struct Messages
{
    std::vector<Message> shown; ///< the first of each kind
    std::map<std::string, std::uint64_t> counts;
    bool hasErrors = false;

    /// Takes those of the calling thread out of the log.
    void Take(const std::function<std::string()>& subject)
    {
        boost::circular_buffer_space_optimized<CLogMessage> popped;
        CLogMessages::instance(GetThreadDatabase()).pop(popped);
        for (const CLogMessage& message : popped)
        {
            std::string text = from_utf(message.m_strMessage, codePageUtf8);
            std::string kind = WithoutNumbers(text);
            hasErrors = hasErrors || message.m_eSeverity >= LogSeverityError;
            if (++counts[kind] <= shownOfAKind)
                shown.push_back({subject(), std::move(text), std::move(kind)});
        }
    }
};

/// Of messages that differ by their numbers alone it keeps the first, and how many there are.
class Summary
{
public:
    /// Those that are shown, from one on up to another. The rest of them is added by AddRest.
    void AddShown(const Messages& messages, std::size_t first, std::size_t end)
    {
        for (std::size_t i = first; i < end; ++i)
        {
            const Message& message = messages.shown[i];
            if (++m_counts[message.kind] <= shownOfAKind)
                m_text += message.subject + ": " + message.text;
        }
    }

    void AddRest(const Messages& messages)
    {
        for (const auto& [kind, count] : messages.counts)
            m_counts[kind] += count - std::min(count, shownOfAKind);
        m_hasErrors = m_hasErrors || messages.hasErrors;
    }

    /// Those of the calling thread.
    void Add(const std::function<std::string()>& subject)
    {
        Messages messages;
        messages.Take(subject);
        AddShown(messages, 0, messages.shown.size());
        AddRest(messages);
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
    std::map<std::string, std::uint64_t> m_counts;
    std::string m_text;
    bool m_hasErrors = false;
};

/// How many threads read.
std::size_t JobsOf(const Options& options)
{
    return options.jobs != 0 ? options.jobs : std::max(1U, std::thread::hardware_concurrency());
}

/// Has the system map the pages of a file ahead of its reader, on a thread of its own: it maps what is touched, and that
/// takes as long as finding lines there.
std::jthread TouchAhead(const char* data, std::uint64_t size)
{
    constexpr std::uint64_t page = 4096;
    const auto touch = [=](const std::stop_token& stop)
    {
        for (std::uint64_t at = 0; at < size && !stop.stop_requested(); at += page)
            static_cast<void>(*static_cast<const volatile char*>(data + at));
    };
    try
    {
        return std::jthread(touch);
    }
    catch (const std::exception&)
    {
        return {};
    }
}

/// Records that one thread reads.
using Batch = std::span<const iges::Record>;

/// By the file alone. The first is short, as the others wait for the box around what it has.
std::vector<Batch> BatchesOf(std::span<const iges::Record> records)
{
    constexpr std::size_t firstLines = 1'000;
    constexpr std::size_t usualLines = 16'000;
    std::vector<Batch> batches;
    std::size_t first = 0;
    std::size_t lines = 0;
    for (std::size_t i = 0; i < records.size(); ++i)
    {
        lines += records[i].lineCount;
        if (lines >= (batches.empty() ? firstLines : usualLines) || i + 1 == records.size())
        {
            batches.push_back(records.subspan(first, i + 1 - first));
            first = i + 1;
            lines = 0;
        }
    }
    return batches;
}

/// What comes of a batch.
struct Found
{
    /// One whose entity is yet to be measured, with so many messages shown up to it.
    struct Late
    {
        const iges::Record* record;
        std::size_t messages;
    };

    iges::Findings findings;
    std::string dump;
    Messages messages;
    std::vector<Late> late;
};

/// Reads batches on one thread, for which it is an owner of messages.
class Worker
{
public:
    Worker(const iges::File& file, iges::Part& part, bool isDumping, const iges::Extents& known)
        : m_file(file), m_survey(file, part, known), m_isDumping(isDumping), m_earlier(GetThreadDatabase())
    {
        SetThreadDatabase(&m_database);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;
    ~Worker() { SetThreadDatabase(m_earlier); }

    Found Read(Batch batch)
    {
        Found found;
        std::function<void(const iges::Field&)> dumpField;
        if (m_isDumping)
            dumpField = [&found](const iges::Field& field) { found.dump += '\t' + Dumped(field); };
        for (const iges::Record& record : batch)
        {
            if (m_isDumping)
                found.dump += record.name;
            const bool isMeasured = m_survey.ReadAhead(record, dumpField);
            if (m_isDumping)
                found.dump += '\n';
            found.messages.Take([&] { return SubjectOf(m_file, record); });
            if (!isMeasured)
                found.late.push_back({&record, found.messages.shown.size()});
        }
        found.findings = m_survey.Take();
        return found;
    }

private:
    CThreadAllocatorManager m_allocator;
    const iges::File& m_file;
    iges::Survey m_survey;
    bool m_isDumping;
    CEntityDatabase m_database;
    CEntityDatabase* m_earlier;
};

/// Measures what is late, and puts what is said of it where it belongs.
void Complete(const iges::File& file, const Found& found, iges::Survey& survey, Summary& summary)
{
    std::size_t added = 0;
    survey.Add(found.findings);
    for (const Found::Late& late : found.late)
    {
        summary.AddShown(found.messages, std::exchange(added, late.messages), late.messages);
        survey.Measure(*late.record);
        summary.Add([&] { return SubjectOf(file, *late.record); });
    }
    summary.AddShown(found.messages, added, found.messages.shown.size());
    summary.AddRest(found.messages);
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

void Show(const iges::File& file, const iges::Findings& found)
{
    std::map<int, int> types;
    for (const iges::Entry& entry : file.Directory())
        ++types[entry.type];
    std::printf("entities\n");
    for (const auto& [type, count] : types)
        std::printf("  %3d  %-36s %8d\n", type, iges::EntityName(type), count);
    std::printf("fields\n  %llu integers, %llu reals, %llu texts\n", static_cast<unsigned long long>(found.integers),
                static_cast<unsigned long long>(found.reals), static_cast<unsigned long long>(found.texts));

    const StatSeries& lengths = found.recordLengths;
    if (lengths.count != 0)
        std::printf("records\n  %u, of %.0f to %.0f fields, %s on average\n", lengths.count, lengths.minimum,
                    lengths.maximum,
                    from_utf(QLMFormatFloatPrecise(lengths.sum / lengths.count, 1), codePageUtf8).c_str());

    const iges::Extents& extents = found.extents;
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

/// False if it was interrupted.
bool ReadAll(const Options& options, const iges::File& file, iges::Part& part, std::uint64_t size, iges::Survey& survey,
             Summary& summary)
{
    const console::Interruption interruption;
    const std::vector<Batch> batches = BatchesOf(file.Records());
    console::Progress progress(size >= longFile && !options.dump ? size : 0);
    std::uint64_t done = 0;
    const auto take = [&](const Found& found)
    {
        Complete(file, found, survey, summary);
        console::Print(stdout, found.dump);
        progress.Show(size * ++done / batches.size());
        return !console::Interruption::IsAsked();
    };
    if (batches.empty())
        return true;
    const Found first = Worker(file, part, options.dump, {}).Read(batches.front());
    if (!take(first))
        return false;
    const std::span<const Batch> rest = std::span(batches).subspan(1);
    InOrder<Found, Worker> work(
        std::min(JobsOf(options), std::max<std::size_t>(1, rest.size())), rest.size(),
        [&] { return Worker(file, part, options.dump, first.findings.extents); },
        [&](Worker& worker, std::size_t i) { return worker.Read(rest[i]); });
    while (const std::optional<Found> found = work.Next())
    {
        if (!take(*found))
            return false;
    }
    return true;
}

ExitStatus Interrupted()
{
    console::Print(stderr, "interrupted\n");
    return exitInterrupted;
}

ExitStatus Run(const Options& options)
{
    CTimeLogger timing;
    CTextInputOutputFile mapped(options.path);
    if (!mapped.IsValid())
    {
        console::Print(stderr, console::Utf8(options.path) + " is empty or cannot be mapped\n");
        return exitNotReadable;
    }
    timing.LogNextTime(L"mapping the file");
    const bool isTouched = JobsOf(options) > 1 && mapped.GetFileSize() >= longFile;
    const std::jthread ahead = isTouched ? TouchAhead(mapped.DataPtr(), mapped.GetFileSize()) : std::jthread();
    const iges::File file(mapped.DataPtr(), mapped.GetFileSize(), &mapped);
    if (!file.IsIges())
    {
        console::Print(stderr,
                       console::Utf8(options.path) + " is no IGES file: no line has a section letter in column 73\n");
        return exitNotReadable;
    }
    timing.LogNextTime(L"finding lines and entries");

    Summary summary;
    summary.Add([] { return "file"; });
    iges::Part part(file);
    timing.LogNextTime(L"following references");
    iges::Survey survey(file, part);
    if (!ReadAll(options, file, part, mapped.GetFileSize(), survey, summary))
        return Interrupted();
    timing.LogNextTime(L"reading and measuring records");
    if (options.times)
        console::Print(stderr, from_utf(timing.GetTimeLog(), codePageUtf8));

    if (!options.dump)
        Show(file, survey.Found());
    const bool isDrawn = !options.picture.empty() || !options.scene.empty();
    if (isDrawn)
    {
        const iges::Wireframe wireframe = WireframeOf(file, part, survey.Found().extents, options.error);
        summary.Add([] { return "drawing"; });
        if (!options.dump)
            ShowDrawing(wireframe, file.LengthUnit().name.c_str());
        if (!Save(options, wireframe))
            return Interrupted();
    }
    const std::string said = summary.All();
    if (!options.dump && !said.empty())
        console::Print(stdout, "messages\n");
    console::Print(options.dump ? stderr : stdout, said);
    if (!console::IsPrinted())
    {
        console::Print(stderr, "the output cannot be written\n");
        return exitNotReadable;
    }
    return summary.HasErrors() ? exitBadRecords : exitGood;
}

}

int main(int argumentCount, char** arguments)
{
    InitialiseUtilityDLL();
    SetLogDebugMessages(true);
    CEntityDatabase database;
    SetThreadDatabase(&database);
    CLogMessages::SetDefaultLogCapacity(mostMessages);

    Options options;
    if (!ParseArguments(console::Arguments(argumentCount, arguments), options))
    {
        console::Print(
            stderr,
            "usage: iges_survey [--verbose] [--dump] [--jobs COUNT] [--times] [--svg FILE.svg] [--out FILE.wrl] "
            "[--error LENGTH] FILE, or iges_survey --help\n");
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

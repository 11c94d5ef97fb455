// Expands files that PKWARE's Data Compression Library has imploded, as installers and old drawings have them.
//
// A file is mapped and handed to the library's decoder piece by piece; what comes of it goes to the standard output, or
// to a file beside it, which takes the place of an older one when it is whole and on the disk.

#include "examples/Console.h"
#include "utility/Utility.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace
{

enum ExitStatus
{
    exitGood = 0,
    exitBadFile = 1,
    exitNotReadable = 2,
    exitInterrupted = 130, // as shells have it
};

constexpr std::uint64_t longFile = 1 << 20;

struct Options
{
    std::vector<boost::filesystem::path> paths;
    bool help = false;
    bool beside = false;
};

void ShowHelp()
{
    std::printf(
        "usage: dcl_cat [--beside] FILE...\n"
        "\n"
        "Expands files that PKWARE's Data Compression Library has imploded, to the standard output, one behind the\n"
        "other.\n"
        "\n"
        "  --beside  expands each to a file beside it, whose name lacks the extension: part.igs.imp to part.igs\n"
        "  --help    prints this\n"
        "\n"
        "A file that was there before is replaced when the new one is whole; it stays as it was if the imploded\n"
        "one is damaged, or if the program is interrupted. The imploded file stays. Such files have no checksum:\n"
        "it is not told if one was changed and can still be expanded, nor what is behind the end of a stream.\n"
        "\n"
        "Exit status: 0, 1 if a file is damaged or not imploded, 2 if one cannot be read or written, 130 if it\n"
        "was interrupted.\n");
}

bool ParseArguments(const std::vector<boost::filesystem::path>& arguments, Options& options)
{
    for (const boost::filesystem::path& argument : arguments)
    {
        if (argument == "--help")
            options.help = true;
        else if (argument == "--beside")
            options.beside = true;
        else if (console::Utf8(argument).starts_with("--"))
            return false;
        else
            options.paths.push_back(argument);
    }
    return options.help || !options.paths.empty();
}

/// The bytes of a mapped file, block by block.
class Blocks
{
public:
    explicit Blocks(const CMemoryMappedFile& file)
        : m_next(static_cast<const unsigned char*>(file.GetBase())), m_left(file.GetFileSize()), m_size(m_left)
    {
    }

    static std::uint32_t Give(void* context, const unsigned char** block)
    {
        auto& blocks = *static_cast<Blocks*>(context);
        const auto size = static_cast<std::uint32_t>(std::min(blocks.m_left, longestBlock));
        *block = blocks.m_next;
        blocks.m_next += size;
        blocks.m_left -= size;
        return size;
    }

    std::uint64_t Given() const { return m_size - m_left; }

private:
    static constexpr std::uint64_t longestBlock = 1 << 18;

    const unsigned char* m_next;
    std::uint64_t m_left;
    std::uint64_t m_size;
};

/// Takes what was expanded. False if there shall be no more.
using Sink = std::function<bool(const unsigned char* bytes, std::uint64_t size)>;

enum class Outcome
{
    whole,
    cut,
    damaged,
    notImploded,
    stopped,
};

Outcome Expand(Blocks& blocks, const Sink& sink)
{
    BlastState* state = nullptr;
    int code = blastInit(&Blocks::Give, &blocks, &state);
    const std::unique_ptr<BlastState, void (*)(BlastState*)> owner(state, &blastTerm);
    if (code == 1)
        throw std::bad_alloc();
    if (code != 0)
        return Outcome::notImploded;

    std::array<unsigned char, 1 << 16> part;
    int earlier = code;
    for (std::uint64_t given = 0;;)
    {
        std::uint64_t size = 0;
        code = blastMore(state, part.data(), part.size(), &size);
        // The decoder goes on behind the end of a stream that fills its last window.
        std::uint64_t wholeSize = 0;
        const bool isWhole = blastEndMarkRead(state, &wholeSize) == 1;
        if (isWhole)
            size = std::min(size, wholeSize - given);
        if (size != 0 && !sink(part.data(), size))
            return Outcome::stopped;
        given += size;
        if (isWhole && given == wholeSize)
            return Outcome::whole;
        // What was expanded ahead of a cut comes with one more call.
        if (code == 2 && std::exchange(earlier, code) != code)
            continue;
        if (code != 0)
            return code == 2 ? Outcome::cut : Outcome::damaged;
    }
}

/// Stopped when an interruption is asked for.
Outcome ExpandTo(const boost::filesystem::path& path, const CMemoryMappedFile& file)
{
    console::Progress progress(file.GetFileSize() >= longFile ? file.GetFileSize() : 0);
    Blocks blocks(file);
    CBinaryFile expanded;
    expanded.Open(path);
    const Outcome outcome = Expand(blocks,
                                   [&](const unsigned char* bytes, std::uint64_t size)
                                   {
                                       expanded.WriteFile(bytes, size);
                                       progress.Show(blocks.Given());
                                       return !console::Interruption::IsAsked();
                                   });
    if (outcome == Outcome::whole)
        expanded.CommitAndClose();
    return outcome;
}

/// Says what is wrong with a file, if anything is.
ExitStatus Tell(Outcome outcome, const boost::filesystem::path& path)
{
    switch (outcome)
    {
    case Outcome::whole:
        return exitGood;
    case Outcome::cut:
        console::Print(stderr, console::Utf8(path) + " ends too soon\n");
        return exitBadFile;
    case Outcome::damaged:
        console::Print(stderr, console::Utf8(path) + " is damaged\n");
        return exitBadFile;
    case Outcome::notImploded:
        console::Print(stderr, console::Utf8(path) + " is no imploded file\n");
        return exitBadFile;
    default:
        return exitNotReadable;
    }
}

ExitStatus Print(const CMemoryMappedFile& file, const boost::filesystem::path& path)
{
    Blocks blocks(file);
    const Outcome outcome = Expand(blocks, [](const unsigned char* bytes, std::uint64_t size)
                                   { return std::fwrite(bytes, 1, size, stdout) == size; });
    if (std::fflush(stdout) != 0 || outcome == Outcome::stopped)
    {
        console::Print(stderr, "the output cannot be written\n");
        return exitNotReadable;
    }
    return Tell(outcome, path);
}

ExitStatus Save(const CMemoryMappedFile& file, const boost::filesystem::path& path)
{
    const boost::filesystem::path expandedPath = boost::filesystem::path(path).replace_extension();
    const boost::filesystem::path name = path.stem();
    if (name == path.filename() || name.empty() || name.filename_is_dot() || name.filename_is_dot_dot())
    {
        console::Print(stderr, console::Utf8(path) + " has no extension that its expanded file could lack\n");
        return exitNotReadable;
    }
    const console::Interruption interruption;
    CBackupFile backup(expandedPath);
    const Outcome outcome = ExpandTo(backup.GetTempFilename(), file);
    if (outcome != Outcome::whole)
        return outcome == Outcome::stopped ? exitInterrupted : Tell(outcome, path);
    if (console::Interruption::IsAsked())
        return exitInterrupted;
    backup.SetReplaceFile(true);
    return exitGood;
}

ExitStatus Run(const boost::filesystem::path& path, bool beside)
try
{
    const CMemoryMappedFile file(path);
    if (file.GetBase() == nullptr)
    {
        console::Print(stderr, console::Utf8(path) + " is empty or cannot be mapped\n");
        return exitNotReadable;
    }
    return beside ? Save(file, path) : Print(file, path);
}
catch (CException* failure)
{
    console::Print(stderr, console::ReasonOf(failure, path));
    return exitNotReadable;
}
catch (const std::exception& failure)
{
    console::Print(stderr, std::string(failure.what()) + '\n');
    return exitNotReadable;
}

}

int main(int argumentCount, char** arguments)
{
    InitialiseUtilityDLL();
    Options options;
    if (!ParseArguments(console::Arguments(argumentCount, arguments), options))
    {
        console::Print(stderr, "usage: dcl_cat [--beside] FILE..., or dcl_cat --help\n");
        return exitNotReadable;
    }
    if (options.help)
    {
        ShowHelp();
        return exitGood;
    }
    if (!options.beside)
        console::MakeOutputBinary();
    ExitStatus status = exitGood;
    for (const boost::filesystem::path& path : options.paths)
    {
        status = std::max(status, Run(path, options.beside));
        if (status == exitInterrupted)
        {
            console::Print(stderr, "interrupted\n");
            break;
        }
    }
    return status;
}

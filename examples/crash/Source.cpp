#include "examples/crash/Source.h"

#include "examples/Console.h"
#include "utility/Utility.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace crash
{

namespace
{

bool IsSource(const boost::filesystem::path& path)
{
    static constexpr std::array<std::string_view, 14> endings = {".c",   ".cc",  ".cpp", ".cxx", ".h",   ".hh", ".hpp",
                                                                 ".hxx", ".inc", ".inl", ".ipp", ".tcc", ".S",  ".asm"};
    return std::ranges::find(endings, console::Utf8(path.extension())) != endings.end();
}

/// Another machine would be told who the user is by the question alone, and a device may do anything. On Windows names
/// of both begin with two separators, or with one and no drive.
bool IsOfThisMachine(const boost::filesystem::path& path)
{
    constexpr std::size_t drive = 2;
    return !path.has_root_path() || (path.is_absolute() && path.root_name().size() <= drive);
}

/// Nothing for what is no file, or has more than can be a source.
std::uintmax_t SizeOf(const boost::filesystem::path& path)
{
    constexpr std::uintmax_t longestSource = 1 << 24;
    boost::system::error_code ignored;
    const std::uintmax_t size = is_regular_file(path, ignored) ? file_size(path, ignored) : 0;
    return size <= longestSource ? size : 0;
}

/// With blanks for tabulators.
std::string TextOf(std::string_view line)
{
    constexpr std::size_t longestLine = 500;
    line = line.substr(0, line.find('\r'));
    std::size_t length = std::min(line.size(), longestLine);
    // Not within a character.
    while (length != 0 && length < line.size() && (line[length] & '\xC0') == '\x80')
        --length;
    std::string text;
    for (const char c : line.substr(0, length))
        text += c == '\t' ? std::string(4, ' ') : std::string(1, c);
    return Shown(text) + (length < line.size() ? "…" : "");
}

}

const std::vector<SourceLine>& Sources::LinesAround(const Frame& frame)
{
    const auto [known, isNew] = m_known.try_emplace({frame.path, frame.line});
    if (isNew)
        known->second = Read(frame);
    return known->second;
}

std::vector<SourceLine> Sources::Read(const Frame& frame)
{
    unsigned long place = 0;
    std::from_chars(frame.line.data(), frame.line.data() + frame.line.size(), place);
    const boost::filesystem::path path = console::PathOf(frame.path);
    if (place == 0 || !IsSource(path) || !IsOfThisMachine(path))
        return {};
    const std::uintmax_t size = SizeOf(path);
    if (size == 0 || size > m_left)
        return {};
    m_left -= size;
    std::vector<SourceLine> lines;
    try
    {
        const CMemoryMappedFile file(path);
        std::string_view rest(static_cast<const char*>(file.GetBase()), file.GetFileSize());
        for (unsigned long number = 1; !rest.empty() && number <= place + m_distance; ++number)
        {
            const std::string_view line = rest.substr(0, rest.find('\n'));
            if (number + m_distance >= place)
                lines.push_back({number, TextOf(line), number == place});
            rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        }
    }
    catch (CException* failure)
    {
        failure->Delete();
    }
    // A file that has become shorter says nothing of the place.
    if (std::ranges::none_of(lines, &SourceLine::isWhere))
        lines.clear();
    return lines;
}

}

#include "examples/crash/Source.h"

#include "examples/Console.h"
#include "utility/Utility.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace crash
{

namespace
{

constexpr std::uintmax_t longestSource = 1 << 24;

bool IsSource(const boost::filesystem::path& path)
{
    static constexpr std::array<std::string_view, 14> endings = {".c",   ".cc",  ".cpp", ".cxx", ".h",   ".hh", ".hpp",
                                                                 ".hxx", ".inc", ".inl", ".ipp", ".tcc", ".S",  ".asm"};
    boost::system::error_code ignored;
    return std::ranges::find(endings, console::Utf8(path.extension())) != endings.end() &&
           is_regular_file(path, ignored) && file_size(path, ignored) <= longestSource;
}

}

std::vector<SourceLine> LinesAround(const Frame& frame, unsigned long distance)
{
    unsigned long place = 0;
    std::from_chars(frame.line.data(), frame.line.data() + frame.line.size(), place);
    const boost::filesystem::path path = console::PathOf(frame.path);
    if (place == 0 || !IsSource(path))
        return {};
    std::vector<SourceLine> lines;
    try
    {
        const CMemoryMappedFile file(path);
        std::string_view rest(static_cast<const char*>(file.GetBase()), file.GetFileSize());
        for (unsigned long number = 1; !rest.empty() && number <= place + distance; ++number)
        {
            const std::string_view line = rest.substr(0, rest.find('\n'));
            if (number + distance >= place)
            {
                std::string text;
                for (const char c : line.substr(0, line.find('\r')))
                    text += c == '\t' ? std::string(4, ' ') : std::string(1, c);
                lines.push_back({number, Shown(text), number == place});
            }
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

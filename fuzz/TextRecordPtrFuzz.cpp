// The text cursor, both uses of its number reader, against the slow model. An input is a byte for the format, one for
// the number of readings, the readings, and the text, in which '|' ends a line of the record.

#include "tests/support/TextRecordTrial.h"
#include "utility/startup/LibraryFrame.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace
{

using support::Reading;
using support::TextFormat;

TextFormat FormatOf(std::uint8_t choice)
{
    const std::string terminators[] = {std::string(",\n\0", 3), ",", "\n ", ".,", "E,", "5,", "-", ""};
    const std::string exponentLetters[] = {"DEde", "E-", " .", "0,"};
    const std::string blanks[] = {" ", " \t", "", "09"};
    TextFormat format;
    format.terminators = terminators[choice % 8];
    format.exponentLetters = exponentLetters[choice / 8 % 4];
    format.blanks = blanks[choice / 32 % 4];
    return format;
}

struct Trial : support::TextRecordTrial
{
    Trial()
    {
        InitialiseUtilityDLL();
        SetLogDebugMessages(true);
    }

    template <class Cursor>
    void Compare(const std::vector<std::string>& lines, const TextFormat& format, const std::vector<Reading>& readings)
    {
        const std::string difference = Difference<Cursor>(lines, format, readings);
        if (difference.empty())
            return;
        std::fprintf(stderr, "%s\n", difference.c_str());
        std::abort();
    }
};

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Never destroyed: at the exit of the process the log, which it empties, is gone before it.
    static Trial& trial = *new Trial;
    if (size < 2)
        return 0;
    const TextFormat format = FormatOf(data[0]);
    const std::size_t count = std::min<std::size_t>(data[1] % 16, size - 2);
    std::vector<Reading> readings;
    for (std::size_t i = 0; i < count; ++i)
        readings.push_back(static_cast<Reading>(data[2 + i] % 4));
    readings.push_back(Reading::real);

    std::vector<std::string> lines(1);
    for (std::size_t i = 2 + count; i < size; ++i)
    {
        const char c = static_cast<char>(data[i]);
        if (c == '|')
            lines.emplace_back();
        else
            lines.back() += c;
    }
    std::erase(lines, "");

    trial.Compare<support::VirtualCursor>(lines, format, readings);
    trial.Compare<support::InlineCursor>(lines, format, readings);
    return 0;
}

// Runs of numbers, by each method that the processor has, against single reads. An input is a byte for the ends of
// fields and the separator, one for how many values are read at a time, one for the lengths of the lines, and the text.

#include "tests/support/ForcedMethod.h"
#include "tests/support/RunTrial.h"
#include "utility/records/internal/RunMethods.h"
#include "utility/startup/LibraryFrame.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace
{

struct Trial : support::RunTrial
{
    Trial()
    {
        InitialiseUtilityDLL();
        SetLogDebugMessages(true);
    }

    void Compare(const support::RunCase& each)
    {
        for (const utility::detail::RunMethod& method : utility::detail::runMethods.All())
        {
            if (!method.isSupported())
                continue;
            const support::ForcedMethod forced(utility::detail::runMethods, method);
            const std::string difference = Difference<double>(each) + Difference<int>(each);
            if (difference.empty())
                continue;
            std::fprintf(stderr, "%s: %s\n", method.name, difference.c_str());
            std::abort();
        }
    }
};

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Never destroyed: at the exit of the process the log, which it empties, is gone before it.
    static Trial& trial = *new Trial;
    if (size < 3)
        return 0;
    const std::string ends[] = {",;", ",", ",;|/:!#$", std::string(",\0", 2), ",;|/:!#$%", ".,", "5,", ""};
    support::RunCase each;
    each.ends = ends[data[0] % 8];
    each.separator = ",,,;"[data[0] / 8 % 4];
    each.together = 1 + data[1] % 80;
    // In memory that ends with the text, as a sanitizer sees it.
    const std::vector<char> text(data + 3, data + size);
    std::string_view rest(text.data(), text.size());
    for (std::uint32_t state = data[2]; !rest.empty(); state = state * 1'103'515'245 + 12'345)
    {
        const std::size_t length = data[2] % 2 == 0 ? 1 + data[2] % 100 : 1 + (state >> 16) % 70;
        each.lines.push_back(rest.substr(0, length));
        rest.remove_prefix(std::min(length, rest.size()));
    }
    trial.Compare(each);
    return 0;
}

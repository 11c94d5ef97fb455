// The reader of lengths against the slow model. An input is a text: a byte is a character of the alphabet, in which
// those of numbers and units come often.

#include "tests/support/DistanceParseModel.h"
#include "utility/units/Distances.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>

namespace
{

constexpr wchar_t alphabet[] = L"0123456789..-+EeDd  \tmMmMiInNcChHeEsStTrR,\x00E9\x00A0\x2003\x0661\x0130\x0131";

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::wstring text;
    for (std::size_t i = 0; i < size; ++i)
        text += alphabet[data[i] % (std::size(alphabet) - 1)];

    const support::ParsedDistance expected = support::ModelParseDistance(text, 25.4);
    double value = -77.0;
    const bool isWhole = QLMParseDistance(text.c_str(), value, 25.4);
    const bool isSame = std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(expected.value) ||
                        (std::isnan(value) && std::isnan(expected.value));
    if (isSame && isWhole == expected.isWhole)
        return 0;
    std::fprintf(stderr, "%a, whole %d, not %a, whole %d\n", value, isWhole, expected.value, expected.isWhole);
    std::abort();
}

// The scanner of numbers against the slow model. An input is a byte for the decimal symbol, then the text: a byte is a
// character of the alphabet, in which those that numbers are made of come often.

#include "tests/support/FloatParseModel.h"
#include "utility/numbers/FloatParse.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <string>

namespace
{

constexpr wchar_t alphabet[] = L"0123456789012345678900..,,::--++EeDd  \t\nx\x00A0\x2003\x0661\xFF15";

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const wchar_t* const symbols[] = {L".", L",", L"::", L"", L"E", L"-", L"0", L".,"};
    const wchar_t* const symbol = symbols[data[0] % std::size(symbols)];
    std::wstring text;
    for (std::size_t i = 1; i < size; ++i)
        text += alphabet[data[i] % (std::size(alphabet) - 1)];

    const support::ParsedNumber expected = support::ModelParse(text.c_str(), symbol);
    double value = -77.0;
    const wchar_t* const end = QLMParseFloat1(text.c_str(), symbol, value);
    const bool isSame = std::bit_cast<std::uint64_t>(value) == std::bit_cast<std::uint64_t>(expected.value) ||
                        (std::isnan(value) && std::isnan(expected.value));
    if (isSame && end == expected.end)
        return 0;
    std::fprintf(stderr, "%a up to %td, not %a up to %td\n", value, end - text.c_str(), expected.value,
                 expected.end - text.c_str());
    std::abort();
}

// The formatters of numbers against the slow models. An input is a double, two bytes for the number of places, one for
// the layout, and the decimal symbol.

#include "tests/support/FloatFormatModel.h"
#include "utility/numbers/FloatFormat.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace
{

void Expect(const std::wstring& text, const std::wstring& expected)
{
    if (text == expected)
        return;
    std::fprintf(stderr, "%ls, not %ls\n", text.c_str(), expected.c_str());
    std::abort();
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    double value;
    std::int16_t places;
    if (size < sizeof value + sizeof places + 1)
        return 0;
    std::memcpy(&value, data, sizeof value);
    std::memcpy(&places, data + sizeof value, sizeof places);
    const std::uint8_t layout = data[sizeof value + sizeof places];
    const std::wstring symbol(data + sizeof value + sizeof places + 1, data + size);
    const bool showPlus = (layout & 1) != 0;
    const bool trimZeros = (layout & 2) != 0;
    const bool keepSymbol = (layout & 4) != 0;
    // Mostly the usual ones.
    const int decimals = places % ((layout & 8) != 0 ? 1200 : 20);

    const std::wstring fixed = to_wstring(value, decimals, showPlus, symbol, trimZeros, keepSymbol);
    const std::wstring scientific = QLMFormatFloatE(value, decimals, showPlus, symbol, trimZeros, keepSymbol);
    const std::wstring precise = QLMFormatFloatPrecise(value, decimals);
    if (!std::isfinite(value) || decimals < 0)
        return 0;
    Expect(fixed, support::ModelFixed(value, decimals, showPlus, symbol, trimZeros, keepSymbol));
    Expect(scientific, support::ModelScientific(value, decimals, showPlus, symbol, trimZeros, keepSymbol));
    Expect(precise, support::ModelPrecise(value, decimals));
    return 0;
}

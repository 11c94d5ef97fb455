// XMLEncode of arbitrary text against the six passes that it stands for.

#include "tests/support/XMLEncodeModel.h"
#include "utility/text/XMLEncode.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    // Most characters are of one byte; one behind a zero is of three.
    std::wstring text;
    for (std::size_t i = 0; i < size; ++i)
    {
        std::uint32_t c = data[i];
        for (int more = 0; data[i] == 0 && more < 3 && i + 1 < size; ++more)
            c = c << 8 | data[++i];
        text += static_cast<wchar_t>(c);
    }
    for (const bool namedDegree : {false, true})
    {
        if (XMLEncode(text, namedDegree) != support::InSixPasses(text, namedDegree))
            std::abort();
    }
    return 0;
}

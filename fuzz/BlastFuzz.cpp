// The decoder of imploded streams against the slow model, in any pieces of input and output. An input is a byte for the
// header, three for the sizes of the pieces, and the stream behind its header.

#include "tests/support/BlastTrial.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace
{

/// Small sizes one by one, large ones coarsely.
std::uint32_t SizeOf(std::uint8_t choice) { return choice < 64 ? choice : (choice - 63u) * 100; }

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t choices = 4;
    if (size < choices)
        return 0;
    std::string stream;
    if (data[0] < 240) // or whatever header it has itself
        stream = {static_cast<char>(data[0] % 2), static_cast<char>(4 + data[0] / 2 % 3)};
    stream.append(reinterpret_cast<const char*>(data) + choices, size - choices);
    const std::string difference =
        support::BlastDifference(stream, {SizeOf(data[1]), SizeOf(data[2])}, {SizeOf(data[3]), 4096, 1});
    if (!difference.empty())
    {
        std::fprintf(stderr, "%s\n", difference.c_str());
        std::abort();
    }
    return 0;
}

// Look-ups of every kind in arbitrary bytes taken for a version record. Each answer is checked to lie in the block.

#include "tests/support/VersionRecords.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    support::LookUpEverything({reinterpret_cast<const char*>(data), size});
    return 0;
}

// The reader of registry files over arbitrary bytes: it reads or refuses, and what it read is the same when written and
// read again.

#include "examples/settings/RegText.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::vector<regtext::Key> keys;
    try
    {
        keys = regtext::Parse({reinterpret_cast<const char*>(data), size});
    }
    catch (const regtext::Malformed&)
    {
        return 0;
    }
    if (regtext::Parse(regtext::Text(keys)) != keys)
        std::abort();
    return 0;
}

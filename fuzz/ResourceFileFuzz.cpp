// Look-ups of every kind in arbitrary bytes taken for a module: its resources, and its version record as it is read.

#include "tests/support/ResourceLookups.h"
#include "tests/support/VersionRecords.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const utility::platform::formats::Bytes file = std::as_bytes(std::span(data, size));
    support::ResourceLookups(file);
    const auto record = utility::platform::formats::FindVersionRecord(file);
    support::LookUpEverything({reinterpret_cast<const char*>(record.data()), record.size()});
    return 0;
}

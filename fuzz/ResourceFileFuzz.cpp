// Look-ups of every kind in arbitrary bytes taken for a module: its resources, and its version record as it is read.
// The same bytes are taken for a bitmap, too.

#include "tests/support/ResourceLookups.h"
#include "tests/support/VersionRecords.h"
#include "utility/platform/formats/BitmapResource.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const utility::platform::formats::Bytes file = std::as_bytes(std::span(data, size));
    support::ResourceLookups(file);
    const auto record = utility::platform::formats::FindVersionRecord(file);
    support::LookUpEverything({reinterpret_cast<const char*>(record.data()), record.size()});
    if (const auto bitmap = utility::platform::formats::ReadBitmapResource(file))
    {
        const std::byte* const end = file.data() + file.size();
        if (bitmap->bits.data() < file.data() || bitmap->bits.data() + bitmap->bits.size() > end)
            __builtin_trap();
    }
    return 0;
}

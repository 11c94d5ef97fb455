// Arbitrary bytes taken for a zip archive, or for its directory alone: every entry that is found is within them, and
// what is written of it is read as the same.

#include "utility/platform/formats/ZipDirectory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

using namespace utility::platform::formats;

namespace
{

void Expect(bool condition)
{
    if (!condition)
        std::abort();
}

void ReadEntries(Bytes directory, std::uint64_t count)
{
    const auto entries = ZipEntries(directory, count);
    if (!entries)
        return;
    std::uint64_t size = 0;
    for (const ZipEntry& entry : *entries)
    {
        size += entry.record.size();
        Expect(MovedZipRecord(entry, entry.position) == entry.record);
        const std::string moved = MovedZipRecord(entry, 7);
        const auto again = ZipEntries(std::as_bytes(std::span(moved)), 1);
        Expect(again && again->front().position == 7 && again->front().name == entry.name);
    }
    Expect(size == directory.size());
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Bytes file = std::as_bytes(std::span(data, size));
    ReadEntries(file, 1);
    const Bytes last = file.last(std::min<std::uint64_t>(file.size(), longestZipEnd));
    const auto end = FindZipEnd(last, file.size());
    if (!end)
        return 0;
    Expect(end->begin <= end->directoryPosition && end->directoryPosition <= file.size());
    const Bytes directory = BytesAt(file, end->directoryPosition, end->directorySize);
    Expect(directory.size() == end->directorySize);
    ReadEntries(directory, end->entries);
    return 0;
}

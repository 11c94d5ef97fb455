// Arbitrary bytes as a block of performance data: what is found is what a plain walk over the objects finds, and
// nothing outside the block is read.

#include "utility/system/PerfLib.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::size_t lengthAt = 20;
    constexpr std::size_t headerLengthAt = 24;
    constexpr std::size_t objectsAt = 28;
    constexpr std::size_t headerEnd = 32;
    constexpr std::size_t numberAt = 12;
    constexpr std::size_t objectSize = 16;
    DWORD wanted = 0;
    if (size < sizeof(wanted) + lengthAt + sizeof(DWORD))
        return 0;
    std::memcpy(&wanted, data, sizeof(wanted));
    size -= sizeof(wanted);
    const auto block = std::make_unique<std::uint8_t[]>(size);
    std::copy_n(data + sizeof(wanted), size, block.get());
    const auto length = static_cast<DWORD>(size);
    std::memcpy(block.get() + lengthAt, &length, sizeof(length));

    const auto numberIn = [&](std::uint64_t at)
    {
        DWORD number = 0;
        std::memcpy(&number, block.get() + at, sizeof(number));
        return number;
    };
    std::uint8_t* expected = nullptr;
    if (size >= headerEnd)
    {
        std::uint64_t at = numberIn(headerLengthAt);
        for (DWORD left = numberIn(objectsAt); left != 0 && expected == nullptr && at + objectSize <= size; --left)
        {
            const DWORD objectLength = numberIn(at);
            expected = numberIn(at + numberAt) == wanted ? block.get() + at : nullptr;
            at = objectLength != 0 ? at + objectLength : size;
        }
    }
    auto* const object = CPerfLib::FindObject(reinterpret_cast<_PERF_DATA_BLOCK*>(block.get()), wanted);
    return reinterpret_cast<std::uint8_t*>(object) == expected ? 0 : (std::abort(), 0);
}

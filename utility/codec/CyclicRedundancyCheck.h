#pragma once

// A 32-bit cyclic redundancy check over any number of blocks of bytes, in the order in which they come.
//
//     CyclicRedundancyCheck check;
//     check.Incorporate("1234", 4);
//     check.Incorporate("56789", 5);
//     assert(check.Current() == 0x89A1897F);
//
// The polynomial is 0x04C11DB7, the highest bit of each byte comes first, and the result is the register as it stands,
// which is 0 at the start: zero bytes ahead of the first other one change nothing. zlib's crc32 is another check, and
// the two never agree. Where the processor multiplies without carries, that is how long blocks are folded.
//
// A check belongs to one thread at a time, and any number of threads may have checks of their own. Nothing here throws
// or allocates.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <array>
#include <cstdint>

class CyclicRedundancyCheck
{
public:
    /// The check of no bytes: 0.
    CyclicRedundancyCheck() noexcept = default;
    /// Goes on from a value that Current gave.
    explicit CyclicRedundancyCheck(DWORD value) noexcept : m_nCRC(value) {}

    /// Makes the value 0, deliberately also where another one was given at the start.
    void clear() noexcept { m_nCRC = 0; }

    /// The check of all bytes so far.
    DWORD Current() const noexcept { return m_nCRC; }

    /// Adds `count` bytes, which may not be negative. With a count of 0 the pointer is not looked at.
    void Incorporate(const void* data, std::int64_t count) noexcept { m_nCRC = Fold(m_nCRC, data, count); }

    /// Whether the values are the same, whatever bytes led to them.
    bool operator==(const CyclicRedundancyCheck&) const noexcept = default;

private:
    /// The register after these bytes. It is not kept in memory between blocks, which short ones would wait for.
    UTILITY_API static DWORD Fold(DWORD value, const void* data, std::int64_t count) noexcept;
    /// The loop over single bytes. Deliberately there, although nothing calls it.
    void Incorporate32(const unsigned char* data, std::int64_t count) noexcept;
    static void InitTable32() noexcept;

    /// What a byte that leaves the register at its upper end adds to the rest.
    static std::array<DWORD, 256> m_vCRCTable;

    DWORD m_nCRC = 0;
};

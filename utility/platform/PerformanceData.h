#pragma once

// The records of the system's performance data. On Windows they are the system's own; elsewhere, where data that a
// Windows machine gave may be looked into, they are defined here with the same layout.

#include "utility/platform/Types.h"

#ifdef _WIN32

#include <winperf.h>

#else

#include <cstddef>
#include <cstdint>

/// A date and time.
struct _SYSTEMTIME
{
    std::uint16_t wYear;         ///< from 1601 on
    std::uint16_t wMonth;        ///< 1 to 12
    std::uint16_t wDayOfWeek;    ///< 0 is Sunday
    std::uint16_t wDay;          ///< 1 to 31
    std::uint16_t wHour;         ///< 0 to 23
    std::uint16_t wMinute;       ///< 0 to 59
    std::uint16_t wSecond;       ///< 0 to 59
    std::uint16_t wMilliseconds; ///< 0 to 999
};
/// The record by its usual name.
using SYSTEMTIME = _SYSTEMTIME;

/// A number of 64 bits, whole and in halves.
union _LARGE_INTEGER
{
    /// The halves.
    struct
    {
        DWORD LowPart;         ///< the lower 32 bits
        std::int32_t HighPart; ///< the upper ones, with the sign
    } u;                       ///< in halves
    std::int64_t QuadPart;     ///< the whole
};
/// The record by its usual name.
using LARGE_INTEGER = _LARGE_INTEGER;

/// What performance data begins with; the objects follow.
struct _PERF_DATA_BLOCK
{
    char16_t Signature[4];         ///< "PERF"
    DWORD LittleEndian;            ///< 1 where the lowest byte comes first
    DWORD Version;                 ///< of the format
    DWORD Revision;                ///< of the format
    DWORD TotalByteLength;         ///< of this and all that follows, in bytes
    DWORD HeaderLength;            ///< where the first object is, in bytes from here
    DWORD NumObjectTypes;          ///< how many objects follow
    std::int32_t DefaultObject;    ///< the object to be shown first
    SYSTEMTIME SystemTime;         ///< when the data were taken, in UTC
    LARGE_INTEGER PerfTime;        ///< the same as a count
    LARGE_INTEGER PerfFreq;        ///< counts in a second
    LARGE_INTEGER PerfTime100nSec; ///< the same in units of 100 ns
    DWORD SystemNameLength;        ///< of the machine's name, in bytes
    DWORD SystemNameOffset;        ///< where it is, in bytes from here
};
/// The record by its usual name.
using PERF_DATA_BLOCK = _PERF_DATA_BLOCK;

/// What each object begins with; its counters and instances follow.
struct _PERF_OBJECT_TYPE
{
    DWORD TotalByteLength;       ///< of this and all that belongs to it, in bytes
    DWORD DefinitionLength;      ///< of this and the definitions of counters, in bytes
    DWORD HeaderLength;          ///< of this alone, in bytes
    DWORD ObjectNameTitleIndex;  ///< the number of its name in the table of names
    DWORD ObjectNameTitle;       ///< for the reader's own use
    DWORD ObjectHelpTitleIndex;  ///< the number of its help in the table of helps
    DWORD ObjectHelpTitle;       ///< for the reader's own use
    DWORD DetailLevel;           ///< for what kind of user it is, 100 for all
    DWORD NumCounters;           ///< how many counters it has
    std::int32_t DefaultCounter; ///< the counter to be shown first
    std::int32_t NumInstances;   ///< how many instances follow, -1 for an object that has none
    DWORD CodePage;              ///< of the instances' names, 0 for UTF-16
    LARGE_INTEGER PerfTime;      ///< when the object's data were taken, as a count
    LARGE_INTEGER PerfFreq;      ///< counts in a second
};
/// The record by its usual name.
using PERF_OBJECT_TYPE = _PERF_OBJECT_TYPE;

#endif

static_assert(sizeof(_PERF_DATA_BLOCK) == 88 && offsetof(_PERF_DATA_BLOCK, TotalByteLength) == 20 &&
              offsetof(_PERF_DATA_BLOCK, HeaderLength) == 24 && offsetof(_PERF_DATA_BLOCK, NumObjectTypes) == 28);
static_assert(sizeof(_PERF_OBJECT_TYPE) == 64 && offsetof(_PERF_OBJECT_TYPE, TotalByteLength) == 0 &&
              offsetof(_PERF_OBJECT_TYPE, ObjectNameTitleIndex) == 12);

#pragma once

// The records of the system's performance data. On Windows they are the system's own; elsewhere, where data that a
// Windows machine gave may be looked into, they are defined here with the same layout.

#include "utility/platform/Types.h"

#ifdef _WIN32

#include <winperf.h>

#else

#include <cstddef>
#include <cstdint>

struct _SYSTEMTIME
{
    std::uint16_t wYear;
    std::uint16_t wMonth;
    std::uint16_t wDayOfWeek;
    std::uint16_t wDay;
    std::uint16_t wHour;
    std::uint16_t wMinute;
    std::uint16_t wSecond;
    std::uint16_t wMilliseconds;
};
using SYSTEMTIME = _SYSTEMTIME;

union _LARGE_INTEGER
{
    struct
    {
        DWORD LowPart;
        std::int32_t HighPart;
    } u;
    std::int64_t QuadPart;
};
using LARGE_INTEGER = _LARGE_INTEGER;

/// What performance data begins with; the objects follow.
struct _PERF_DATA_BLOCK
{
    char16_t Signature[4];
    DWORD LittleEndian;
    DWORD Version;
    DWORD Revision;
    DWORD TotalByteLength;
    DWORD HeaderLength;
    DWORD NumObjectTypes;
    std::int32_t DefaultObject;
    SYSTEMTIME SystemTime;
    LARGE_INTEGER PerfTime;
    LARGE_INTEGER PerfFreq;
    LARGE_INTEGER PerfTime100nSec;
    DWORD SystemNameLength;
    DWORD SystemNameOffset;
};
using PERF_DATA_BLOCK = _PERF_DATA_BLOCK;

/// What each object begins with; its counters and instances follow.
struct _PERF_OBJECT_TYPE
{
    DWORD TotalByteLength;
    DWORD DefinitionLength;
    DWORD HeaderLength;
    DWORD ObjectNameTitleIndex;
    DWORD ObjectNameTitle;
    DWORD ObjectHelpTitleIndex;
    DWORD ObjectHelpTitle;
    DWORD DetailLevel;
    DWORD NumCounters;
    std::int32_t DefaultCounter;
    std::int32_t NumInstances;
    DWORD CodePage;
    LARGE_INTEGER PerfTime;
    LARGE_INTEGER PerfFreq;
};
using PERF_OBJECT_TYPE = _PERF_OBJECT_TYPE;

#endif

static_assert(sizeof(_PERF_DATA_BLOCK) == 88 && offsetof(_PERF_DATA_BLOCK, TotalByteLength) == 20 &&
              offsetof(_PERF_DATA_BLOCK, HeaderLength) == 24 && offsetof(_PERF_DATA_BLOCK, NumObjectTypes) == 28);
static_assert(sizeof(_PERF_OBJECT_TYPE) == 64 && offsetof(_PERF_OBJECT_TYPE, TotalByteLength) == 0 &&
              offsetof(_PERF_OBJECT_TYPE, ObjectNameTitleIndex) == 12);

#pragma once

// Records of the system's that fill in what every one of them has to have, with the same layout on every system.
//
//     CWindowPlacement placement;
//     assert(placement.length == 44);
//     const CFormatEtc text(13, nullptr, 1, -1, 1);
//     assert(text.lindex == -1);
//
// A record belongs to one thread at a time. Nothing throws.

#include "utility/platform/Export.h"
#include "utility/platform/SystemRecords.h"

#include <cstdint>

/// Where a window is. Its size is set, and deliberately nothing else.
class UTILITY_API CWindowPlacement : public WINDOWPLACEMENT
{
public:
    /// The size alone is set.
    CWindowPlacement();
    /// All fields, the size too.
    CWindowPlacement(const CWindowPlacement&) = default;
    CWindowPlacement& operator=(const CWindowPlacement& other);
};

/// A printer or a screen. Its size is set, and deliberately nothing else.
class UTILITY_API CDevMode : public DEVMODEW
{
public:
    /// The size alone is set.
    CDevMode();
    /// All fields, the size too.
    CDevMode(const CDevMode&) = default;
    CDevMode& operator=(const CDevMode& other);
};

/// What the shell is to open. Its size is set, and deliberately nothing else.
class UTILITY_API CShellExecuteInfo : public SHELLEXECUTEINFOW
{
public:
    /// The size alone is set.
    CShellExecuteInfo();
    /// All fields, the size too.
    CShellExecuteInfo(const CShellExecuteInfo&) = default;
    CShellExecuteInfo& operator=(const CShellExecuteInfo& other);
};

/// In what form data is handed over: as text, say, and by memory.
class UTILITY_API CFormatEtc : public FORMATETC
{
public:
    /// All zeros.
    CFormatEtc();
    /// Each field as given; the device stays the caller's.
    CFormatEtc(unsigned short clipboardFormat, tagDVTARGETDEVICE* targetDevice, DWORD aspect, std::int32_t index,
               DWORD medium);
    /// The device is shared.
    CFormatEtc(const CFormatEtc&) = default;
    CFormatEtc& operator=(const CFormatEtc& other);
};

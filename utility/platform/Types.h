#pragma once

// The handles and records that appear in public signatures. On Windows they are the system's own; elsewhere the few
// that are needed are defined here with the same names, widths and values.

#ifdef _WIN32

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#else

#include "utility/platform/posix/threads/CriticalSection.h"

#include <cstdint>

using DWORD = std::uint32_t;  ///< an unsigned number of 32 bits
using UINT = std::uint32_t;   ///< an unsigned number of 32 bits
using LCID = std::uint32_t;   ///< the number of a locale, the language in its lower half
using HANDLE = void*;         ///< something that is open, such as a file or an event
using LSTATUS = std::int32_t; ///< how an operation on the settings ended: 0, or an error number

struct HINSTANCE__;
using HINSTANCE = HINSTANCE__*; ///< a module that is loaded
struct HKEY__;
using HKEY = HKEY__*; ///< an open key of the settings
struct HWINSTA__;
using HWINSTA = HWINSTA__*; ///< a window station
struct HBITMAP__;
using HBITMAP = HBITMAP__*; ///< a bitmap
struct HBRUSH__;
using HBRUSH = HBRUSH__*; ///< a brush
struct HFONT__;
using HFONT = HFONT__*; ///< a font
struct HPALETTE__;
using HPALETTE = HPALETTE__*; ///< a palette
struct HPEN__;
using HPEN = HPEN__*; ///< a pen
struct HRGN__;
using HRGN = HRGN__*; ///< a region of the screen

/// A time, or a length of time: a number of 64 bits in units of 100 ns; a time counts from the start of 1601, in UTC.
struct FILETIME
{
    DWORD dwLowDateTime;  ///< the lower 32 bits
    DWORD dwHighDateTime; ///< the upper 32 bits
};

/// An unsigned number of 64 bits, whole and in halves.
union _ULARGE_INTEGER
{
    /// The halves.
    struct
    {
        DWORD LowPart;      ///< the lower 32 bits
        DWORD HighPart;     ///< the upper 32 bits
    } u;                    ///< in halves
    std::uint64_t QuadPart; ///< the whole
};
/// The record by its usual name.
using ULARGE_INTEGER = _ULARGE_INTEGER;

/// What the system knows of an open file.
struct _BY_HANDLE_FILE_INFORMATION
{
    DWORD dwFileAttributes;     ///< FILE_ATTRIBUTE_READONLY and others
    FILETIME ftCreationTime;    ///< when it was made
    FILETIME ftLastAccessTime;  ///< when it was read last
    FILETIME ftLastWriteTime;   ///< when it was written last
    DWORD dwVolumeSerialNumber; ///< of the device that it is on
    DWORD nFileSizeHigh;        ///< the upper half of its length in bytes
    DWORD nFileSizeLow;         ///< the lower half of its length in bytes
    DWORD nNumberOfLinks;       ///< how many names it has
    DWORD nFileIndexHigh;       ///< the upper half of its number on the device
    DWORD nFileIndexLow;        ///< the lower half of its number on the device
};
/// The record by its usual name.
using BY_HANDLE_FILE_INFORMATION = _BY_HANDLE_FILE_INFORMATION;

/// How much memory there is, in bytes; see memory/MemoryReport.h.
struct _MEMORYSTATUSEX
{
    DWORD dwLength;                        ///< the size of the record, which the caller sets
    DWORD dwMemoryLoad;                    ///< the share of physical memory that is in use, in percent
    std::uint64_t ullTotalPhys;            ///< physical memory
    std::uint64_t ullAvailPhys;            ///< what is free of it
    std::uint64_t ullTotalPageFile;        ///< the swap space
    std::uint64_t ullAvailPageFile;        ///< what is free of it
    std::uint64_t ullTotalVirtual;         ///< the address space
    std::uint64_t ullAvailVirtual;         ///< what is free of it
    std::uint64_t ullAvailExtendedVirtual; ///< always 0
};
/// The record by its usual name.
using MEMORYSTATUSEX = _MEMORYSTATUSEX;
static_assert(sizeof(MEMORYSTATUSEX) == 64);

/// The numeric block of a version record; see settings/Version.h.
struct tagVS_FIXEDFILEINFO
{
    DWORD dwSignature;        ///< 0xFEEF04BD
    DWORD dwStrucVersion;     ///< of the block's format
    DWORD dwFileVersionMS;    ///< of the file, the first two numbers
    DWORD dwFileVersionLS;    ///< of the file, the last two numbers
    DWORD dwProductVersionMS; ///< of the product, the first two numbers
    DWORD dwProductVersionLS; ///< of the product, the last two numbers
    DWORD dwFileFlagsMask;    ///< which bits of the flags count
    DWORD dwFileFlags;        ///< 1 for debugging, 2 ahead of a release, and others
    DWORD dwFileOS;           ///< the system it was made for, 0x40004 for Windows
    DWORD dwFileType;         ///< 1 for a program, 2 for a library
    DWORD dwFileSubtype;      ///< of a driver or a font
    DWORD dwFileDateMS;       ///< when it was made, the upper half
    DWORD dwFileDateLS;       ///< when it was made, the lower half
};
/// The record by its usual name.
using VS_FIXEDFILEINFO = tagVS_FIXEDFILEINFO;
static_assert(sizeof(VS_FIXEDFILEINFO) == 52);

/// What is no file's handle.
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1});

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;   ///< nobody may write to it
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10; ///< a folder
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;    ///< a file of which there is nothing else to say

inline constexpr DWORD FILE_BEGIN = 0;                        ///< a distance from the start
inline constexpr DWORD FILE_CURRENT = 1;                      ///< a distance from the file position
inline constexpr DWORD FILE_END = 2;                          ///< a distance from the end
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF; ///< a file position that cannot be had

inline constexpr UINT CP_ACP = 0;      ///< the system's narrow encoding
inline constexpr UINT CP_UTF8 = 65001; ///< UTF-8

#endif

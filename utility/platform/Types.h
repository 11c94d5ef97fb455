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

using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LCID = std::uint32_t;
using HANDLE = void*;
using LSTATUS = std::int32_t;

struct HINSTANCE__;
using HINSTANCE = HINSTANCE__*;
struct HKEY__;
using HKEY = HKEY__*;
struct HWINSTA__;
using HWINSTA = HWINSTA__*;
struct HBITMAP__;
using HBITMAP = HBITMAP__*;
struct HBRUSH__;
using HBRUSH = HBRUSH__*;
struct HFONT__;
using HFONT = HFONT__*;
struct HPALETTE__;
using HPALETTE = HPALETTE__*;
struct HPEN__;
using HPEN = HPEN__*;
struct HRGN__;
using HRGN = HRGN__*;

struct FILETIME
{
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

union _ULARGE_INTEGER
{
    struct
    {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    std::uint64_t QuadPart;
};
using ULARGE_INTEGER = _ULARGE_INTEGER;

struct _BY_HANDLE_FILE_INFORMATION
{
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD dwVolumeSerialNumber;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD nNumberOfLinks;
    DWORD nFileIndexHigh;
    DWORD nFileIndexLow;
};
using BY_HANDLE_FILE_INFORMATION = _BY_HANDLE_FILE_INFORMATION;

struct _MEMORYSTATUSEX
{
    DWORD dwLength;
    DWORD dwMemoryLoad;
    std::uint64_t ullTotalPhys;
    std::uint64_t ullAvailPhys;
    std::uint64_t ullTotalPageFile;
    std::uint64_t ullAvailPageFile;
    std::uint64_t ullTotalVirtual;
    std::uint64_t ullAvailVirtual;
    std::uint64_t ullAvailExtendedVirtual;
};
using MEMORYSTATUSEX = _MEMORYSTATUSEX;
static_assert(sizeof(MEMORYSTATUSEX) == 64);

struct tagVS_FIXEDFILEINFO
{
    DWORD dwSignature;
    DWORD dwStrucVersion;
    DWORD dwFileVersionMS;
    DWORD dwFileVersionLS;
    DWORD dwProductVersionMS;
    DWORD dwProductVersionLS;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags;
    DWORD dwFileOS;
    DWORD dwFileType;
    DWORD dwFileSubtype;
    DWORD dwFileDateMS;
    DWORD dwFileDateLS;
};
using VS_FIXEDFILEINFO = tagVS_FIXEDFILEINFO;
static_assert(sizeof(VS_FIXEDFILEINFO) == 52);

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(std::intptr_t{-1});

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x1;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;

inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;

#endif

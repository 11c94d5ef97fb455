#pragma once

// Records of the system's that few need. On Windows they are the system's own; elsewhere they have the same names, sizes
// and fields.

#include "utility/platform/Types.h"

#ifdef _WIN32

#include <objidl.h>
#include <shellapi.h>

#else

#include <cstdint>

using HRESULT = std::int32_t;

struct HWND__;
using HWND = HWND__*;

struct tagPOINT
{
    std::int32_t x;
    std::int32_t y;
};

struct tagRECT
{
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;
};

struct tagWINDOWPLACEMENT
{
    UINT length;
    UINT flags;
    UINT showCmd;
    tagPOINT ptMinPosition;
    tagPOINT ptMaxPosition;
    tagRECT rcNormalPosition;
};
using WINDOWPLACEMENT = tagWINDOWPLACEMENT;

struct _devicemodeOfPrinter
{
    std::int16_t dmOrientation;
    std::int16_t dmPaperSize;
    std::int16_t dmPaperLength;
    std::int16_t dmPaperWidth;
    std::int16_t dmScale;
    std::int16_t dmCopies;
    std::int16_t dmDefaultSource;
    std::int16_t dmPrintQuality;
};

struct _devicemodeOfScreen
{
    tagPOINT dmPosition;
    DWORD dmDisplayOrientation;
    DWORD dmDisplayFixedOutput;
};

/// A printer or a screen.
struct _devicemodeW
{
    char16_t dmDeviceName[32];
    std::uint16_t dmSpecVersion;
    std::uint16_t dmDriverVersion;
    std::uint16_t dmSize;
    std::uint16_t dmDriverExtra;
    DWORD dmFields;
    union
    {
        _devicemodeOfPrinter printer;
        _devicemodeOfScreen screen;
    };
    std::int16_t dmColor;
    std::int16_t dmDuplex;
    std::int16_t dmYResolution;
    std::int16_t dmTTOption;
    std::int16_t dmCollate;
    char16_t dmFormName[32];
    std::uint16_t dmLogPixels;
    DWORD dmBitsPerPel;
    DWORD dmPelsWidth;
    DWORD dmPelsHeight;
    union
    {
        DWORD dmDisplayFlags;
        DWORD dmNup;
    };
    DWORD dmDisplayFrequency;
    DWORD dmICMMethod;
    DWORD dmICMIntent;
    DWORD dmMediaType;
    DWORD dmDitherType;
    DWORD dmReserved1;
    DWORD dmReserved2;
    DWORD dmPanningWidth;
    DWORD dmPanningHeight;
};
using DEVMODEW = _devicemodeW;

struct _SHELLEXECUTEINFOW
{
    DWORD cbSize;
    DWORD fMask;
    HWND hwnd;
    const wchar_t* lpVerb;
    const wchar_t* lpFile;
    const wchar_t* lpParameters;
    const wchar_t* lpDirectory;
    std::int32_t nShow;
    HINSTANCE hInstApp;
    void* lpIDList;
    const wchar_t* lpClass;
    HKEY hkeyClass;
    DWORD dwHotKey;
    union
    {
        HANDLE hIcon;
        HANDLE hMonitor;
    };
    HANDLE hProcess;
};
using SHELLEXECUTEINFOW = _SHELLEXECUTEINFOW;

struct tagDVTARGETDEVICE
{
    DWORD tdSize;
    std::uint16_t tdDriverNameOffset;
    std::uint16_t tdDeviceNameOffset;
    std::uint16_t tdPortNameOffset;
    std::uint16_t tdExtDevmodeOffset;
    std::uint8_t tdData[1];
};

struct tagFORMATETC
{
    std::uint16_t cfFormat;
    tagDVTARGETDEVICE* ptd;
    DWORD dwAspect;
    std::int32_t lindex;
    DWORD tymed;
};
using FORMATETC = tagFORMATETC;

struct _OSVERSIONINFOEXW
{
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char16_t szCSDVersion[128];
    std::uint16_t wServicePackMajor;
    std::uint16_t wServicePackMinor;
    std::uint16_t wSuiteMask;
    std::uint8_t wProductType;
    std::uint8_t wReserved;
};

#endif

static_assert(sizeof(WINDOWPLACEMENT) == 44);
static_assert(sizeof(DEVMODEW) == 220);
static_assert(sizeof(SHELLEXECUTEINFOW) == 112);
static_assert(sizeof(FORMATETC) == 32);
static_assert(sizeof(_OSVERSIONINFOEXW) == 284);

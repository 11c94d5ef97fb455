#pragma once

// Records of the system's that few need. On Windows they are the system's own; elsewhere they have the same names,
// sizes and fields.

#include "utility/platform/Types.h"

#ifdef _WIN32

#include <objidl.h>
#include <shellapi.h>

#else

#include <cstdint>

using HRESULT = std::int32_t; ///< how an operation of the system ended; a negative one is a failure

struct HWND__;
using HWND = HWND__*; ///< a window

/// A point, in pixels.
struct tagPOINT
{
    std::int32_t x; ///< from the left
    std::int32_t y; ///< from the top
};

/// A rectangle, in pixels; the right and the lower edge are not part of it.
struct tagRECT
{
    std::int32_t left;   ///< the first column
    std::int32_t top;    ///< the first row
    std::int32_t right;  ///< behind the last column
    std::int32_t bottom; ///< behind the last row
};

/// Where a window is, and where it was before.
struct tagWINDOWPLACEMENT
{
    UINT length;              ///< the size of the record
    UINT flags;               ///< what else counts of it: 1 for the place when minimised
    UINT showCmd;             ///< how it is shown, 1 for normal
    tagPOINT ptMinPosition;   ///< where its corner is when it is minimised
    tagPOINT ptMaxPosition;   ///< where its corner is when it is maximised
    tagRECT rcNormalPosition; ///< where it is otherwise
};
/// The record by its usual name.
using WINDOWPLACEMENT = tagWINDOWPLACEMENT;

/// What of a device is a printer's alone.
struct _devicemodeOfPrinter
{
    std::int16_t dmOrientation;   ///< 1 is upright, 2 across
    std::int16_t dmPaperSize;     ///< the number of a size of paper
    std::int16_t dmPaperLength;   ///< in tenths of a millimetre
    std::int16_t dmPaperWidth;    ///< in tenths of a millimetre
    std::int16_t dmScale;         ///< in percent
    std::int16_t dmCopies;        ///< how many
    std::int16_t dmDefaultSource; ///< the number of a tray
    std::int16_t dmPrintQuality;  ///< dots in an inch, or a negative level
};

/// What of a device is a screen's alone.
struct _devicemodeOfScreen
{
    tagPOINT dmPosition;        ///< where it is among the screens
    DWORD dmDisplayOrientation; ///< how far it is turned, in quarters
    DWORD dmDisplayFixedOutput; ///< how a picture of another size is shown
};

/// A printer or a screen.
struct _devicemodeW
{
    char16_t dmDeviceName[32];     ///< the name of the device
    std::uint16_t dmSpecVersion;   ///< of the record's format
    std::uint16_t dmDriverVersion; ///< of the driver
    std::uint16_t dmSize;          ///< the size of the record, without what a driver adds
    std::uint16_t dmDriverExtra;   ///< how many bytes a driver adds behind it
    DWORD dmFields;                ///< a bit for each field that counts
    union
    {
        _devicemodeOfPrinter printer; ///< of a printer
        _devicemodeOfScreen screen;   ///< of a screen
    };
    std::int16_t dmColor;       ///< 1 is black on white, 2 is colour
    std::int16_t dmDuplex;      ///< 1 is one side, 2 and 3 both
    std::int16_t dmYResolution; ///< dots in an inch, downwards
    std::int16_t dmTTOption;    ///< how fonts are printed
    std::int16_t dmCollate;     ///< 1 has copies whole, one after the other
    char16_t dmFormName[32];    ///< the name of a size of paper
    std::uint16_t dmLogPixels;  ///< pixels in an inch
    DWORD dmBitsPerPel;         ///< bits of a pixel
    DWORD dmPelsWidth;          ///< pixels across
    DWORD dmPelsHeight;         ///< pixels downwards
    union
    {
        DWORD dmDisplayFlags; ///< of a screen: 2 for interlaced
        DWORD dmNup;          ///< of a printer: 2 where it puts several pages on a sheet
    };
    DWORD dmDisplayFrequency; ///< pictures in a second
    DWORD dmICMMethod;        ///< who matches colours
    DWORD dmICMIntent;        ///< what matching is to keep
    DWORD dmMediaType;        ///< the number of a kind of paper
    DWORD dmDitherType;       ///< how colours are mixed of dots
    DWORD dmReserved1;        ///< 0
    DWORD dmReserved2;        ///< 0
    DWORD dmPanningWidth;     ///< 0
    DWORD dmPanningHeight;    ///< 0
};
/// The record by its usual name.
using DEVMODEW = _devicemodeW;

/// What the shell is to open, and how.
struct _SHELLEXECUTEINFOW
{
    DWORD cbSize;                ///< the size of the record
    DWORD fMask;                 ///< a bit for each field that counts, and for what is wanted
    HWND hwnd;                   ///< the window that owns what is shown
    const wchar_t* lpVerb;       ///< what to do, such as "open"; null is the usual
    const wchar_t* lpFile;       ///< what to open
    const wchar_t* lpParameters; ///< the arguments of a program
    const wchar_t* lpDirectory;  ///< the current folder of a program
    std::int32_t nShow;          ///< how its window is shown
    HINSTANCE hInstApp;          ///< what comes back: above 32 for success
    void* lpIDList;              ///< what to open, in the shell's own form
    const wchar_t* lpClass;      ///< the class or extension that it counts as
    HKEY hkeyClass;              ///< the key of a class
    DWORD dwHotKey;              ///< a key that brings it up
    union
    {
        HANDLE hIcon;    ///< a picture for it
        HANDLE hMonitor; ///< the screen to show it on
    };
    HANDLE hProcess; ///< the process that was started, if it was asked for
};
/// The record by its usual name.
using SHELLEXECUTEINFOW = _SHELLEXECUTEINFOW;

/// The device that data is made for.
struct tagDVTARGETDEVICE
{
    DWORD tdSize;                     ///< the size of the record with all behind it
    std::uint16_t tdDriverNameOffset; ///< where the driver's name is, in bytes from the start
    std::uint16_t tdDeviceNameOffset; ///< where the device's name is
    std::uint16_t tdPortNameOffset;   ///< where the port's name is
    std::uint16_t tdExtDevmodeOffset; ///< where the device's DEVMODEW is
    std::uint8_t tdData[1];           ///< the names, and what else is behind it
};

/// In what form data is handed over.
struct tagFORMATETC
{
    std::uint16_t cfFormat; ///< the number of a clipboard format, 13 for text
    tagDVTARGETDEVICE* ptd; ///< the device, null for any
    DWORD dwAspect;         ///< 1 for the content, and others for icons and the like
    std::int32_t lindex;    ///< which part, -1 for all
    DWORD tymed;            ///< how: 1 by memory, 2 by a file
};
/// The record by its usual name.
using FORMATETC = tagFORMATETC;

/// What system it is.
struct _OSVERSIONINFOEXW
{
    DWORD dwOSVersionInfoSize;       ///< the size of the record
    DWORD dwMajorVersion;            ///< the first number of the version
    DWORD dwMinorVersion;            ///< the second one
    DWORD dwBuildNumber;             ///< the third one
    DWORD dwPlatformId;              ///< 2 for Windows as it is today
    char16_t szCSDVersion[128];      ///< the service pack in words
    std::uint16_t wServicePackMajor; ///< the service pack
    std::uint16_t wServicePackMinor; ///< its second number
    std::uint16_t wSuiteMask;        ///< a bit for each product that is part of it
    std::uint8_t wProductType;       ///< 1 for a workstation, others for servers
    std::uint8_t wReserved;          ///< for the system's own use
};

#endif

static_assert(sizeof(WINDOWPLACEMENT) == 44);
static_assert(sizeof(DEVMODEW) == 220);
static_assert(sizeof(SHELLEXECUTEINFOW) == 112);
static_assert(sizeof(FORMATETC) == 32);
static_assert(sizeof(_OSVERSIONINFOEXW) == 284);

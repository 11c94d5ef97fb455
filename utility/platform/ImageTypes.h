#pragma once

// What lists of images are made of. On Windows the handles, records and numbers are the system's own; elsewhere the few
// that are needed are defined here with the same names and values.

#include "utility/platform/Types.h"

#include <vector>

#ifdef _WIN32

#include <commctrl.h>

#else

struct _IMAGELIST;
using HIMAGELIST = _IMAGELIST*;

struct tagRGBQUAD
{
    unsigned char rgbBlue;
    unsigned char rgbGreen;
    unsigned char rgbRed;
    unsigned char rgbReserved;
};
using RGBQUAD = tagRGBQUAD;

inline constexpr UINT ILC_COLOR32 = 0x20;

inline constexpr UINT TB_SETIMAGELIST = 0x430;
inline constexpr UINT TB_SETHOTIMAGELIST = 0x434;
inline constexpr UINT TB_SETDISABLEDIMAGELIST = 0x436;

#endif

static_assert(sizeof(tagRGBQUAD) == 4);

namespace utility::platform
{

/// An image of a list: its rows from the uppermost to the lowest. The reserved byte of a pixel is its alpha.
struct ListImage
{
    int width = 0;
    int height = 0;
    std::vector<tagRGBQUAD> pixels;
};

}

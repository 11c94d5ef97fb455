#pragma once

// What lists of images are made of. On Windows the handles, records and numbers are the system's own; elsewhere the few
// that are needed are defined here with the same names and values.

#include "utility/platform/Types.h"

#include <vector>

#ifdef _WIN32

#include <commctrl.h>

#else

struct _IMAGELIST;
/// A list of images.
using HIMAGELIST = _IMAGELIST*;

/// A pixel of 32 bits.
struct tagRGBQUAD
{
    unsigned char rgbBlue;     ///< the blue part
    unsigned char rgbGreen;    ///< the green part
    unsigned char rgbRed;      ///< the red part
    unsigned char rgbReserved; ///< the alpha, where there is one
};
/// The record by its usual name.
using RGBQUAD = tagRGBQUAD;

inline constexpr UINT ILC_COLOR32 = 0x20; ///< a list of pixels of 32 bits

inline constexpr UINT TB_SETIMAGELIST = 0x430;         ///< the list of a toolbar's normal images
inline constexpr UINT TB_SETHOTIMAGELIST = 0x434;      ///< that of the images under the mouse
inline constexpr UINT TB_SETDISABLEDIMAGELIST = 0x436; ///< that of the images of what cannot be chosen

#endif

static_assert(sizeof(tagRGBQUAD) == 4);

namespace utility::platform
{

/// An image of a list: its rows from the uppermost to the lowest. The reserved byte of a pixel is its alpha.
struct ListImage
{
    int width = 0;                  ///< in pixels
    int height = 0;                 ///< in pixels
    std::vector<tagRGBQUAD> pixels; ///< row by row, without padding
};

}

#pragma once

#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/ImageTypes.h"
#include "utility/platform/Modules.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <vector>

namespace support
{

/// A module with bitmaps (tests/modules/Strips.rc), which stands in the chain of resource modules from the first call
/// on.
inline HINSTANCE StripModule()
{
    static const HINSTANCE module = []
    {
        const boost::filesystem::path path(UTILITY_TEST_MODULES "/Strips.dll");
        const HINSTANCE strips = utility::platform::Modules().Load(path.wstring().c_str());
        // It belongs to the chain.
        static_cast<void>(new utility::framework::DynLinkLibrary(strips, strips));
        return strips;
    }();
    return module;
}

/// The name of a resource that has a number.
inline const wchar_t* NumberedResource(std::uintptr_t number) { return reinterpret_cast<const wchar_t*>(number); }

/// A pixel as 0xAARRGGBB.
inline DWORD PixelOf(const tagRGBQUAD& pixel)
{
    return DWORD{pixel.rgbReserved} << 24 | DWORD{pixel.rgbRed} << 16 | DWORD{pixel.rgbGreen} << 8 | pixel.rgbBlue;
}

inline std::vector<DWORD> PixelsOf(const utility::platform::ListImage& image)
{
    std::vector<DWORD> pixels;
    for (const tagRGBQUAD& pixel : image.pixels)
        pixels.push_back(PixelOf(pixel));
    return pixels;
}

}

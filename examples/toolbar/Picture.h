#pragma once

#include "utility/Utility.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <vector>

namespace toolbar
{

/// An opaque picture: red, green and blue of each pixel, from the uppermost row to the lowest.
struct Picture
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> bytes;

    Picture(std::uint32_t pictureWidth, std::uint32_t pictureHeight, DWORD colour);

    /// Paints an image over what is there, each of its pixels as a square of so many.
    void Paint(const utility::platform::ListImage& image, std::uint32_t left, std::uint32_t top, std::uint32_t scale);
};

/// Writes a PNG file; false if it cannot be written.
bool WritePng(const Picture& picture, const boost::filesystem::path& path);

}

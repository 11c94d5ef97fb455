#include "examples/toolbar/Picture.h"

namespace toolbar
{

Picture::Picture(std::uint32_t pictureWidth, std::uint32_t pictureHeight, DWORD colour)
    : width(pictureWidth), height(pictureHeight)
{
    for (std::uint32_t i = 0; i < width * height; ++i)
    {
        for (const int shift : {0, 8, 16})
            bytes.push_back(static_cast<std::uint8_t>(colour >> shift));
    }
}

void Picture::Paint(const utility::platform::ListImage& image, std::uint32_t left, std::uint32_t top,
                    std::uint32_t scale)
{
    const auto imageWidth = static_cast<std::uint32_t>(image.width);
    const auto imageHeight = static_cast<std::uint32_t>(image.height);
    for (std::uint32_t y = 0; y < imageHeight * scale; ++y)
    {
        for (std::uint32_t x = 0; x < imageWidth * scale; ++x)
        {
            const tagRGBQUAD& pixel = image.pixels[y / scale * imageWidth + x / scale];
            std::uint8_t* below = &bytes[((top + y) * width + left + x) * 3];
            for (const unsigned colour : {pixel.rgbRed, pixel.rgbGreen, pixel.rgbBlue})
            {
                const unsigned both = colour * pixel.rgbReserved + *below * (255u - pixel.rgbReserved);
                *below++ = static_cast<std::uint8_t>((both + 127) / 255);
            }
        }
    }
}

}

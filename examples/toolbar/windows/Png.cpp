#include "examples/toolbar/Picture.h"

#include <algorithm>
#include <objidl.h>

// Its header takes these from the global namespace.
namespace Gdiplus
{
using std::max;
using std::min;
}
#include <gdiplus.h>

namespace toolbar
{

bool WritePng(const Picture& picture, const boost::filesystem::path& path)
{
    constexpr CLSID pngEncoder = {0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
    const Gdiplus::GdiplusStartupInput start;
    ULONG_PTR token = 0;
    if (Gdiplus::GdiplusStartup(&token, &start, nullptr) != Gdiplus::Ok)
        return false;
    bool isWritten = false;
    {
        const auto width = static_cast<INT>(picture.width);
        const auto height = static_cast<INT>(picture.height);
        Gdiplus::Bitmap bitmap(width, height, PixelFormat24bppRGB);
        const std::uint8_t* next = picture.bytes.data();
        for (INT y = 0; y < height; ++y)
        {
            for (INT x = 0; x < width; ++x, next += 3)
                bitmap.SetPixel(x, y, Gdiplus::Color(next[0], next[1], next[2]));
        }
        isWritten = bitmap.Save(path.c_str(), &pngEncoder, nullptr) == Gdiplus::Ok;
    }
    Gdiplus::GdiplusShutdown(token);
    return isWritten;
}

}

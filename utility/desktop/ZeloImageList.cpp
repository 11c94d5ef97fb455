#include "utility/desktop/ZeloImageList.h"

#include "utility/desktop/internal/ImageCurves.h"
#include "utility/framework/internal/ResourceModules.h"
#include "utility/guards/ResourcePtr.h"
#include "utility/platform/Images.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

using utility::platform::BitmapBits;
using utility::platform::Images;

namespace
{

constexpr UINT bitmapType = 2;

const wchar_t* NameOf(unsigned int resourceId)
{
    return reinterpret_cast<const wchar_t*>(std::uintptr_t{resourceId & 0xFFFF});
}

}

const double CZeloImageList::m_dDisabledGamma = 0.6;
const double CZeloImageList::m_dHotGamma = 1.2;
const unsigned char CZeloImageList::m_clrBackgroundRed = 255;
const unsigned char CZeloImageList::m_clrBackgroundGreen = 0;
const unsigned char CZeloImageList::m_clrBackgroundBlue = 255;

CZeloImageList::CZeloImageList() = default;

CZeloImageList::~CZeloImageList() = default;

int CZeloImageList::AddBitmap(unsigned int resourceId, int imageSize, const DWORD& tint, unsigned int kind)
{
    return AddBitmap(NameOf(resourceId), imageSize, tint, kind);
}

int CZeloImageList::AddBitmap(const wchar_t* resourceName, int imageSize, const DWORD& tint, unsigned int kind)
{
    return Create32BitImageList(resourceName, imageSize, tint, kind) ? 1 : 0;
}

int CZeloImageList::AppendBitmap(unsigned int resourceId, int imageSize, const DWORD& tint, unsigned int kind)
{
    return AppendBitmap(NameOf(resourceId), imageSize, tint, kind);
}

int CZeloImageList::AppendBitmap(const wchar_t* resourceName, int imageSize, const DWORD& tint, unsigned int kind)
{
    int imageCount = 0;
    const resource_ptr<HBITMAP> bitmap(Create32BitImage(resourceName, imageSize, imageCount, tint, kind));
    return Images().Add(m_hImageList, bitmap.get());
}

bool CZeloImageList::Create32BitImageList(const wchar_t* resourceName, int imageSize, const DWORD& tint,
                                          unsigned int kind)
{
    // Deliberately 16, whatever the size of the images: it says only for how many there is room at first.
    constexpr int tileWidth = 16;
    int imageCount = 0;
    const HBITMAP bitmap = Create32BitImage(resourceName, tileWidth, imageCount, tint, kind);
    // On these failures the bitmap is deliberately left.
    if (Create(imageSize, imageSize, ILC_COLOR32, imageCount, 0) == 0 || Images().Add(m_hImageList, bitmap) == -1)
        return false;
    release_resource_ptr(bitmap);
    return true;
}

HBITMAP CZeloImageList::Create32BitImage(const wchar_t* resourceName, int imageSize, int& imageCount, const DWORD& tint,
                                         unsigned int kind)
{
    namespace detail = utility::detail;
    const HINSTANCE module = utility::framework::ModuleOfResource(bitmapType, resourceName);
    const resource_ptr<HBITMAP> strip(Images().LoadStrip(module, resourceName));
    BitmapBits source;
    if (!Images().Describe(strip.get(), source))
        return nullptr;
    imageCount = source.width / imageSize;
    const HBITMAP bitmap = Images().MakeBitmap(source.width, source.height);
    BitmapBits destination;
    if (bitmap == nullptr || !Images().Describe(bitmap, destination))
        return bitmap;
    // A strip of fewer bits ends earlier: what it does not have stays black, as every kind leaves it.
    const std::size_t size = std::min(source.bytes.size(), destination.bytes.size());
    const std::byte* const from = source.bytes.data();
    std::byte* const to = destination.bytes.data();
    const std::size_t count = size / sizeof(tagRGBQUAD);
    if (kind == TB_SETHOTIMAGELIST)
        detail::ApplyTable(detail::GammaTable(m_dHotGamma), from, to, count);
    else if (kind == TB_SETDISABLEDIMAGELIST)
        detail::ApplyTable(detail::WashesOf(detail::TintOf(tint), m_dDisabledGamma), from, to, count);
    else
        std::copy_n(from, size, to);
    return bitmap;
}

HBITMAP CZeloImageList::Create32BitImage(unsigned int resourceId, int imageSize, int& imageCount, const DWORD& tint,
                                         unsigned int kind)
{
    return Create32BitImage(NameOf(resourceId), imageSize, imageCount, tint, kind);
}

unsigned char CZeloImageList::ApplyGamma(unsigned char channel, double gamma) const
{
    return utility::detail::ApplyGamma(channel, gamma);
}

tagRGBQUAD CZeloImageList::ApplyDisable(unsigned char first, unsigned char second, unsigned char third,
                                        unsigned char tintRed, unsigned char tintGreen, unsigned char tintBlue) const
{
    return utility::detail::Washed(first + second + third, {tintRed, tintGreen, tintBlue},
                                   [this](unsigned char value) { return ApplyGamma(value, m_dDisabledGamma); });
}

DWORD MakeRGBA(DWORD rgb, unsigned char alpha) { return DWORD{alpha} << 24 | rgb; }

DWORD GetRGB(DWORD rgba) { return rgba & 0xFFFFFF; }

unsigned char GetAValue(DWORD rgba) { return static_cast<unsigned char>(rgba >> 24); }

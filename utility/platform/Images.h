#pragma once

#include "utility/platform/ImageTypes.h"
#include "utility/platform/Service.h"

#include <cstddef>
#include <span>

namespace utility::platform
{

/// The pixels of a bitmap where they are: the rows in the order of memory, in which those of a bitmap that MakeBitmap
/// made go from the lowest to the uppermost.
struct BitmapBits
{
    int width = 0;
    int height = 0;
    std::span<std::byte> bytes;
};

/// Bitmaps, and lists of images. For the thread of the user interface. A bitmap is ended by Handles().DeleteObject. An
/// operation that fails may leave its reason in LastError().
class ImageService
{
public:
    virtual ~ImageService() = default;

    /// A bitmap of the resources of a module, as deep as it is there. A null module stands for the program. Null on
    /// failure. On Linux one that is compressed, that has a header of the first kind, of 12 bytes, or whose pixels are
    /// not all there, is not loaded.
    [[nodiscard]] virtual HBITMAP LoadStrip(HINSTANCE module, const wchar_t* name) = 0;

    /// False for what is no bitmap. The bits are there as long as the bitmap.
    virtual bool Describe(HBITMAP bitmap, BitmapBits& bits) = 0;

    /// A new bitmap of 32 bits, of transparent black. Null on failure.
    [[nodiscard]] virtual HBITMAP MakeBitmap(int width, int height) = 0;

    /// An empty list. Null on failure. On Linux every list is one of 32 bits without masks.
    [[nodiscard]] virtual HIMAGELIST MakeList(int width, int height, UINT flags, int initialCount, int growth) = 0;

    virtual bool DestroyList(HIMAGELIST list) = 0;

    /// Adds as many images as are whole, side by side, in the width of a bitmap, without a mask. Gives the index of the
    /// first, or -1. Of higher images the upper part is taken; what lower ones do not have is transparent black on
    /// Linux.
    virtual int Add(HIMAGELIST list, HBITMAP bitmap) = 0;

    /// The number of images; 0 for what is no list.
    virtual int Count(HIMAGELIST list) = 0;

    /// The pixels of an image as the list keeps them; none if it has no such image.
    virtual ListImage ImageOf(HIMAGELIST list, int index) = 0;
};

ServiceSlot<ImageService>& ImagesSlot() noexcept;
inline ImageService& Images() noexcept { return ImagesSlot().Get(); }

}

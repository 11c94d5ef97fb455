#include "utility/platform/Images.h"

#include "utility/platform/Error.h"
#include "utility/platform/formats/BitmapResource.h"
#include "utility/platform/Modules.h"
#include "utility/platform/posix/images/Bitmaps.h"
#include "utility/platform/SystemService.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <utility>

namespace utility::platform
{

namespace
{

/// The name under which bitmaps are among the resources of a module.
constexpr UINT bitmapType = 2;

struct ImageList
{
    int width;
    int height;
    std::vector<tagRGBQUAD> pixels = {}; ///< image by image, each from its uppermost row

    std::size_t ImageSize() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
    int Count() const { return static_cast<int>(pixels.size() / ImageSize()); }
};

/// What the work gives, or, where there is not enough memory for it, this.
template <class Result, class Work>
Result IfMemoryLasts(Result otherwise, Work work)
try
{
    return work();
}
catch (const std::exception&) // std::bad_alloc, or std::length_error
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return otherwise;
}

HBITMAP Keep(posix::Bitmap&& bitmap) { return static_cast<HBITMAP>(posix::Bitmaps().Keep(std::move(bitmap))); }

class PosixImages final : public ImageService
{
public:
    HBITMAP LoadStrip(HINSTANCE module, const wchar_t* name) override
    {
        const auto resource = formats::ReadBitmapResource(Modules().ResourceOf(module, bitmapType, name));
        if (!resource)
        {
            SetLastError(ERROR_RESOURCE_TYPE_NOT_FOUND);
            return nullptr;
        }
        return IfMemoryLasts<HBITMAP>(
            nullptr,
            [&] {
                return Keep({resource->width, resource->height, {resource->bits.begin(), resource->bits.end()}});
            });
    }

    bool Describe(HBITMAP bitmap, BitmapBits& bits) override
    {
        posix::Bitmap* const known = posix::Bitmaps().Find(bitmap);
        if (known != nullptr)
            bits = {known->width, known->height, known->bits};
        return known != nullptr || Refuse();
    }

    HBITMAP MakeBitmap(int width, int height) override
    {
        if (width <= 0 || height <= 0)
        {
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        const std::size_t size = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * sizeof(RGBQUAD);
        return IfMemoryLasts<HBITMAP>(nullptr, [&] { return Keep({width, height, std::vector<std::byte>(size)}); });
    }

    HIMAGELIST MakeList(int width, int height, UINT /*flags*/, int initialCount, int /*growth*/) override
    {
        if (width <= 0 || height <= 0 || initialCount < 0)
        {
            SetLastError(ERROR_INVALID_PARAMETER);
            return nullptr;
        }
        return IfMemoryLasts<HIMAGELIST>(nullptr,
                                         [&]
                                         {
                                             ImageList list{width, height};
                                             const std::size_t room = static_cast<std::size_t>(initialCount) + 1;
                                             if (list.ImageSize() > list.pixels.max_size() / room)
                                                 throw std::bad_alloc();
                                             list.pixels.reserve(list.ImageSize() * room);
                                             return static_cast<HIMAGELIST>(m_lists.Keep(std::move(list)));
                                         });
    }

    bool DestroyList(HIMAGELIST list) override { return m_lists.End(list) || Refuse(); }

    int Add(HIMAGELIST handle, HBITMAP bitmap) override
    {
        ImageList* const list = m_lists.Find(handle);
        const posix::Bitmap* const strip = posix::Bitmaps().Find(bitmap);
        if (list == nullptr || strip == nullptr || !IsOf32Bits(*strip))
        {
            Refuse();
            return -1;
        }
        return IfMemoryLasts(-1, [&] { return Append(*list, *strip); });
    }

    int Count(HIMAGELIST list) override
    {
        const ImageList* const known = m_lists.Find(list);
        return known != nullptr ? known->Count() : 0;
    }

    ListImage ImageOf(HIMAGELIST handle, int index) override
    {
        const ImageList* const list = m_lists.Find(handle);
        if (list == nullptr || index < 0 || index >= list->Count())
            return {};
        const auto size = static_cast<std::ptrdiff_t>(list->ImageSize());
        const auto first = list->pixels.begin() + index * size;
        return {list->width, list->height, {first, first + size}};
    }

private:
    static bool Refuse()
    {
        SetLastError(ERROR_INVALID_HANDLE);
        return false;
    }

    static bool IsOf32Bits(const posix::Bitmap& bitmap)
    {
        return bitmap.bits.size() / sizeof(RGBQUAD) ==
               static_cast<std::size_t>(bitmap.width) * static_cast<std::size_t>(bitmap.height);
    }

    static int Append(ImageList& list, const posix::Bitmap& strip)
    {
        const int first = list.Count();
        const auto width = static_cast<std::size_t>(list.width);
        const auto stripWidth = static_cast<std::size_t>(strip.width);
        const int count = strip.width / list.width;
        const std::size_t end = list.pixels.size();
        list.pixels.resize(end + static_cast<std::size_t>(count) * list.ImageSize());
        const int rows = std::min(list.height, strip.height);
        auto* to = list.pixels.data() + end;
        for (int image = 0; image < count; ++image, to += list.ImageSize())
        {
            for (int row = 0; row < rows; ++row)
            {
                const std::size_t from = static_cast<std::size_t>(strip.height - 1 - row) * stripWidth +
                                         static_cast<std::size_t>(image) * width;
                std::memcpy(to + static_cast<std::size_t>(row) * width, strip.bits.data() + from * sizeof(RGBQUAD),
                            width * sizeof(RGBQUAD));
            }
        }
        return first;
    }

    /// Bitmaps are made first: they outlive the lists, and a fork holds them later.
    posix::Objects<ImageList> m_lists = (static_cast<void>(posix::Bitmaps()), posix::Objects<ImageList>());
};

}

ServiceSlot<ImageService>& ImagesSlot() noexcept { return SystemService<ImageService, PosixImages>::Slot(); }

}

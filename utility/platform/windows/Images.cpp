#include "utility/platform/Images.h"

#include "utility/platform/SystemService.h"
#include "utility/platform/windows/ModulesContext.h"

#include <cstdlib>

namespace utility::platform
{

namespace
{

/// The common controls, as this module asks for them.
struct CommonControls
{
    HMODULE library = ::LoadLibraryW(L"Comctl32.dll");
    decltype(&::ImageList_Add) add = Find<decltype(add)>("ImageList_Add");
    decltype(&::ImageList_Create) create = Find<decltype(create)>("ImageList_Create");
    decltype(&::ImageList_Destroy) destroy = Find<decltype(destroy)>("ImageList_Destroy");
    decltype(&::ImageList_GetImageCount) count = Find<decltype(count)>("ImageList_GetImageCount");
    decltype(&::ImageList_GetImageInfo) imageInfo = Find<decltype(imageInfo)>("ImageList_GetImageInfo");

    template <class Function>
    Function Find(const char* name) const
    {
        return library != nullptr
                   ? reinterpret_cast<Function>(reinterpret_cast<void (*)()>(::GetProcAddress(library, name)))
                   : nullptr;
    }
};

/// Loaded by the first call.
const CommonControls& Controls()
{
    static const CommonControls controls;
    return controls;
}

/// Calls a function of the common controls; gives `otherwise` where there is none.
template <class Function, class Result, class... Arguments>
Result Call(Function CommonControls::*function, Result otherwise, Arguments... arguments)
{
    const windows::ModulesContext context;
    const auto address = Controls().*function;
    return address != nullptr ? address(arguments...) : otherwise;
}

class WindowsImages final : public ImageService
{
public:
    HBITMAP LoadStrip(HINSTANCE module, const wchar_t* name) override
    {
        // For null the system would look among bitmaps of its own.
        const HINSTANCE holder = module != nullptr ? module : ::GetModuleHandleW(nullptr);
        return static_cast<HBITMAP>(
            ::LoadImageW(holder, name, IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION | LR_DEFAULTSIZE));
    }

    bool Describe(HBITMAP bitmap, BitmapBits& bits) override
    {
        BITMAP description;
        if (::GetObjectW(bitmap, sizeof(description), &description) == 0)
            return false;
        const std::size_t size =
            static_cast<std::size_t>(description.bmWidthBytes) * static_cast<std::size_t>(description.bmHeight);
        auto* const bytes = static_cast<std::byte*>(description.bmBits);
        bits = {description.bmWidth, description.bmHeight, {bytes, bytes != nullptr ? size : 0}};
        return true;
    }

    HBITMAP MakeBitmap(int width, int height) override
    {
        BITMAPINFO description = {};
        description.bmiHeader = HeaderOf(width, height);
        void* bits = nullptr;
        return ::CreateDIBSection(nullptr, &description, DIB_RGB_COLORS, &bits, nullptr, 0);
    }

    HIMAGELIST MakeList(int width, int height, UINT flags, int initialCount, int growth) override
    {
        return Call(&CommonControls::create, HIMAGELIST{}, width, height, flags, initialCount, growth);
    }

    bool DestroyList(HIMAGELIST list) override { return Call(&CommonControls::destroy, FALSE, list) != FALSE; }

    int Add(HIMAGELIST list, HBITMAP bitmap) override
    {
        return Call(&CommonControls::add, -1, list, bitmap, HBITMAP{});
    }

    int Count(HIMAGELIST list) override { return Call(&CommonControls::count, 0, list); }

    ListImage ImageOf(HIMAGELIST list, int index) override
    {
        IMAGEINFO info = {};
        BITMAP all;
        if (Call(&CommonControls::imageInfo, FALSE, list, index, &info) == FALSE ||
            ::GetObjectW(info.hbmImage, sizeof(all), &all) == 0)
            return {};
        BITMAPINFO description = {};
        description.bmiHeader = HeaderOf(all.bmWidth, -all.bmHeight);
        std::vector<tagRGBQUAD> pixels(static_cast<std::size_t>(all.bmWidth) * static_cast<std::size_t>(all.bmHeight));
        const HDC device = ::CreateCompatibleDC(nullptr);
        const int rows = ::GetDIBits(device, info.hbmImage, 0, static_cast<UINT>(all.bmHeight), pixels.data(),
                                     &description, DIB_RGB_COLORS);
        ::DeleteDC(device);
        if (rows != all.bmHeight)
            return {};
        const RECT& place = info.rcImage;
        ListImage image{place.right - place.left, place.bottom - place.top, {}};
        for (LONG row = place.top; row < place.bottom; ++row)
        {
            const auto first = pixels.begin() + row * std::ptrdiff_t{all.bmWidth} + place.left;
            image.pixels.insert(image.pixels.end(), first, first + image.width);
        }
        return image;
    }

private:
    /// Of a bitmap of 32 bits. A negative height has its rows go downwards.
    static BITMAPINFOHEADER HeaderOf(int width, int height)
    {
        BITMAPINFOHEADER header = {};
        header.biSize = sizeof(header);
        header.biWidth = width;
        header.biHeight = height;
        header.biPlanes = 1;
        header.biBitCount = 32;
        header.biCompression = BI_RGB;
        header.biSizeImage = static_cast<DWORD>(width) * static_cast<DWORD>(std::abs(height)) * sizeof(RGBQUAD);
        return header;
    }
};

}

ServiceSlot<ImageService>& ImagesSlot() noexcept { return SystemService<ImageService, WindowsImages>::Slot(); }

}

#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/Images.h"

namespace support
{

/// An image service that stands in for the system's for its lifetime and hands everything on to it.
class ForwardingImages : public utility::platform::ImageService
{
public:
    HBITMAP LoadStrip(HINSTANCE module, const wchar_t* name) override { return m_system.LoadStrip(module, name); }
    bool Describe(HBITMAP bitmap, utility::platform::BitmapBits& bits) override
    {
        return m_system.Describe(bitmap, bits);
    }
    HBITMAP MakeBitmap(int width, int height) override { return m_system.MakeBitmap(width, height); }
    HIMAGELIST MakeList(int width, int height, UINT flags, int initialCount, int growth) override
    {
        return m_system.MakeList(width, height, flags, initialCount, growth);
    }
    bool DestroyList(HIMAGELIST list) override { return m_system.DestroyList(list); }
    int Add(HIMAGELIST list, HBITMAP bitmap) override { return m_system.Add(list, bitmap); }
    int Count(HIMAGELIST list) override { return m_system.Count(list); }
    utility::platform::ListImage ImageOf(HIMAGELIST list, int index) override { return m_system.ImageOf(list, index); }

private:
    utility::platform::ImageService& m_system = utility::platform::Images();
    Substitute<utility::platform::ImageService> m_scope{utility::platform::ImagesSlot(), *this};
};

}

#include "utility/platform/Images.h"

#include "tests/support/windows/ImportedCall.h"

#include <gtest/gtest.h>

#include <string>

extern "C" decltype(&::ActivateActCtx) __imp_ActivateActCtx;
extern "C" decltype(&::DeactivateActCtx) __imp_DeactivateActCtx;
extern "C" decltype(&::LoadLibraryW) __imp_LoadLibraryW;
extern "C" decltype(&::LoadImageW) __imp_LoadImageW;
extern "C" decltype(&::CreateDIBSection) __imp_CreateDIBSection;

using support::ImportedCall;
using utility::platform::Images;

namespace
{

std::string calledOfImages;

struct
{
    HINSTANCE module;
    std::wstring name;
    UINT type;
    int width;
    int height;
    UINT flags;
} imageAsked;

BITMAPINFOHEADER sectionAsked;

}

TEST(WindowsImagesTest, EachCallOfTheCommonControlsIsInTheContextOfTheModuleAndTheyAreLoadedOnce)
{
    calledOfImages.clear();
    const ImportedCall activate(__imp_ActivateActCtx,
                                [](HANDLE, ULONG_PTR* cookie)
                                {
                                    *cookie = 24;
                                    calledOfImages += "activate ";
                                    return TRUE;
                                });
    const ImportedCall deactivate(__imp_DeactivateActCtx,
                                  [](DWORD, ULONG_PTR cookie)
                                  {
                                      calledOfImages += cookie == 24 ? "deactivate " : "another ";
                                      return TRUE;
                                  });
    EXPECT_EQ(Images().Add(nullptr, nullptr), -1);
    EXPECT_EQ(calledOfImages, "activate deactivate ");
    const ImportedCall load(__imp_LoadLibraryW,
                            [](const wchar_t*) -> HMODULE
                            {
                                calledOfImages += "load ";
                                return nullptr;
                            });
    EXPECT_EQ(Images().Add(nullptr, nullptr), -1);
    EXPECT_EQ(calledOfImages, "activate deactivate activate deactivate ");
}

TEST(WindowsImagesTest, ContextThatCannotBeActivatedIsNotLeft)
{
    calledOfImages.clear();
    const ImportedCall activate(__imp_ActivateActCtx, [](HANDLE, ULONG_PTR*) { return FALSE; });
    const ImportedCall deactivate(__imp_DeactivateActCtx,
                                  [](DWORD, ULONG_PTR)
                                  {
                                      calledOfImages += "deactivate ";
                                      return TRUE;
                                  });
    EXPECT_EQ(Images().Add(nullptr, nullptr), -1);
    EXPECT_EQ(calledOfImages, "");
}

TEST(WindowsImagesTest, StripIsLoadedAsASectionOfItsOwnSize)
{
    const ImportedCall load(__imp_LoadImageW,
                            [](HINSTANCE module, const wchar_t* name, UINT type, int width, int height, UINT flags)
                            {
                                imageAsked = {module, name, type, width, height, flags};
                                return HANDLE{};
                            });
    EXPECT_EQ(Images().LoadStrip(nullptr, L"strip"), nullptr);
    EXPECT_EQ(imageAsked.module, ::GetModuleHandleW(nullptr));
    EXPECT_EQ(imageAsked.name, L"strip");
    EXPECT_EQ(imageAsked.type, 0u);
    EXPECT_EQ(imageAsked.width, 0);
    EXPECT_EQ(imageAsked.height, 0);
    EXPECT_EQ(imageAsked.flags, 0x2040u);
}

TEST(WindowsImagesTest, BitmapIsASectionOf32BitsOnNoDevice)
{
    const ImportedCall create(__imp_CreateDIBSection,
                              [](HDC device, const BITMAPINFO* info, UINT usage, void**, HANDLE section, DWORD offset)
                              {
                                  EXPECT_EQ(device, nullptr);
                                  EXPECT_EQ(usage, static_cast<UINT>(DIB_RGB_COLORS));
                                  EXPECT_EQ(section, nullptr);
                                  EXPECT_EQ(offset, 0u);
                                  sectionAsked = info->bmiHeader;
                                  return HBITMAP{};
                              });
    EXPECT_EQ(Images().MakeBitmap(160, 16), nullptr);
    EXPECT_EQ(sectionAsked.biSize, 40u);
    EXPECT_EQ(sectionAsked.biWidth, 160);
    EXPECT_EQ(sectionAsked.biHeight, 16);
    EXPECT_EQ(sectionAsked.biPlanes, 1);
    EXPECT_EQ(sectionAsked.biBitCount, 32);
    EXPECT_EQ(sectionAsked.biCompression, static_cast<DWORD>(BI_RGB));
    EXPECT_EQ(sectionAsked.biSizeImage, 160u * 16 * 4);
}

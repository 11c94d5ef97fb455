// The images of a toolbar in its three states, all made of one strip, in a picture:
//
//     toolbar_strip toolbar.png
//
// The strip is a bitmap in a resource module beside the program (toolbar_images.dll), the same file on both systems.

#include "examples/toolbar/Picture.h"

#include "examples/Console.h"

#include <iostream>

namespace
{

constexpr unsigned int strip = 101;
constexpr int imageSize = 24;

constexpr DWORD background = 0xF5F2EF;
constexpr DWORD tint = 0xDCD2C8;

constexpr std::uint32_t scale = 2;
constexpr std::uint32_t gap = 8;
constexpr std::uint32_t step = scale * imageSize + gap;

}

int main(int argumentCount, char** arguments)
{
    const std::vector<boost::filesystem::path> paths = console::Arguments(argumentCount, arguments);
    if (paths.size() != 1)
    {
        std::cerr << "usage: toolbar_strip PICTURE.png\n";
        return 2;
    }
    InitialiseUtilityDLL();
    const boost::filesystem::path file = GetModulePath(nullptr) / "toolbar_images.dll";
    const HINSTANCE resources = utility::LoadResourceModule(console::Wide(file).c_str());
    ZeloInitMFCExtensionDLL(nullptr, resources);

    CZeloImageList states[3];
    const unsigned int kinds[] = {TB_SETIMAGELIST, TB_SETHOTIMAGELIST, TB_SETDISABLEDIMAGELIST};
    for (int i = 0; i < 3; ++i)
    {
        if (states[i].AddBitmap(strip, imageSize, tint, kinds[i]) == 0)
        {
            std::cerr << "toolbar_strip: there is no strip beside the program\n";
            return 1;
        }
    }
    const int count = states[0].GetImageCount();
    toolbar::Picture picture(gap + static_cast<std::uint32_t>(count) * step, gap + 3 * step, background);
    for (std::uint32_t row = 0; row < 3; ++row)
    {
        for (int i = 0; i < count; ++i)
            picture.Paint(states[row].GetImage(i), gap + static_cast<std::uint32_t>(i) * step, gap + row * step, scale);
    }
    if (!toolbar::WritePng(picture, paths[0]))
    {
        std::cerr << "toolbar_strip: cannot write " << console::Utf8(paths[0]) << '\n';
        return 1;
    }
    std::cout << count << " images of " << imageSize << " pixels, in three states\n";
    return 0;
}

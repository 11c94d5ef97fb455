#include "examples/toolbar/Picture.h"

#include <png.h>

namespace toolbar
{

bool WritePng(const Picture& picture, const boost::filesystem::path& path)
{
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = picture.width;
    image.height = picture.height;
    image.format = PNG_FORMAT_RGB;
    return png_image_write_to_file(&image, path.c_str(), 0, picture.bytes.data(), 0, nullptr) != 0;
}

}

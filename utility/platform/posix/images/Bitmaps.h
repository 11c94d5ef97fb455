#pragma once

#include "utility/platform/posix/images/Objects.h"

#include <cstddef>
#include <vector>

namespace utility::platform::posix
{

struct Bitmap
{
    int width = 0;
    int height = 0;
    std::vector<std::byte> bits; ///< the rows in the order of memory
};

/// The bitmaps of this process.
Objects<Bitmap>& Bitmaps();

}

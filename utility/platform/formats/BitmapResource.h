#pragma once

// A bitmap among the resources of a module: a header, colours, pixels. Whatever the bytes say, nothing outside them is
// read, and nothing throws.

#include "utility/platform/formats/Bytes.h"

#include <optional>

namespace utility::platform::formats
{

struct BitmapResource
{
    int width;
    int height;
    Bytes bits; ///< the rows as they stand there, each of whole 32 bits
};

/// Nothing, unless all of the pixels are there. What is compressed, and what has a header of the first kind, of 12
/// bytes, is not read.
std::optional<BitmapResource> ReadBitmapResource(Bytes resource);

}

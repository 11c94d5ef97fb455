#include "utility/platform/formats/BitmapResource.h"

#include <cstdlib>

namespace utility::platform::formats
{

namespace
{

struct BitmapHeader
{
    std::uint32_t size;
    std::int32_t width;
    std::int32_t height; ///< negative where the rows go from the uppermost to the lowest
    std::uint16_t planes;
    std::uint16_t bitsOfPixel;
    std::uint32_t compression;
    std::uint32_t imageSize;
    std::int32_t resolution[2];
    std::uint32_t colours;
    std::uint32_t importantColours;
};
static_assert(sizeof(BitmapHeader) == 40);

constexpr std::uint32_t uncompressed = 0;
/// Behind the header stand the bits of a pixel that are red, green and blue; later headers have them inside.
constexpr std::uint32_t bitFields = 3;
constexpr std::uint32_t sizeOfMasks = 12;

}

std::optional<BitmapResource> ReadBitmapResource(Bytes resource)
{
    const auto header = RecordAt<BitmapHeader>(resource, 0);
    const unsigned depth = header.bitsOfPixel;
    const bool hasMasks = header.compression == bitFields && (depth == 16 || depth == 32);
    const bool isKnownDepth = depth == 1 || depth == 4 || depth == 8 || depth == 16 || depth == 24 || depth == 32;
    if (header.size < sizeof(header) || header.width <= 0 || header.height == 0 || header.height == INT32_MIN ||
        !isKnownDepth || !(header.compression == uncompressed || hasMasks))
        return std::nullopt;
    const std::uint32_t colours = header.colours == 0 && depth <= 8 ? 1u << depth : header.colours;
    const std::uint64_t bitsAt = std::uint64_t{header.size} + std::uint64_t{colours} * 4 +
                                 (hasMasks && header.size == sizeof(header) ? sizeOfMasks : 0);
    const int height = std::abs(header.height);
    const std::uint64_t rowSize = (static_cast<std::uint64_t>(header.width) * depth + 31) / 32 * 4;
    const Bytes bits = BytesAt(resource, bitsAt, rowSize * static_cast<std::uint64_t>(height));
    return bits.empty() ? std::nullopt : std::optional<BitmapResource>({header.width, height, bits});
}

}

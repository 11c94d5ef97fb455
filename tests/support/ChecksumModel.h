#pragma once

#include <cstddef>
#include <cstdint>

namespace support
{

/// The register of the check with the polynomial 0x04C11DB7 after these bytes, bit by bit.
inline std::uint32_t ChecksumModel(std::uint32_t value, const void* data, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        for (int bit = 7; bit >= 0; --bit)
        {
            const bool isNextSet = (static_cast<const unsigned char*>(data)[i] >> bit & 1) != 0;
            const bool isFirstSet = value >> 31 != 0;
            value <<= 1;
            if (isNextSet != isFirstSet)
                value ^= 0x04C11DB7;
        }
    }
    return value;
}

}

#include "utility/platform/Zlib.h"

#include "utility/platform/SystemService.h"

#include <zlib.h>

namespace utility::platform
{

namespace
{

/// What is called here is imported with its first call: zlib1.def lists it.
class WindowsZlib final : public ZlibService
{
public:
    int DeflateInit(z_stream& stream, int level, const char* version, int streamSize) override
    {
        return ::deflateInit_(&stream, level, version, streamSize);
    }

    int DeflateInit2(z_stream& stream, int level, int method, int windowBits, int memoryLevel, int strategy,
                     const char* version, int streamSize) override
    {
        return ::deflateInit2_(&stream, level, method, windowBits, memoryLevel, strategy, version, streamSize);
    }

    int Deflate(z_stream& stream, int flush) override { return ::deflate(&stream, flush); }

    int DeflateEnd(z_stream& stream) override { return ::deflateEnd(&stream); }

    int InflateInit(z_stream& stream, const char* version, int streamSize) override
    {
        return ::inflateInit_(&stream, version, streamSize);
    }

    int Inflate(z_stream& stream, int flush) override { return ::inflate(&stream, flush); }

    int InflateEnd(z_stream& stream) override { return ::inflateEnd(&stream); }

    std::uint32_t Checksum(std::uint32_t before, const void* data, std::uint32_t size) override
    {
        return ::crc32(before, static_cast<const Bytef*>(data), size);
    }
};

}

ServiceSlot<ZlibService>& ZlibSlot() noexcept { return SystemService<ZlibService, WindowsZlib>::Slot(); }

}

#pragma once

#include "utility/platform/Service.h"

#include <cstdint>

struct z_stream_s;

namespace utility::platform
{

/// The functions of zlib, with its own results, and its arguments in their order. The first call of any loads it. Any
/// thread may call; a stream belongs to one thread at a time.
///
/// Where zlib cannot be had, a call raises the structured exception 0xC06D007E on Windows, as a delayed import does. On
/// Linux it gives Z_VERSION_ERROR (-6), or 0 for a checksum, and leaves everything as it is. Each call looks anew.
class ZlibService
{
public:
    virtual ~ZlibService() = default;

    virtual int DeflateInit(z_stream_s& stream, int level, const char* version, int streamSize) = 0;
    virtual int DeflateInit2(z_stream_s& stream, int level, int method, int windowBits, int memoryLevel, int strategy,
                             const char* version, int streamSize) = 0;
    virtual int Deflate(z_stream_s& stream, int flush) = 0;
    virtual int DeflateEnd(z_stream_s& stream) = 0;
    virtual int InflateInit(z_stream_s& stream, const char* version, int streamSize) = 0;
    virtual int Inflate(z_stream_s& stream, int flush) = 0;
    virtual int InflateEnd(z_stream_s& stream) = 0;

    /// The CRC-32 of bytes that follow those whose CRC-32 is `before`. Null begins it.
    virtual std::uint32_t Checksum(std::uint32_t before, const void* data, std::uint32_t size) = 0;
};

ServiceSlot<ZlibService>& ZlibSlot() noexcept;
inline ZlibService& Zlib() noexcept { return ZlibSlot().Get(); }

}

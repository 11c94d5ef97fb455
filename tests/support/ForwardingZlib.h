#pragma once

#include "utility/platform/Zlib.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>
#include <zlib.h>

namespace support
{

/// A zlib that hands everything to the one it was made over, records the names of the calls, and counts the memory that
/// streams have for compressing. Those calls that are named in `failing` give `result` and do nothing else.
class ForwardingZlib : public utility::platform::ZlibService
{
public:
    ForwardingZlib() : m_system(utility::platform::Zlib()) {}

    int DeflateInit(z_stream& stream, int level, const char* version, int streamSize) override
    {
        return Fails("DeflateInit") ? result : m_system.DeflateInit(stream, level, version, streamSize);
    }
    int DeflateInit2(z_stream& stream, int level, int method, int windowBits, int memoryLevel, int strategy,
                     const char* version, int streamSize) override
    {
        if (Fails("DeflateInit2"))
            return result;
        stream.opaque = this;
        stream.zalloc = [](void* self, uInt count, uInt size)
        {
            ++static_cast<ForwardingZlib*>(self)->blocks;
            return std::calloc(count, size);
        };
        stream.zfree = [](void* self, void* block)
        {
            --static_cast<ForwardingZlib*>(self)->blocks;
            std::free(block);
        };
        return m_system.DeflateInit2(stream, level, method, windowBits, memoryLevel, strategy, version, streamSize);
    }
    int Deflate(z_stream& stream, int flush) override
    {
        return Fails("Deflate") ? result : m_system.Deflate(stream, flush);
    }
    int DeflateEnd(z_stream& stream) override { return Fails("DeflateEnd") ? result : m_system.DeflateEnd(stream); }
    int InflateInit(z_stream& stream, const char* version, int streamSize) override
    {
        return Fails("InflateInit") ? result : m_system.InflateInit(stream, version, streamSize);
    }
    int Inflate(z_stream& stream, int flush) override
    {
        return Fails("Inflate") ? result : m_system.Inflate(stream, flush);
    }
    int InflateEnd(z_stream& stream) override { return Fails("InflateEnd") ? result : m_system.InflateEnd(stream); }
    std::uint32_t Checksum(std::uint32_t before, const void* data, std::uint32_t size) override
    {
        return Fails("Checksum") ? 0 : m_system.Checksum(before, data, size);
    }

    std::vector<std::string> calls;
    std::vector<std::string> failing;
    int result = Z_MEM_ERROR;
    int blocks = 0;

private:
    bool Fails(const char* call)
    {
        calls.emplace_back(call);
        return std::ranges::find(failing, call) != failing.end();
    }

    utility::platform::ZlibService& m_system;
};

}

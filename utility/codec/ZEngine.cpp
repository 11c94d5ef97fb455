#include "utility/codec/ZEngine.h"

#include "utility/platform/Zlib.h"

#include <zlib.h>

using utility::platform::Zlib;

static_assert(sizeof(CZEngine) == sizeof(z_stream) && alignof(CZEngine) == alignof(z_stream));

namespace
{

// What zlib compares with its own to tell whether it knows the record. Of the version only the first number counts.
constexpr char version[] = "1.2.8";
constexpr int recordSize = sizeof(z_stream);

}

CZEngine::CZEngine() : m_record{} {}

int CZEngine::DeflateInit(int level) { return Zlib().DeflateInit(*GetZStream(), level, version, recordSize); }

int CZEngine::DeflateInit2(int level, int method, int windowBits, int memoryLevel, int strategy)
{
    return Zlib().DeflateInit2(*GetZStream(), level, method, windowBits, memoryLevel, strategy, version, recordSize);
}

int CZEngine::Deflate(int flush) { return Zlib().Deflate(*GetZStream(), flush); }

int CZEngine::DeflateEnd() { return Zlib().DeflateEnd(*GetZStream()); }

int CZEngine::InflateInit() { return Zlib().InflateInit(*GetZStream(), version, recordSize); }

int CZEngine::Inflate(int flush) { return Zlib().Inflate(*GetZStream(), flush); }

int CZEngine::InflateEnd() { return Zlib().InflateEnd(*GetZStream()); }

z_stream_s* CZEngine::GetZStream() { return reinterpret_cast<z_stream_s*>(this); }

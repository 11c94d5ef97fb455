#include "utility/codec/ZEngine.h"

#include "tests/support/Substitute.h"
#include "utility/platform/Zlib.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>
#include <string>
#include <type_traits>
#include <zlib.h>

static_assert(!std::is_polymorphic_v<CZEngine>);
static_assert(sizeof(CZEngine) == sizeof(z_stream));
static_assert(sizeof(void*) != 8 || sizeof(long) != 4 || sizeof(CZEngine) == 88);
static_assert(std::is_trivially_copyable_v<CZEngine>);

namespace
{

z_stream& StreamOf(CZEngine& engine) { return reinterpret_cast<z_stream&>(engine); }

/// Records each call with its arguments, and gives the number of calls as result.
struct RecordingZlib : utility::platform::ZlibService
{
    int DeflateInit(z_stream& at, int level, const char* version, int size) override
    {
        return Record(at, "DeflateInit", level, version, size);
    }
    int DeflateInit2(z_stream& at, int level, int method, int windowBits, int memoryLevel, int strategy,
                     const char* version, int size) override
    {
        return Record(at, "DeflateInit2", level, method, windowBits, memoryLevel, strategy, version, size);
    }
    int Deflate(z_stream& at, int flush) override { return Record(at, "Deflate", flush); }
    int DeflateEnd(z_stream& at) override { return Record(at, "DeflateEnd"); }
    int InflateInit(z_stream& at, const char* version, int size) override
    {
        return Record(at, "InflateInit", version, size);
    }
    int Inflate(z_stream& at, int flush) override { return Record(at, "Inflate", flush); }
    int InflateEnd(z_stream& at) override { return Record(at, "InflateEnd"); }
    std::uint32_t Checksum(std::uint32_t, const void*, std::uint32_t) override { return 0; }

    template <class... Arguments>
    int Record(z_stream& at, const Arguments&... arguments)
    {
        stream = &at;
        std::ostringstream text;
        ((text << arguments << ' '), ...);
        call = text.str();
        return ++calls;
    }

    z_stream* stream = nullptr;
    std::string call;
    int calls = 100;
};

}

TEST(ZEngineTest, IsAZeroedRecordAtFirst)
{
    alignas(CZEngine) unsigned char memory[sizeof(CZEngine)];
    std::ranges::fill(memory, 0xFF);
    new (memory) CZEngine;
    EXPECT_EQ(std::ranges::count(memory, 0), static_cast<std::ptrdiff_t>(sizeof(memory)));
}

TEST(ZEngineTest, EachOperationIsTheFunctionOfZlibWithItsResult)
{
    RecordingZlib zlib;
    const support::Substitute<utility::platform::ZlibService> scope(utility::platform::ZlibSlot(), zlib);
    const std::string versionAndSize = "1.2.8 " + std::to_string(sizeof(z_stream)) + ' ';
    CZEngine engine;
    EXPECT_EQ(engine.DeflateInit(7), 101);
    EXPECT_EQ(zlib.call, "DeflateInit 7 " + versionAndSize);
    EXPECT_EQ(engine.DeflateInit2(1, 2, -3, 4, 5), 102);
    EXPECT_EQ(zlib.call, "DeflateInit2 1 2 -3 4 5 " + versionAndSize);
    EXPECT_EQ(engine.Deflate(2), 103);
    EXPECT_EQ(zlib.call, "Deflate 2 ");
    EXPECT_EQ(engine.DeflateEnd(), 104);
    EXPECT_EQ(zlib.call, "DeflateEnd ");
    EXPECT_EQ(engine.InflateInit(), 105);
    EXPECT_EQ(zlib.call, "InflateInit " + versionAndSize);
    EXPECT_EQ(engine.Inflate(3), 106);
    EXPECT_EQ(zlib.call, "Inflate 3 ");
    EXPECT_EQ(engine.InflateEnd(), 107);
    EXPECT_EQ(zlib.call, "InflateEnd ");
    EXPECT_EQ(zlib.stream, &StreamOf(engine));
}

TEST(ZEngineTest, WhatIsCompressedIsExpandedToTheSame)
{
    std::string text;
    for (int number = 0; number < 5000; ++number)
        text += std::to_string(number * number) + ' ';
    std::string compressed(text.size(), '\0');
    CZEngine deflating;
    ASSERT_EQ(deflating.DeflateInit(9), Z_OK);
    z_stream& from = StreamOf(deflating);
    from.next_in = reinterpret_cast<Bytef*>(text.data());
    from.avail_in = static_cast<uInt>(text.size());
    from.next_out = reinterpret_cast<Bytef*>(compressed.data());
    from.avail_out = static_cast<uInt>(compressed.size());
    EXPECT_EQ(deflating.Deflate(Z_FINISH), Z_STREAM_END);
    EXPECT_EQ(from.total_in, text.size());
    EXPECT_LT(from.total_out, text.size() / 2);

    std::string expanded(text.size() + 1, '\0');
    CZEngine inflating;
    ASSERT_EQ(inflating.InflateInit(), Z_OK);
    z_stream& to = StreamOf(inflating);
    to.next_in = reinterpret_cast<Bytef*>(compressed.data());
    to.avail_in = static_cast<uInt>(from.total_out);
    to.next_out = reinterpret_cast<Bytef*>(expanded.data());
    to.avail_out = static_cast<uInt>(expanded.size());
    EXPECT_EQ(inflating.Inflate(Z_FINISH), Z_STREAM_END);
    expanded.resize(to.total_out);
    EXPECT_TRUE(expanded == text);
    EXPECT_EQ(deflating.DeflateEnd(), Z_OK);
    EXPECT_EQ(inflating.InflateEnd(), Z_OK);
}

TEST(ZEngineTest, StreamThatWasNotBegunIsRefused)
{
    CZEngine engine;
    EXPECT_EQ(engine.Deflate(Z_FINISH), Z_STREAM_ERROR);
    EXPECT_EQ(engine.DeflateEnd(), Z_STREAM_ERROR);
    EXPECT_EQ(engine.Inflate(Z_FINISH), Z_STREAM_ERROR);
    EXPECT_EQ(engine.InflateEnd(), Z_STREAM_ERROR);
    EXPECT_EQ(engine.DeflateInit(10), Z_STREAM_ERROR);
}

TEST(ZEngineTest, CopyDeliberatelySharesTheStateOfZlib)
{
    CZEngine engine;
    ASSERT_EQ(engine.DeflateInit(6), Z_OK);
    CZEngine copy(engine);
    EXPECT_EQ(std::memcmp(&copy, &engine, sizeof(engine)), 0);
    CZEngine assigned;
    assigned = engine;
    EXPECT_EQ(std::memcmp(&assigned, &engine, sizeof(engine)), 0);
    CZEngine fromTemporary;
    fromTemporary = CZEngine(engine);
    EXPECT_EQ(StreamOf(fromTemporary).state, StreamOf(engine).state);
    EXPECT_EQ(engine.DeflateEnd(), Z_OK);
}

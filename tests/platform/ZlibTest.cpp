#include "utility/platform/Zlib.h"

#include <gtest/gtest.h>

#include <zlib.h>

using utility::platform::Zlib;

TEST(ZlibTest, ChecksumIsTheCommonOneAndGoesOnWhereItStood)
{
    EXPECT_EQ(Zlib().Checksum(0, nullptr, 0), 0u);
    EXPECT_EQ(Zlib().Checksum(0, "123456789", 9), 0xCBF43926u);
    EXPECT_EQ(Zlib().Checksum(Zlib().Checksum(0, "1234", 4), "56789", 5), 0xCBF43926u);
}

TEST(ZlibTest, StreamOfAnotherVersionOrRecordIsRefused)
{
    constexpr int size = sizeof(z_stream);
    z_stream stream{};
    EXPECT_EQ(Zlib().DeflateInit(stream, 6, "2.0", size), Z_VERSION_ERROR);
    EXPECT_EQ(Zlib().DeflateInit(stream, 6, "1.2.8", size - 1), Z_VERSION_ERROR);
    EXPECT_EQ(Zlib().DeflateInit2(stream, 6, Z_DEFLATED, 15, 8, Z_DEFAULT_STRATEGY, "2.0", size), Z_VERSION_ERROR);
    EXPECT_EQ(Zlib().DeflateInit2(stream, 6, Z_DEFLATED, 15, 8, Z_DEFAULT_STRATEGY, "1.2.8", 0), Z_VERSION_ERROR);
    EXPECT_EQ(Zlib().InflateInit(stream, "2.0", size), Z_VERSION_ERROR);
    EXPECT_EQ(Zlib().InflateInit(stream, "1.2.8", size + 1), Z_VERSION_ERROR);
}

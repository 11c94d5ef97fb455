#include "utility/platform/formats/ZipDirectory.h"

#include "tests/support/GuardedText.h"

#include <gtest/gtest.h>

#include <span>
#include <string>

using namespace utility::platform::formats;

namespace
{

Bytes ZipBytes(const std::string& text) { return std::as_bytes(std::span(text)); }

std::string Little(std::uint64_t number, int size)
{
    std::string bytes;
    for (; size > 0; --size, number >>= 8)
        bytes += static_cast<char>(number & 0xFF);
    return bytes;
}

/// A record with what is told of its sizes and its position, and this extra part.
std::string ZipRecordOf(const std::string& name, std::uint64_t size, std::uint64_t packedSize, std::uint64_t position,
                        const std::string& extra = "", const std::string& comment = "", std::uint64_t part = 0)
{
    return "PK\1\2" + Little(0x031E, 2) + Little(20, 2) + Little(0, 12) + Little(packedSize, 4) + Little(size, 4) +
           Little(name.size(), 2) + Little(extra.size(), 2) + Little(comment.size(), 2) + Little(part, 2) +
           Little(0, 6) + Little(position, 4) + name + extra + comment;
}

constexpr std::uint64_t ones = 0xFFFFFFFF;

}

TEST(ZipDirectoryTest, EndIsFoundBehindAnyComment)
{
    for (const std::size_t size : {0u, 1u, 1000u, 0xFFFFu})
    {
        const std::string bytes = "ENTRIESDIRECTORY"
                                  "PK\5\6" +
                                  Little(0, 4) + Little(2, 2) + Little(2, 2) + Little(9, 4) + Little(7, 4) +
                                  Little(size, 2) + std::string(size, 'c');
        const auto end = FindZipEnd(ZipBytes(bytes), bytes.size());
        ASSERT_TRUE(end) << size;
        EXPECT_EQ(end->entries, 2u);
        EXPECT_EQ(end->directoryPosition, 7u);
        EXPECT_EQ(end->directorySize, 9u);
        EXPECT_EQ(end->begin, 0u);
        EXPECT_EQ(end->comment.size(), size);
    }
}

TEST(ZipDirectoryTest, ArchiveBehindSomethingElseBeginsThere)
{
    const std::string bytes = "AHEAD"
                              "ENTRIESDIRECTORY" +
                              ZipEndOf(2, 7, 9);
    const auto end = FindZipEnd(ZipBytes(bytes), bytes.size());
    ASSERT_TRUE(end);
    EXPECT_EQ(end->begin, 5u);
    EXPECT_EQ(end->directoryPosition, 12u);
}

TEST(ZipDirectoryTest, EndCountsFromTheEndOfTheFile)
{
    const std::string bytes = ZipEndOf(2, 5000000000, 100);
    const auto end = FindZipEnd(ZipBytes(bytes), 5000000100 + bytes.size());
    ASSERT_TRUE(end);
    EXPECT_EQ(end->directoryPosition, 5000000000u);
    EXPECT_EQ(end->begin, 0u);
    EXPECT_EQ(bytes.size(), 56u + 20 + 22);
}

TEST(ZipDirectoryTest, EndIsWideWhereANumberDoesNotFit)
{
    EXPECT_EQ(ZipEndOf(0xFFFE, ones - 1, ones - 1).size(), 22u);
    EXPECT_EQ(ZipEndOf(0xFFFF, 0, 0).size(), 98u);
    EXPECT_EQ(ZipEndOf(0, ones, 0).size(), 98u);
    EXPECT_EQ(ZipEndOf(0, 0, ones).size(), 98u);
    const std::string bytes = ZipEndOf(70000, 0, 0);
    EXPECT_EQ(FindZipEnd(ZipBytes(bytes), bytes.size())->entries, 70000u);
}

TEST(ZipDirectoryTest, WhatIsNoEndOfAnArchiveInOnePartIsNone)
{
    const std::string good = ZipEndOf(1, 0, 0);
    ASSERT_TRUE(FindZipEnd(ZipBytes(good), good.size()));
    EXPECT_FALSE(FindZipEnd({}, 0));
    EXPECT_FALSE(FindZipEnd(ZipBytes(good + ' '), good.size() + 1)) << "something behind it";
    for (const std::size_t at : {0u, 1u, 2u, 3u, 4u, 6u, 8u, 12u, 16u, 20u})
    {
        std::string other = good;
        other[at] = 'x';
        EXPECT_FALSE(FindZipEnd(ZipBytes(other), other.size())) << at;
    }
    const std::string wide = ZipEndOf(70000, 0, 0);
    for (const std::size_t at : {16u, 20u, 24u, 40u, 48u})
    {
        std::string other = wide;
        other[at] = 'x';
        EXPECT_FALSE(FindZipEnd(ZipBytes(other), other.size())) << at;
    }
    for (std::size_t size = 0; size < wide.size(); ++size)
        EXPECT_FALSE(FindZipEnd(ZipBytes(wide.substr(0, size)), size)) << size;
}

TEST(ZipDirectoryTest, NumbersThatSayMoreThanThereIsAreNone)
{
    for (const std::uint64_t number : {1ULL, 0x7FFFFFFFFFFFFFFFULL, 0xFFFFFFFFFFFFFFFFULL})
    {
        const std::string size = ZipEndOf(70000, 0, number);
        EXPECT_FALSE(FindZipEnd(ZipBytes(size), size.size())) << number;
        const std::string position = ZipEndOf(70000, number, 0);
        EXPECT_FALSE(FindZipEnd(ZipBytes(position), position.size())) << number;
        const std::string both = ZipEndOf(70000, number, 0 - number);
        EXPECT_FALSE(FindZipEnd(ZipBytes(both), both.size())) << number;
    }
}

TEST(ZipDirectoryTest, EntriesAreReadWithTheirNumbersWhereverTheyStand)
{
    const std::string other = "UT" + Little(5, 2) + "12345";
    const std::string wide = Little(1, 2);
    const std::string directory =
        ZipRecordOf("one", 10, 20, 30, other, "comment") +
        ZipRecordOf("size", ones, 20, 31, other + wide + Little(8, 2) + Little(11, 8)) +
        ZipRecordOf("packed", 10, ones, 32, wide + Little(8, 2) + Little(5000000000, 8) + other) +
        ZipRecordOf("position", 10, 20, ones, wide + Little(8, 2) + Little(6000000000, 8)) +
        ZipRecordOf("all", ones, ones, ones,
                    wide + Little(28, 2) + Little(1, 8) + Little(2, 8) + Little(3, 8) + Little(0, 4)) +
        ZipRecordOf("", 0, 0, 0);
    const auto entries = ZipEntries(ZipBytes(directory), 6);
    ASSERT_TRUE(entries);
    const struct
    {
        const char* name;
        std::uint64_t packedSize;
        std::uint64_t position;
    } expected[] = {{"one", 20, 30}, {"size", 20, 31}, {"packed", 5000000000, 32}, {"position", 20, 6000000000},
                    {"all", 2, 3},   {"", 0, 0}};
    for (std::size_t each = 0; each < entries->size(); ++each)
    {
        const ZipEntry& entry = (*entries)[each];
        EXPECT_EQ(entry.name, expected[each].name);
        EXPECT_EQ(entry.packedSize, expected[each].packedSize);
        EXPECT_EQ(entry.position, expected[each].position);
        const std::string moved = MovedZipRecord(entry, 1000 + each);
        const auto again = ZipEntries(ZipBytes(moved), 1);
        ASSERT_TRUE(again);
        EXPECT_EQ(again->front().position, 1000 + each);
        EXPECT_EQ(again->front().packedSize, entry.packedSize);
        EXPECT_EQ(MovedZipRecord(again->front(), entry.position), entry.record);
    }
}

TEST(ZipDirectoryTest, DirectoryThatIsNotWhatItIsSaidToBeIsNone)
{
    const std::string wide = Little(1, 2) + Little(8, 2) + Little(11, 8);
    const std::string one = ZipRecordOf("one", 1, 2, 3);
    ASSERT_TRUE(ZipEntries({}, 0));
    EXPECT_FALSE(ZipEntries({}, 1));
    EXPECT_FALSE(ZipEntries(ZipBytes(one), 0));
    EXPECT_FALSE(ZipEntries(ZipBytes(one), 2));
    EXPECT_FALSE(ZipEntries(ZipBytes(one + "PK"), 1));
    EXPECT_FALSE(ZipEntries(ZipBytes("x" + one), 1));
    EXPECT_FALSE(ZipEntries(ZipBytes(ZipRecordOf("one", 1, 2, 3, "", "", 1)), 1)) << "in another part";
    EXPECT_FALSE(ZipEntries(ZipBytes(ZipRecordOf("one", 1, 2, ones)), 1)) << "without the wide number";
    EXPECT_FALSE(ZipEntries(ZipBytes(ZipRecordOf("one", ones, 2, ones, wide)), 1)) << "with one of two";
    EXPECT_FALSE(ZipEntries(ZipBytes(ZipRecordOf("one", 1, ones, 1, wide.substr(0, 11))), 1)) << "cut";
    EXPECT_TRUE(ZipEntries(ZipBytes(ZipRecordOf("one", 1, 1, 1, "UT" + Little(100, 2))), 1)) << "of no matter";
}

TEST(ZipDirectoryTest, NothingOutsideIsReadHoweverItIsCut)
{
    const std::string extra = Little(1, 2) + Little(24, 2) + Little(1, 8) + Little(2, 8) + Little(3, 8);
    const std::string directory = ZipRecordOf("all", ones, ones, ones, extra, "comment");
    const std::string end = ZipEndOf(70000, 0, 0);
    for (std::size_t size = 0; size < directory.size(); ++size)
    {
        const support::GuardedText guarded(directory.substr(0, size), support::GuardedText::Touches::pageBehind);
        EXPECT_FALSE(ZipEntries(std::as_bytes(std::span(guarded.First(), size)), 1)) << size;
    }
    for (std::size_t size = 0; size < end.size(); ++size)
    {
        const support::GuardedText guarded(end.substr(end.size() - size), support::GuardedText::Touches::pageBehind);
        FindZipEnd(std::as_bytes(std::span(guarded.First(), size)), size);
    }
}

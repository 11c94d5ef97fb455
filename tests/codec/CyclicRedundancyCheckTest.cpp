#include "utility/codec/CyclicRedundancyCheck.h"

#include "tests/support/ChecksumModel.h"
#include "utility/platform/Zlib.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <numeric>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

using support::ChecksumModel;

static_assert(sizeof(CyclicRedundancyCheck) == 4);
static_assert(!std::is_polymorphic_v<CyclicRedundancyCheck>);
static_assert(std::is_trivially_copyable_v<CyclicRedundancyCheck>);
static_assert(std::is_nothrow_default_constructible_v<CyclicRedundancyCheck>);
static_assert(std::is_same_v<decltype(CyclicRedundancyCheck().Current()), DWORD>);

namespace
{

const std::string checkString = "123456789";

DWORD CheckOf(const std::string& bytes, DWORD start = 0)
{
    CyclicRedundancyCheck check(start);
    check.Incorporate(bytes.data(), static_cast<std::int64_t>(bytes.size()));
    return check.Current();
}

const DWORD beforeMain = CheckOf(checkString);

using ByteLoop = void (CyclicRedundancyCheck::*)(const unsigned char*, std::int64_t);

/// An explicit instantiation may name what is private.
template <ByteLoop loop>
struct PrivateLoop
{
    friend ByteLoop PrivateByteLoop() { return loop; }
};
ByteLoop PrivateByteLoop();
template struct PrivateLoop<&CyclicRedundancyCheck::Incorporate32>;

std::string AscendingBytes(std::size_t count)
{
    std::string bytes(count, '\0');
    std::iota(bytes.begin(), bytes.end(), static_cast<char>(1));
    return bytes;
}

}

TEST(CyclicRedundancyCheckTest, CheckStringHasTheKnownValue)
{
    EXPECT_EQ(CheckOf(checkString), 0x89A1897FU);
    EXPECT_EQ(ChecksumModel(0, checkString.data(), checkString.size()), 0x89A1897FU);
}

TEST(CyclicRedundancyCheckTest, StaticObjectMayUseItBeforeMain) { EXPECT_EQ(beforeMain, 0x89A1897FU); }

TEST(CyclicRedundancyCheckTest, SingleByteGivesItsEntryOfTheTable)
{
    EXPECT_EQ(CheckOf(std::string(1, '\0')), 0U);
    EXPECT_EQ(CheckOf("\x01"), 0x04C11DB7U);
    for (int byte = 0; byte < 256; ++byte)
    {
        const std::string one(1, static_cast<char>(byte));
        EXPECT_EQ(CheckOf(one), ChecksumModel(0, one.data(), 1));
    }
}

TEST(CyclicRedundancyCheckTest, CountOfZeroLeavesTheValueAndThePointerUnread)
{
    CyclicRedundancyCheck check(0x12345678);
    check.Incorporate(nullptr, 0);
    EXPECT_EQ(check.Current(), 0x12345678U);
    check.Incorporate(reinterpret_cast<const void*>(1), 0);
    EXPECT_EQ(check.Current(), 0x12345678U);
}

TEST(CyclicRedundancyCheckTest, EveryLengthFromEveryStartGivesWhatSingleBitsGive)
{
    const std::string bytes = AscendingBytes(1100);
    for (std::size_t count = 0; count <= bytes.size(); ++count)
    {
        for (const DWORD start : {0U, 5U, 0xFFFFFFFFU})
            ASSERT_EQ(CheckOf(bytes.substr(0, count), start), ChecksumModel(start, bytes.data(), count)) << count;
    }
}

TEST(CyclicRedundancyCheckTest, TwoCallsAtAnySplitGiveTheSameAsOne)
{
    const std::string bytes = AscendingBytes(200);
    const DWORD whole = CheckOf(bytes);
    for (std::size_t split = 0; split <= bytes.size(); ++split)
        EXPECT_EQ(CheckOf(bytes.substr(split), CheckOf(bytes.substr(0, split))), whole) << split;
}

TEST(CyclicRedundancyCheckTest, EqualValuesCompareEqualWhateverLedToThem)
{
    CyclicRedundancyCheck folded;
    folded.Incorporate(checkString.data(), 9);
    const CyclicRedundancyCheck given(0x89A1897F);
    EXPECT_TRUE(folded == given);
    EXPECT_FALSE(folded != given);
    EXPECT_FALSE(folded == CyclicRedundancyCheck());
    EXPECT_TRUE(folded != CyclicRedundancyCheck());
    EXPECT_TRUE(CyclicRedundancyCheck(0) == CyclicRedundancyCheck());
}

TEST(CyclicRedundancyCheckTest, ClearedIsDeliberatelyZeroWhateverTheStart)
{
    CyclicRedundancyCheck check(5);
    EXPECT_EQ(check.Current(), 5U);
    check.clear();
    EXPECT_EQ(check.Current(), 0U);
    check.Incorporate(checkString.data(), 9);
    EXPECT_EQ(check.Current(), 0x89A1897FU);
}

TEST(CyclicRedundancyCheckTest, ZeroBytesAheadChangeNothingFromZero)
{
    for (const std::size_t zeros : {1U, 7U, 16U, 64U, 1000U})
    {
        EXPECT_EQ(CheckOf(std::string(zeros, '\0')), 0U);
        EXPECT_EQ(CheckOf(std::string(zeros, '\0') + checkString), 0x89A1897FU);
    }
    EXPECT_NE(CheckOf(std::string(1, '\0'), 1), 1U);
}

TEST(CyclicRedundancyCheckTest, CopiesGoOnByThemselves)
{
    CyclicRedundancyCheck first;
    first.Incorporate(checkString.data(), 4);
    CyclicRedundancyCheck copy(first);
    CyclicRedundancyCheck assigned(7);
    EXPECT_EQ(&(assigned = first), &assigned);
    copy.Incorporate(checkString.data() + 4, 5);
    assigned.Incorporate(checkString.data() + 4, 5);
    EXPECT_EQ(copy.Current(), 0x89A1897FU);
    EXPECT_EQ(assigned.Current(), 0x89A1897FU);
    EXPECT_EQ(first.Current(), ChecksumModel(0, "1234", 4));
}

TEST(CyclicRedundancyCheckTest, PrivateLoopThatNothingCallsGivesTheSame)
{
    const std::string bytes = AscendingBytes(100);
    CyclicRedundancyCheck check(9);
    (check.*PrivateByteLoop())(reinterpret_cast<const unsigned char*>(bytes.data()), 100);
    EXPECT_EQ(check.Current(), CheckOf(bytes, 9));
}

TEST(CyclicRedundancyCheckTest, IsNotTheChecksumOfZlib)
{
    const DWORD ofZlib = utility::platform::Zlib().Checksum(0, checkString.data(), 9);
    EXPECT_EQ(ofZlib, 0xCBF43926U);
    EXPECT_NE(CheckOf(checkString), ofZlib);
}

TEST(CyclicRedundancyCheckTest, ThreadsMayHaveChecksOfTheirOwn)
{
    const std::string bytes = AscendingBytes(5000);
    const DWORD expected = ChecksumModel(0, bytes.data(), bytes.size());
    std::vector<DWORD> results(4);
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (DWORD& result : results)
    {
        threads.emplace_back(
            [&]
            {
                CyclicRedundancyCheck check;
                for (std::size_t done = 0; done < bytes.size(); done += 50)
                    check.Incorporate(bytes.data() + done, 50);
                result = check.Current();
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(results, std::vector<DWORD>(4, expected));
}

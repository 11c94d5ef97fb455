#include "utility/codec/internal/ChecksumMethods.h"

#include "tests/support/ChecksumModel.h"
#include "tests/support/ForcedMethod.h"
#include "tests/support/GuardedText.h"
#include "tests/support/MethodTest.h"
#include "utility/codec/CyclicRedundancyCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using support::ChecksumModel;
using utility::detail::checksumBlock;
using utility::detail::checksumMethods;

namespace
{

/// A method by its name.
class ChecksumMethodTest : public support::MethodTest<checksumMethods>
{
protected:
    ChecksumMethodTest() : m_bytes(1U << 13)
    {
        for (unsigned char& byte : m_bytes)
            byte = static_cast<unsigned char>(m_random());
    }

    DWORD Random() { return static_cast<DWORD>(m_random()); }

    /// As the check does it: what is too short for the method goes byte by byte.
    DWORD Fold(DWORD value, const unsigned char* data, std::size_t count) const
    {
        return count >= checksumBlock ? m_method->fold(value, data, count) : ChecksumModel(value, data, count);
    }

    /// Folds every length up to this one, starting at `data`, and compares with single bytes.
    void ExpectEveryLength(const unsigned char* data, std::size_t longest, DWORD start) const
    {
        DWORD expected = start;
        for (std::size_t count = 0; count <= longest; expected = ChecksumModel(expected, data + count++, 1))
            ASSERT_EQ(Fold(start, data, count), expected) << count << " bytes after " << start;
    }

    std::mt19937 m_random{20'000'017};
    std::vector<unsigned char> m_bytes;
};

}

INSTANTIATE_TEST_SUITE_P(By, ChecksumMethodTest, testing::Values("512 bits", "256 bits", "128 bits", "slicing"),
                         support::NameOfMethod);

TEST_P(ChecksumMethodTest, EveryLengthAtEveryAlignmentGivesWhatSingleBytesGive)
{
    const auto past = reinterpret_cast<std::uintptr_t>(m_bytes.data()) % 64;
    for (std::size_t alignment = 0; alignment < 64; ++alignment)
        ExpectEveryLength(m_bytes.data() + 64 - past + alignment, 1025, Random());
}

TEST_P(ChecksumMethodTest, EverySplitGivesTheSame)
{
    const DWORD start = Random();
    DWORD expected = start;
    for (std::size_t count = 0; count <= 1025; expected = ChecksumModel(expected, &m_bytes[count++], 1))
    {
        for (std::size_t split = 0; split <= count; ++split)
        {
            const DWORD first = Fold(start, m_bytes.data(), split);
            ASSERT_EQ(Fold(first, m_bytes.data() + split, count - split), expected) << split << " of " << count;
        }
    }
}

TEST_P(ChecksumMethodTest, LongerBlocksGiveWhatSingleBytesGive)
{
    ExpectEveryLength(m_bytes.data(), m_bytes.size() - 1, Random());
}

TEST_P(ChecksumMethodTest, EachBitOfTheRegisterAndOfTheBytesCounts)
{
    const std::vector<unsigned char> zeros(300);
    std::vector<unsigned char> bytes = zeros;
    for (const std::size_t count : {16U, 17U, 63U, 64U, 65U, 300U})
    {
        for (int bit = 0; bit < 32; ++bit)
            EXPECT_EQ(m_method->fold(1U << bit, zeros.data(), count), ChecksumModel(1U << bit, zeros.data(), count));
        for (std::size_t bit = 0; bit < 8 * count; ++bit)
        {
            bytes[bit / 8] = static_cast<unsigned char>(1U << bit % 8);
            EXPECT_EQ(m_method->fold(0, bytes.data(), count), ChecksumModel(0, bytes.data(), count)) << bit;
            bytes[bit / 8] = 0;
        }
    }
}

TEST_P(ChecksumMethodTest, NothingOutsideTheBytesIsRead)
{
    // Whole pages: the text touches both of those around it.
    const support::GuardedText text(std::string_view(reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size()),
                                    support::GuardedText::Touches::pageBehind);
    const auto* const first = reinterpret_cast<const unsigned char*>(text.First());
    const auto* const end = first + m_bytes.size();
    for (std::size_t count = checksumBlock; count <= 2200; ++count)
    {
        ASSERT_EQ(m_method->fold(0, first, count), m_method->fold(0, m_bytes.data(), count));
        ASSERT_EQ(m_method->fold(0, end - count, count),
                  m_method->fold(0, m_bytes.data() + m_bytes.size() - count, count));
    }
}

TEST_P(ChecksumMethodTest, CheckThatTakesItLeavesShorterBlocksAlone)
{
    const support::ForcedMethod forced(checksumMethods, *m_method);
    const support::GuardedText text(std::string_view(reinterpret_cast<const char*>(m_bytes.data()), m_bytes.size()),
                                    support::GuardedText::Touches::pageBehind);
    for (std::size_t count = 0; count <= 100; ++count)
    {
        for (const char* const bytes : {text.First(), text.Last() + 1 - count})
        {
            CyclicRedundancyCheck check;
            check.Incorporate(bytes, static_cast<std::int64_t>(count));
            EXPECT_EQ(check.Current(), ChecksumModel(0, bytes, count));
        }
    }
}

TEST(ChecksumMethodsTest, LastOneIsSupportedEverywhere)
{
    EXPECT_TRUE(checksumMethods.All().back().isSupported());
    EXPECT_EQ(checksumMethods.All().back().name, std::string("slicing"));
}

TEST(ChecksumMethodsTest, FirstThatTheProcessorHasIsInUse) { support::ExpectFastestInUse(checksumMethods); }

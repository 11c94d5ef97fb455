#include "utility/platform/Memory.h"

#include "utility/memory/MemoryReport.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <vector>

using utility::platform::Memory;
using utility::platform::MemoryRegion;

namespace
{

struct Sizes
{
    Sizes() { GetVirtualAddressSpaceInformation(committed, reserved, free, largestFree); }

    std::size_t committed;
    std::size_t reserved;
    std::size_t free;
    std::size_t largestFree;
};

MEMORYSTATUSEX Status()
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    EXPECT_TRUE(QLMMemoryStatus(&status));
    return status;
}

}

TEST(MemoryTest, StatusFiguresFitTogether)
{
    const MEMORYSTATUSEX status = Status();
    EXPECT_EQ(status.dwLength, 64u);
    EXPECT_GT(status.ullTotalPhys, 0u);
    EXPECT_GT(status.ullAvailPhys, 0u);
    EXPECT_LE(status.ullAvailPhys, status.ullTotalPhys);
    EXPECT_LE(status.ullAvailPageFile, status.ullTotalPageFile);
    EXPECT_GT(status.ullTotalVirtual, 0u);
    EXPECT_LT(status.ullAvailVirtual, status.ullTotalVirtual);
    EXPECT_LE(status.dwMemoryLoad, 100u);
    EXPECT_LE(QLMMemoryLoad(), 100u);
}

TEST(MemoryTest, StatusForAnotherLengthIsRefused)
{
    MEMORYSTATUSEX status{};
    status.dwLength = 32;
    EXPECT_FALSE(QLMMemoryStatus(&status));
    EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(MemoryTest, RegionsFollowOneAnotherFromTheFirstAddressToTheEnd)
{
    const std::uint64_t end = Status().ullTotalVirtual;
    const auto space = Memory().OpenAddressSpace();
    std::uint64_t address = 0;
    for (MemoryRegion region{}; address < end; address += region.size)
    {
        ASSERT_TRUE(space->RegionAt(address, region)) << std::hex << address;
        ASSERT_GT(region.size, 0u);
        ASSERT_TRUE(region.state == MEM_COMMIT || region.state == MEM_RESERVE || region.state == MEM_FREE);
    }
    // The first free region beyond the last address in use may reach a little further.
    EXPECT_LT(address - end, 0x100000u);
}

TEST(MemoryTest, AddressBehindTheLastIsRefused)
{
    MemoryRegion region{7, 7};
    EXPECT_FALSE(Memory().OpenAddressSpace()->RegionAt(std::uint64_t{1} << 60, region));
    EXPECT_EQ(region.size, 7u);
    EXPECT_EQ(region.state, 7u);
}

TEST(MemoryTest, RegionOfAVariableIsCommitted)
{
    int variable = 0;
    const auto address = reinterpret_cast<std::uintptr_t>(&variable);
    MemoryRegion region{};
    ASSERT_TRUE(Memory().OpenAddressSpace()->RegionAt(address, region));
    EXPECT_EQ(region.state, static_cast<DWORD>(MEM_COMMIT));
    EXPECT_GE(region.size, sizeof(variable));
}

TEST(MemoryTest, SumOfAllRegionsIsTheAddressSpace)
{
    const std::uint64_t end = Status().ullTotalVirtual;
    const Sizes sizes;
    EXPECT_NEAR(static_cast<double>(sizes.committed + sizes.reserved + sizes.free), static_cast<double>(end), 0x100000);
    EXPECT_GT(sizes.committed, 0u);
    EXPECT_GT(sizes.largestFree, 0u);
    EXPECT_LE(sizes.largestFree, sizes.free);
}

TEST(MemoryTest, FreshBlockIsCommittedAndNoLongerFree)
{
    constexpr std::size_t size = std::size_t{64} << 20;
    constexpr std::size_t others = std::size_t{4} << 20; // what else may change meanwhile
    const Sizes before;
    const std::vector<char> block(size, 'x');
    const Sizes after;
    EXPECT_GE(after.committed + others, before.committed + size);
    EXPECT_LE(after.free, before.free - size + others);
    EXPECT_EQ(block[size / 2], 'x');
}

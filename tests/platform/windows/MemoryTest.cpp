#include "utility/memory/MemoryReport.h"

#include <gtest/gtest.h>

namespace
{

std::size_t Reserved()
{
    std::size_t committed, reserved, free, largestFree;
    GetVirtualAddressSpaceInformation(committed, reserved, free, largestFree);
    return reserved;
}

}

TEST(WindowsMemoryTest, ReservedAddressesAreReserved)
{
    constexpr std::size_t size = std::size_t{64} << 20;
    const std::size_t before = Reserved();
    void* const block = ::VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(Reserved(), before + size);
    ::VirtualFree(block, 0, MEM_RELEASE);
    EXPECT_EQ(Reserved(), before);
}

TEST(WindowsMemoryTest, HeapOfTheProcessFragmentsLittleWhenAsked)
{
    EXPECT_TRUE(UseLowFragmentationHeap(::GetProcessHeap()));
}

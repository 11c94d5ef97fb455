#include "utility/memory/MemoryReport.h"

#include "tests/support/windows/ImportedCall.h"

#include <gtest/gtest.h>

extern "C" decltype(&::HeapSetInformation) __imp_HeapSetInformation;

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

TEST(WindowsMemoryTest, LowFragmentationIsAskedOfTheHeapByItsNumber)
{
    static HANDLE asked = nullptr;
    static int option = -1;
    static ULONG value = 0;
    const auto record = [](HANDLE heap, HEAP_INFORMATION_CLASS given, void* data, SIZE_T size) -> BOOL
    {
        asked = heap;
        option = given;
        value = size == sizeof(value) ? *static_cast<ULONG*>(data) : 0;
        return TRUE;
    };
    const support::ImportedCall call(__imp_HeapSetInformation, record);
    UseLowFragmentationHeap(::GetProcessHeap());
    EXPECT_EQ(asked, ::GetProcessHeap());
    EXPECT_EQ(option, 0);
    EXPECT_EQ(value, 2u);
}

#include "utility/memory/MemoryReport.h"

#include "tests/support/GlobalLocale.h"
#include "tests/support/RecordingDebugger.h"
#include "tests/support/TableMemory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace
{

using Texts = std::vector<std::string>;

constexpr std::uint64_t gibibyte = std::uint64_t{1} << 30;

class MemoryReportTest : public ::testing::Test
{
protected:
    struct Sizes
    {
        std::size_t committed = 99;
        std::size_t reserved = 99;
        std::size_t free = 99;
        std::size_t largestFree = 99;
        bool operator==(const Sizes&) const = default;
    };

    static Sizes Information()
    {
        Sizes sizes;
        GetVirtualAddressSpaceInformation(sizes.committed, sizes.reserved, sizes.free, sizes.largestFree);
        return sizes;
    }

    support::TableMemory m_memory;
    support::RecordingDebugger m_debugger;
};

struct Load
{
    const char* name;
    std::uint64_t totalPhysical;
    std::uint64_t freePhysical;
    std::uint64_t totalPageFile;
    std::uint64_t freePageFile;
    std::uint64_t totalVirtual;
    std::uint64_t freeVirtual;
    DWORD expected;
};

class MemoryLoadTest : public MemoryReportTest, public ::testing::WithParamInterface<Load>
{
};

}

TEST_F(MemoryReportTest, WalkSendsAHeadingARowForEachRegionAndTheFreeMemory)
{
    m_memory.Add(0x10000, MEM_FREE);
    m_memory.Add(0x10000, MEM_COMMIT);
    WalkAddressSpace();
    EXPECT_EQ(m_debugger.wide, std::vector<std::wstring>{L"Start      End        Size       State\n"
                                                         L"--------------------------------------\n"});
    EXPECT_EQ(m_debugger.narrow,
              (Texts{"0x00000000 0x0000ffff 0x00010000 MEM_FREE\n", "0x00010000 0x0001ffff 0x00010000 MEM_COMMIT\n",
                     "Total free memory: 0x10000 [65536] bytes\n", "Largest free block: 0x10000 [65536] bytes\n"}));
}

TEST_F(MemoryReportTest, AddressesAbove32BitsArePrintedInFull)
{
    m_memory.Add(0x7FFE0000ABC00000, MEM_FREE);
    m_memory.Add(0x1000, MEM_RESERVE);
    WalkAddressSpace();
    EXPECT_EQ(m_debugger.narrow, (Texts{"0x00000000 0x7ffe0000abbfffff 0x7ffe0000abc00000 MEM_FREE\n",
                                        "0x7ffe0000abc00000 0x7ffe0000abc00fff 0x00001000 MEM_RESERVE\n",
                                        "Total free memory: 0x7ffe0000abc00000 [9222809089782841344] bytes\n",
                                        "Largest free block: 0x7ffe0000abc00000 [9222809089782841344] bytes\n"}));
}

TEST_F(MemoryReportTest, IsTheSameUnderAGlobalLocaleThatGroupsDigits)
{
    m_memory.Add(0x7FFE0000ABC00000, MEM_FREE);
    const support::GlobalLocale scope(support::GroupingLocale());
    WalkAddressSpace();
    EXPECT_EQ(m_debugger.narrow, (Texts{"0x00000000 0x7ffe0000abbfffff 0x7ffe0000abc00000 MEM_FREE\n",
                                        "Total free memory: 0x7ffe0000abc00000 [9222809089782841344] bytes\n",
                                        "Largest free block: 0x7ffe0000abc00000 [9222809089782841344] bytes\n"}));
}

TEST_F(MemoryReportTest, StateWithoutANamePrintsNone)
{
    m_memory.Add(0x1000, 0x4000);
    WalkAddressSpace();
    EXPECT_EQ(m_debugger.narrow.front(), "0x00000000 0x00000fff 0x00001000 \n");
}

TEST_F(MemoryReportTest, LargestFreeBlockIsTheLargestOfSeveral)
{
    for (const std::uint64_t size : {0x2000u, 0x9000u, 0x1000u})
    {
        m_memory.Add(size, MEM_FREE);
        m_memory.Add(0x1000, MEM_COMMIT);
    }
    WalkAddressSpace();
    EXPECT_EQ(m_debugger.narrow.at(6), "Total free memory: 0xc000 [49152] bytes\n");
    EXPECT_EQ(m_debugger.narrow.at(7), "Largest free block: 0x9000 [36864] bytes\n");
}

TEST_F(MemoryReportTest, LargestFreeBlockIsZeroWhereNothingIsFree)
{
    m_memory.Add(0x1000, MEM_COMMIT);
    WalkAddressSpace();
    EXPECT_EQ(m_debugger.narrow.at(1), "Total free memory: 0x0 [0] bytes\n");
    EXPECT_EQ(m_debugger.narrow.at(2), "Largest free block: 0x0 [0] bytes\n");
    EXPECT_EQ(Information(), (Sizes{0x1000, 0, 0, 0}));
}

TEST_F(MemoryReportTest, RegionThatTheSystemDoesNotTellOfCountsAsOneMoreLikeTheLast)
{
    m_memory.Add(0x1000, MEM_RESERVE);
    m_memory.Add(0x1000, MEM_FREE);
    m_memory.Add(0x1000, MEM_COMMIT);
    m_memory.failing = {0x1000};
    WalkAddressSpace();
    EXPECT_EQ(m_debugger.narrow.at(1), "0x00001000 0x00001fff 0x00001000 MEM_RESERVE\n");
    EXPECT_EQ(Information(), (Sizes{0x1000, 0x2000, 0, 0}));
}

TEST_F(MemoryReportTest, WalkEndsWhereNotEvenTheFirstRegionIsTold)
{
    m_memory.Add(0x1000, MEM_COMMIT);
    m_memory.failing = {0};
    WalkAddressSpace();
    EXPECT_EQ(m_debugger.narrow.front(), "0x00000000 0x00000fff 0x00001000 \n");
    EXPECT_EQ(Information(), (Sizes{0, 0, 0, 0}));
}

TEST_F(MemoryReportTest, RegionThatReachesBeyondTheBoundCountsWhole)
{
    m_memory.Add(0x1000, MEM_COMMIT);
    m_memory.Add(0x9000, MEM_FREE);
    m_memory.status.ullTotalVirtual = 0x1001;
    EXPECT_EQ(Information(), (Sizes{0x1000, 0, 0x9000, 0x9000}));
}

TEST_F(MemoryReportTest, InformationAddsUpTheStatesAndPrintsNothing)
{
    m_memory.Add(0x1000, MEM_FREE);
    m_memory.Add(0x2000, MEM_COMMIT);
    m_memory.Add(0x4000, MEM_FREE);
    m_memory.Add(0x8000, MEM_RESERVE);
    m_memory.Add(0x10000, MEM_COMMIT);
    m_memory.Add(0x20000, MEM_RESERVE);
    m_memory.Add(0x40000, 0x4000);
    EXPECT_EQ(Information(), (Sizes{0x12000, 0x28000, 0x5000, 0x4000}));
    EXPECT_EQ(m_debugger.wide.size() + m_debugger.narrow.size(), 0u);
}

TEST_F(MemoryReportTest, WithoutAddressSpaceThereIsNoWalk)
{
    EXPECT_EQ(Information(), (Sizes{0, 0, 0, 0}));
    WalkAddressSpace();
    EXPECT_EQ(m_debugger.narrow.size(), 2u);
}

TEST_F(MemoryReportTest, StatusThatFailsIsNotTold)
{
    m_memory.Add(0x1000, MEM_FREE);
    m_memory.status.ullAvailVirtual = 0x1000;
    m_memory.statusFails = true;
    EXPECT_EQ(GetAvailVirtualMemory(), 0u);
    EXPECT_EQ(QLMMemoryLoad(), 0u);
    EXPECT_EQ(Information(), (Sizes{0, 0, 0, 0}));
}

TEST_F(MemoryReportTest, AvailableVirtualMemoryIsTheStatusFigure)
{
    m_memory.status.ullAvailVirtual = 0x123456789000;
    EXPECT_EQ(GetAvailVirtualMemory(), 0x123456789000u);
    EXPECT_EQ(m_memory.askedLength, 64u);
}

TEST_F(MemoryReportTest, StatusIsThatOfTheSystemForTheLengthTheCallerSet)
{
    MEMORYSTATUSEX status{};
    status.dwLength = 12;
    m_memory.status.ullTotalPhys = 7;
    EXPECT_TRUE(QLMMemoryStatus(&status));
    EXPECT_EQ(m_memory.askedLength, 12u);
    EXPECT_EQ(status.ullTotalPhys, 7u);
    m_memory.statusFails = true;
    EXPECT_FALSE(QLMMemoryStatus(&status));
    EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_GEN_FAILURE));
}

TEST_F(MemoryReportTest, LowFragmentationHeapIsAskedOfTheSystem)
{
    int heap = 0;
    EXPECT_FALSE(UseLowFragmentationHeap(&heap));
    EXPECT_EQ(m_memory.askedHeap, &heap);
    m_memory.lowFragmentation = true;
    EXPECT_TRUE(UseLowFragmentationHeap(&heap));
}

TEST_P(MemoryLoadTest, IsThePercentageInUse)
{
    const Load& load = GetParam();
    m_memory.status.ullTotalPhys = load.totalPhysical;
    m_memory.status.ullAvailPhys = load.freePhysical;
    m_memory.status.ullTotalPageFile = load.totalPageFile;
    m_memory.status.ullAvailPageFile = load.freePageFile;
    m_memory.status.ullTotalVirtual = load.totalVirtual;
    m_memory.status.ullAvailVirtual = load.freeVirtual;
    EXPECT_EQ(QLMMemoryLoad(), load.expected);
    EXPECT_EQ(m_memory.statusQueries, 1);
}

INSTANTIATE_TEST_SUITE_P(Figures, MemoryLoadTest,
                         ::testing::Values(Load{"PhysicalAndPageFileTogether", 16 * gibibyte, 4 * gibibyte,
                                                32 * gibibyte, 8 * gibibyte, 131072 * gibibyte, 131000 * gibibyte, 75},
                                           Load{"FreeShareIsRoundedDown", 1000, 334, 0, 0, 9000, 9000, 67},
                                           Load{"AllIsFree", 100, 100, 50, 50, 9000, 9000, 0}, //
                                           Load{"NothingIsFree", 100, 0, 50, 0, 9000, 9000, 100},
                                           Load{"AlmostAllIsFree", 100000, 99999, 0, 0, 900000, 900000, 1},
                                           Load{"AddressSpaceCapsBoth", 1000, 1000, 1000, 1000, 400, 100, 75},
                                           Load{"AddressSpaceCapsTheTotalAlone", 1000, 10, 0, 0, 200, 150, 95},
                                           Load{"AddressSpaceCapsWhatIsAvailableAlone", 1000, 900, 0, 0, 5000, 300, 70},
                                           Load{"PageFileAlone", 0, 0, 200, 50, 9000, 9000, 75},
                                           Load{"NothingAtAll", 0, 0, 0, 0, 0, 0, 0}),
                         [](const auto& tested) { return tested.param.name; });

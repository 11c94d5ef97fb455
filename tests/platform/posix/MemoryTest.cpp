#include "utility/memory/MemoryReport.h"

#include "tests/support/GlobalLocale.h"
#include "tests/support/posix/Child.h"
#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/memory/NewHandler.h"
#include "utility/platform/Error.h"
#include "utility/platform/Memory.h"
#include "utility/platform/posix/memory/MemoryFigures.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

using support::Child;
using utility::platform::posix::MachineMemory;
using utility::platform::posix::MemoryFigures;
using utility::platform::posix::ReadMachineMemory;

namespace
{

constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20;

std::size_t Reserved()
{
    std::size_t committed = 0;
    std::size_t reserved = 0;
    std::size_t free = 0;
    std::size_t largestFree = 0;
    GetVirtualAddressSpaceInformation(committed, reserved, free, largestFree);
    return reserved;
}

/// Files of the kernel, as a test writes them: a machine of 16 GiB with 8 GiB available, and swap of 4 GiB and 3 GiB.
class MachineMemoryTest : public ::testing::Test
{
protected:
    MachineMemoryTest()
    {
        Write("proc/meminfo", "MemTotal:       16777216 kB\nMemFree:          100000 kB\nMemAvailable:    8388608 kB\n"
                              "Buffers: 0 kB\nSwapTotal:       4194304 kB\nSwapFree:        3145728 kB\n"
                              "HugePages_Total:       0\n");
    }

    void Write(const std::string& path, const std::string& text) const
    {
        boost::filesystem::create_directories((m_root / path.c_str()).parent_path());
        m_root.File(path.c_str(), text);
    }

    /// In MiB: physical total and available, swap total and available.
    std::vector<std::uint64_t> Read() const
    {
        const MachineMemory memory = ReadMachineMemory(m_root.Path().string());
        return {memory.physical.total / mebibyte, memory.physical.available / mebibyte, memory.swap.total / mebibyte,
                memory.swap.available / mebibyte};
    }

    static std::string Bytes(std::uint64_t mebibytes) { return std::to_string(mebibytes * mebibyte) + "\n"; }

    const std::vector<std::uint64_t> m_machine{16384, 8192, 4096, 3072};
    const support::TemporaryFolder m_root;
};

/// An outcome of a child whose address space is limited.
int WithAddressSpaceOf(std::uint64_t size, const std::function<int()>& work)
{
    Child child(
        [&]
        {
            const rlimit limit{size, size};
            return ::setrlimit(RLIMIT_AS, &limit) == 0 ? work() : 99;
        });
    return child.ExitCode();
}

std::uint64_t AddressSpaceInUse()
{
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    QLMMemoryStatus(&status);
    return status.ullTotalVirtual - status.ullAvailVirtual;
}

}

TEST(PosixMemoryTest, AddressesThatMayNotBeTouchedAreReservedAndNoLongerAvailable)
{
    constexpr std::size_t size = 64 * mebibyte;
    constexpr double others = 4 * mebibyte; // what else may change meanwhile
    const std::size_t before = Reserved();
    const std::size_t availableBefore = GetAvailVirtualMemory();
    void* const block = ::mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(block, MAP_FAILED);
    EXPECT_NEAR(static_cast<double>(Reserved()), static_cast<double>(before + size), others);
    EXPECT_LT(GetAvailVirtualMemory(), availableBefore - size / 2);
    ::munmap(block, size);
    EXPECT_NEAR(static_cast<double>(Reserved()), static_cast<double>(before), others);
}

TEST(PosixMemoryTest, FiguresAreTheSameUnderAGlobalLocaleThatGroupsDigitsByBlanks)
{
    const std::uint64_t inUse = AddressSpaceInUse();
    const std::size_t reserved = Reserved();
    const support::GlobalLocale scope(support::GroupingLocale(' '));
    EXPECT_NEAR(static_cast<double>(AddressSpaceInUse()), static_cast<double>(inUse), 4 * mebibyte);
    EXPECT_NEAR(static_cast<double>(Reserved()), static_cast<double>(reserved), 4 * mebibyte);
}

TEST(PosixMemoryTest, ThereIsNoHeapThatFragmentsLittle)
{
    EXPECT_FALSE(UseLowFragmentationHeap(nullptr));
    EXPECT_EQ(utility::platform::LastError(), ERROR_NOT_SUPPORTED);
}

TEST(PosixMemoryTest, LimitOnTheAddressSpaceLimitsEverythingButItsRange)
{
    const std::uint64_t limit = AddressSpaceInUse() + 256 * mebibyte;
    const auto check = [limit]
    {
        MEMORYSTATUSEX status{};
        status.dwLength = sizeof(status);
        if (!QLMMemoryStatus(&status))
            return 1;
        // The child itself maps a little.
        if (status.ullAvailVirtual > 256 * mebibyte || status.ullAvailVirtual < 200 * mebibyte)
            return 2;
        if (status.ullTotalPhys + status.ullTotalPageFile > limit)
            return 3;
        if (status.ullAvailPhys + status.ullAvailPageFile > status.ullAvailVirtual)
            return 4;
        return status.ullTotalVirtual == 0x7FFFFFFFF000 ? 0 : 5;
    };
    EXPECT_EQ(WithAddressSpaceOf(limit, check), 0);
}

TEST_F(MachineMemoryTest, IsTheMachinesWithoutGroups) { EXPECT_EQ(Read(), m_machine); }

TEST_F(MachineMemoryTest, IsTheSameUnderAGlobalLocaleThatGroupsDigitsByBlanks)
{
    Write("proc/self/cgroup", "0::/\n");
    Write("sys/fs/cgroup/memory.max", std::to_string(2048 * mebibyte) + " \n");
    Write("sys/fs/cgroup/memory.current", std::to_string(1500 * mebibyte) + " \n");
    const support::GlobalLocale scope(support::GroupingLocale(' '));
    EXPECT_EQ(Read(), (std::vector<std::uint64_t>{2048, 548, 4096, 3072}));
}

TEST_F(MachineMemoryTest, GroupsWithoutLimitsChangeNothing)
{
    Write("proc/self/cgroup", "0::/user/app\n");
    Write("sys/fs/cgroup/user/app/memory.max", "max\n");
    Write("sys/fs/cgroup/user/app/memory.current", Bytes(100));
    Write("sys/fs/cgroup/user/app/memory.swap.max", "max\n");
    Write("sys/fs/cgroup/user/app/memory.swap.current", Bytes(0));
    EXPECT_EQ(Read(), m_machine);
}

TEST_F(MachineMemoryTest, GroupsLimitMemoryAndSwap)
{
    Write("proc/self/cgroup", "0::/user/app\n");
    Write("sys/fs/cgroup/user/app/memory.max", Bytes(2048));
    Write("sys/fs/cgroup/user/app/memory.current", Bytes(1500));
    Write("sys/fs/cgroup/user/app/memory.swap.max", Bytes(512));
    Write("sys/fs/cgroup/user/app/memory.swap.current", Bytes(12));
    EXPECT_EQ(Read(), (std::vector<std::uint64_t>{2048, 548, 512, 500}));
}

TEST_F(MachineMemoryTest, TightestGroupOnTheWayUpCounts)
{
    Write("proc/self/cgroup", "0::/user/app\n");
    Write("sys/fs/cgroup/user/app/memory.max", Bytes(4096));
    Write("sys/fs/cgroup/user/app/memory.current", Bytes(100));
    Write("sys/fs/cgroup/user/memory.max", Bytes(5000));
    Write("sys/fs/cgroup/user/memory.current", Bytes(4800));
    EXPECT_EQ(Read(), (std::vector<std::uint64_t>{4096, 200, 4096, 3072}));
}

TEST_F(MachineMemoryTest, LimitAboveWhatTheMachineHasLeavesWhatItHas)
{
    Write("proc/self/cgroup", "0::/\n");
    Write("sys/fs/cgroup/memory.max", Bytes(65536));
    Write("sys/fs/cgroup/memory.current", Bytes(1));
    EXPECT_EQ(Read(), m_machine);
}

TEST_F(MachineMemoryTest, FileContentsThatNobodyUsedLatelyAreAvailable)
{
    Write("proc/self/cgroup", "0::/app\n");
    Write("sys/fs/cgroup/app/memory.max", Bytes(2048));
    Write("sys/fs/cgroup/app/memory.current", Bytes(1500));
    Write("sys/fs/cgroup/app/memory.stat", "anon 1\nfile 2\ninactive_file " + Bytes(400) + "active_file 7\n");
    EXPECT_EQ(Read(), (std::vector<std::uint64_t>{2048, 948, 4096, 3072}));
}

TEST_F(MachineMemoryTest, UsageAboveTheLimitLeavesNothing)
{
    Write("proc/self/cgroup", "0::/app\n");
    Write("sys/fs/cgroup/app/memory.max", Bytes(2048));
    Write("sys/fs/cgroup/app/memory.current", Bytes(2049));
    EXPECT_EQ(Read().at(1), 0u);
}

TEST_F(MachineMemoryTest, GroupOfAContainerIsFoundWhereItIsMounted)
{
    Write("proc/self/cgroup", "0::/docker/0123456789ab\n");
    Write("sys/fs/cgroup/memory.max", Bytes(1024));
    Write("sys/fs/cgroup/memory.current", Bytes(24));
    EXPECT_EQ(Read(), (std::vector<std::uint64_t>{1024, 1000, 4096, 3072}));
}

TEST_F(MachineMemoryTest, FirstVersionsGroupsLimitMemory)
{
    Write("proc/self/cgroup", "12:cpu,cpuacct:/other\n4:hugetlb,memory:/user/app\n1:name=systemd:/\n0::/\n");
    Write("sys/fs/cgroup/memory/memory.limit_in_bytes", "9223372036854771712\n");
    Write("sys/fs/cgroup/memory/memory.usage_in_bytes", Bytes(9000));
    Write("sys/fs/cgroup/memory/user/app/memory.limit_in_bytes", Bytes(2048));
    Write("sys/fs/cgroup/memory/user/app/memory.usage_in_bytes", Bytes(1500));
    Write("sys/fs/cgroup/memory/user/app/memory.stat", "inactive_file 0\ntotal_inactive_file " + Bytes(100));
    EXPECT_EQ(Read(), (std::vector<std::uint64_t>{2048, 648, 4096, 3072}));
}

TEST_F(MachineMemoryTest, DamagedListOfGroupsChangesNothing)
{
    Write("proc/self/cgroup", "\n:\n::\n0\n0::no/slash/in/front\nx:memory\n4:memory:\n0::////\n");
    EXPECT_EQ(Read(), m_machine);
}

TEST(MachineMemoryFilesTest, AreZeroWhereThereAreNone)
{
    const support::TemporaryFolder root;
    const MachineMemory memory = ReadMachineMemory(root.Path().string());
    EXPECT_EQ(memory.physical.total, 0u);
    EXPECT_EQ(memory.swap.total, 0u);
}

TEST(PosixMemoryTest, FiguresAreToldWholeOrNotAtAllWhicheverAllocationFails)
{
    bool fails = true;
    for (int at = 1; fails; ++at)
    {
        const support::FailingCall failing("operator new", ENOMEM, at);
        MEMORYSTATUSEX status = {};
        status.dwLength = sizeof(status);
        const bool isTold = utility::platform::Memory().Status(status);
        fails = failing.HasFailed();
        EXPECT_NE(isTold, fails) << at;
        EXPECT_TRUE(isTold || utility::platform::LastError() == ERROR_NOT_ENOUGH_MEMORY) << at;
        EXPECT_EQ(status.ullTotalPhys != 0, isTold) << at;
    }
}

// The sanitizers need a descriptor to look at an object, and their own memory ends the process when there is none left.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(PosixMemoryTest, WithoutADescriptorNothingIsTold)
{
    Child child(
        []
        {
            rlimit limit{};
            ::getrlimit(RLIMIT_NOFILE, &limit);
            limit.rlim_cur = 0;
            ::setrlimit(RLIMIT_NOFILE, &limit);
            MEMORYSTATUSEX status = {};
            status.dwLength = sizeof(status);
            if (utility::platform::Memory().Status(status) || status.ullTotalPhys != 0)
                return 1;
            utility::platform::MemoryRegion region = {};
            return utility::platform::Memory().OpenAddressSpace()->RegionAt(0, region) ? 2 : 0;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST(PosixMemoryTest, LimitBelowWhatIsInUseLeavesNothing)
{
    // Room in the heap, out of which the figures can be read.
    void* volatile room = std::malloc(100'000);
    std::free(room);
    EXPECT_EQ(WithAddressSpaceOf(4096, [] { return GetAvailVirtualMemory() == 0 && QLMMemoryLoad() == 100 ? 0 : 1; }),
              0);
}

TEST(PosixMemoryTest, WithoutAnyMemoryTheFiguresAreZero)
{
    const auto ask = []
    {
        for (std::size_t size = 65536; size != 8; size /= 2)
            while (std::malloc(size) != nullptr)
                continue;
        return GetAvailVirtualMemory() == 0 && QLMMemoryLoad() == 0 &&
                       utility::platform::LastError() == ERROR_NOT_ENOUGH_MEMORY
                   ? 0
                   : 1;
    };
    EXPECT_EQ(WithAddressSpaceOf(4096, ask), 0);
}

TEST(PosixMemoryTest, MemoryThatRunsOutEndsInBadAllocationBehindTheReport)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const auto exhaust = [&]
    {
        ::dup2(ends[1], STDERR_FILENO);
        const CNewHandler handler;
        try
        {
            volatile std::size_t tooMuch = 1024 * mebibyte;
            ::operator delete(::operator new(tooMuch));
            return 1;
        }
        catch (const std::bad_alloc& failure)
        {
            return std::string(failure.what()) == "bad allocation" ? 0 : 2;
        }
    };
    const int outcome = WithAddressSpaceOf(AddressSpaceInUse() + 64 * mebibyte, exhaust);
    ::close(ends[1]);
    std::string report;
    char bytes[4096];
    for (ssize_t size = 0; (size = ::read(ends[0], bytes, sizeof(bytes))) > 0;)
        report.append(bytes, static_cast<std::size_t>(size));
    ::close(ends[0]);
    EXPECT_EQ(outcome, 0);
    EXPECT_TRUE(report.starts_with("Start      End        Size       State\n")) << report;
    EXPECT_NE(report.find(" MEM_COMMIT\n"), std::string::npos) << report;
    EXPECT_NE(report.find("\nLargest free block: 0x"), std::string::npos) << report;
}

TEST(PosixMemoryTest, WithoutAnyMemoryForTheReportTheEndIsABadAllocationTooNoMatterHowOften)
{
    const auto exhaust = []
    {
        const CNewHandler handler;
        const volatile std::size_t little = 64;
        for (std::size_t size = 65536; size != 8; size /= 2)
            while (std::malloc(size) != nullptr)
                continue;
        for (int round = 0; round < 3; ++round)
        {
            try
            {
                ::operator delete(::operator new(little));
                return 1;
            }
            catch (const std::bad_alloc& failure)
            {
                if (std::string_view(failure.what()) != "bad allocation")
                    return 2;
            }
        }
        return 0;
    };
    EXPECT_EQ(WithAddressSpaceOf(4096, exhaust), 0);
}
#endif

#include "utility/codec/CyclicRedundancyCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <sys/mman.h>

TEST(CyclicRedundancyCheckTest, MoreThanFourGibibytesMayComeAtOnce)
{
    // The pages that nobody writes to are one page of zeros. Those ahead of the check string change nothing.
    const std::size_t size = (std::size_t{1} << 32) + 4096;
    void* const pages =
        ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    ::madvise(pages, size, MADV_HUGEPAGE); // only for speed
    char* const last = static_cast<char*>(pages) + size - 9;
    std::copy_n("123456789", 9, last);
    CyclicRedundancyCheck check;
    check.Incorporate(pages, static_cast<std::int64_t>(size));
    EXPECT_EQ(check.Current(), 0x89A1897FU);
    ::munmap(pages, size);
}

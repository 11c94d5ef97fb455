#pragma once

#include <atomic>
#include <cstdint>
#include <pthread.h>

struct _RTL_CRITICAL_SECTION
{
    std::atomic<int> state = 0;
    std::atomic<pthread_t> owner = 0;
    std::uint32_t takenAgain = 0;
    std::uint32_t spinCount = 0;
};

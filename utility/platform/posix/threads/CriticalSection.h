#pragma once

#include <cstdint>
#include <pthread.h>

/// State and owner are atomic to the functions of platform/Threads.h. Not here: <atomic> would come with every header.
struct _RTL_CRITICAL_SECTION
{
    int state = 0;
    pthread_t owner = 0;
    std::uint32_t takenAgain = 0;
    std::uint32_t spinCount = 0;
};

#pragma once

#include <cstdint>
#include <pthread.h>

struct _RTL_CRITICAL_SECTION
{
    pthread_mutex_t mutex;
    std::uint32_t spinCount;
};

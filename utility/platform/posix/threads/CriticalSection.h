#pragma once

// What CCriticalSectionSpinCount (guards/Locks.h) is made of on Linux.

#include <cstdint>
#include <pthread.h>

/// A lock that the thread which holds it may take again. State and owner are atomic to the functions of
/// platform/Threads.h. Not here: `<atomic>` would come with every header.
struct _RTL_CRITICAL_SECTION
{
    int state = 0;                ///< 0 is free
    pthread_t owner = 0;          ///< the thread that holds it
    std::uint32_t takenAgain = 0; ///< how often more than once
    std::uint32_t spinCount = 0;  ///< how often a thread spins before it sleeps
};

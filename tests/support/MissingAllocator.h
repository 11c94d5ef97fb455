#pragma once

#include "tests/support/RecordingDebugger.h"
#include "tests/support/ScriptedDesktop.h"

#include <atomic>

namespace utility::detail
{
extern std::atomic<bool> missingAllocatorIsIgnored;
}

namespace support
{

/// Takes the assertion of a thread without an allocator, which is not ignored at first.
struct MissingAllocator
{
    MissingAllocator() = default;
    MissingAllocator(const MissingAllocator&) = delete;
    MissingAllocator& operator=(const MissingAllocator&) = delete;
    ~MissingAllocator() { utility::detail::missingAllocatorIsIgnored = false; }

    ScriptedDesktop desktop;
    RecordingDebugger debugger;
};

}

#include "utility/memory/ThreadAllocator.h"

#include "utility/diagnostics/Assertions.h"
#include "utility/platform/Debugger.h"
#include "utility/platform/Faults.h"
#include "utility/platform/LoadOrder.h"
#include "utility/platform/ThreadSlot.h"

#include <atomic>

namespace utility::detail
{

extern platform::ThreadSlot threadAllocatorSlot;
constinit platform::ThreadSlot threadAllocatorSlot;

extern std::atomic<bool> missingAllocatorIsIgnored;
constinit std::atomic<bool> missingAllocatorIsIgnored = false;

}

using utility::detail::missingAllocatorIsIgnored;
using utility::detail::threadAllocatorSlot;

namespace
{

using namespace utility::platform;

void TakeSlot() { threadAllocatorSlot.Take(); }

void GiveSlotBack() { threadAllocatorSlot.GiveBack(); }

[[gnu::init_priority(allocatorSlotIsTaken)]] LoadStep slotStep(allocatorSlotIsTaken, &TakeSlot, &GiveSlotBack);

constinit StaticPlace<CThreadAllocatorManager> loadingThread;

void GiveLoadingThreadAnAllocator() { loadingThread.Make(); }

void TakeLoadingThreadsAllocator() { loadingThread.Destroy(); }

[[gnu::init_priority(loadingThreadHasAnAllocator)]] LoadStep
    allocatorStep(loadingThreadHasAnAllocator, &GiveLoadingThreadAnAllocator, &TakeLoadingThreadsAllocator);

CQLMNodeAllocator* Allocator() { return static_cast<CQLMNodeAllocator*>(threadAllocatorSlot.Value()); }

[[gnu::cold, gnu::noinline]] void ReportMissingAllocator()
{
    bool ignored = missingAllocatorIsIgnored;
    // The file and the line that this assertion is known by.
    if (ZeloAssertFailed("QLMNodeAllocator", 381, 0, ignored))
        utility::platform::Debugger().Break();
    if (ignored)
        missingAllocatorIsIgnored = true;
}

}

CQLMNodeAllocator* GetThreadAllocator()
{
    CQLMNodeAllocator* const allocator = Allocator();
    if (allocator == nullptr) [[unlikely]]
        ReportMissingAllocator();
    return allocator;
}

CQLMNodeAllocator* ResetThreadAllocator(bool create)
{
    CQLMNodeAllocator* const earlier = Allocator();
    threadAllocatorSlot.SetValue(nullptr);
    delete earlier;
    CQLMNodeAllocator* const allocator = create ? new CQLMNodeAllocator : nullptr;
    // Without a slot nobody but the caller knows of it: deliberately so.
    threadAllocatorSlot.SetValue(allocator);
    return allocator;
}

CThreadAllocatorManager::CThreadAllocatorManager() : m_owner(Allocator() == nullptr)
{
    if (!m_owner)
        return;
    ResetThreadAllocator(true);
    utility::platform::EnterFaultStack();
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the slot has the allocator, and without one it is lost

CThreadAllocatorManager::~CThreadAllocatorManager()
{
    if (!m_owner)
        return;
    utility::platform::LeaveFaultStack();
    ResetThreadAllocator(false);
}

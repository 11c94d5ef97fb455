#include "utility/platform/AtFork.h"

#include "utility/platform/LoadOrder.h"

#include <atomic>
#include <pthread.h>

namespace utility::platform
{

namespace
{

constinit std::atomic<HeldAtFork*> latest = nullptr;
constinit HeldAtFork* latestHeld = nullptr; ///< belongs to the thread that forks: all are held then

void HoldAll()
{
    HeldAtFork* const all = latest;
    for (HeldAtFork* each = all; each != nullptr; each = each->Earlier())
        each->Hold();
    latestHeld = all;
}

void ReleaseAll()
{
    for (HeldAtFork* each = latestHeld; each != nullptr; each = each->Earlier())
        each->Release();
}

[[gnu::constructor(platformIsReady)]] void AskForForks() { ::pthread_atfork(&HoldAll, &ReleaseAll, &ReleaseAll); }

}

HeldAtFork::HeldAtFork() noexcept : m_earlier(latest)
{
    while (!latest.compare_exchange_weak(m_earlier, this))
        continue;
}

}

#include "utility/platform/UntilUnload.h"

#include "utility/platform/LoadOrder.h"

#include <atomic>

namespace utility::platform
{

namespace
{

constinit std::atomic<TearDown*> latest = nullptr;

}

void TearDown::Add() noexcept
{
    m_next = latest;
    while (!latest.compare_exchange_weak(m_next, this))
        continue;
}

LoadStep::LoadStep(LoadOrder, void (*begin)(), void (*end)()) : TearDown(&End), m_end(end)
{
    begin();
    Add();
}

void RunTearDowns()
{
    while (TearDown* const each = latest)
    {
        latest = each->m_next;
        each->m_run(*each);
    }
}

}

#include "utility/guards/ThreadPriority.h"

#include "utility/platform/ThreadPriorities.h"

using utility::platform::ThreadPriorities;

CThreadPriority::CThreadPriority(int priority) noexcept : CThreadPriority(ThreadPriorities().CallingThread(), priority)
{
}

CThreadPriority::CThreadPriority(void* thread, int priority) noexcept
    : m_hThread(thread), m_nOldPriority(ThreadPriorities().Priority(thread))
{
    ThreadPriorities().SetPriority(m_hThread, priority);
}

CThreadPriority::~CThreadPriority() { ThreadPriorities().SetPriority(m_hThread, m_nOldPriority); }

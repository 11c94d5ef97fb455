#pragma once

#include "utility/platform/Threads.h"

#include <utility>

namespace utility::platform
{

/// A pointer for each thread, for a static object: usable before its own initialiser ran and after its slot was given
/// back. While it has no slot, which is also the case if the system had none left, every thread reads null and storing
/// does nothing.
///
///     constinit ThreadSlot slot;
///     const ThreadSlot::Lifetime slotLifetime(slot);
class ThreadSlot
{
public:
    /// Takes a slot at start-up and gives it back at exit.
    class Lifetime
    {
    public:
        explicit Lifetime(ThreadSlot& slot) noexcept : m_slot(slot) { m_slot.Take(); }
        Lifetime(const Lifetime&) = delete;
        Lifetime& operator=(const Lifetime&) = delete;
        ~Lifetime() { m_slot.GiveBack(); }

    private:
        ThreadSlot& m_slot;
    };

    /// The thread is at something, for as long as this lives: the slot has a value meanwhile, and none afterwards.
    class Mark
    {
    public:
        explicit Mark(const ThreadSlot& slot) noexcept : m_slot(slot) { m_slot.SetValue(this); }
        Mark(const Mark&) = delete;
        Mark& operator=(const Mark&) = delete;
        ~Mark() { m_slot.SetValue(nullptr); }

    private:
        const ThreadSlot& m_slot;
    };

    void Take() noexcept { m_index = AllocateThreadSlot(); }
    void GiveBack() noexcept
    {
        if (IsAllocated())
            FreeThreadSlot(std::exchange(m_index, TLS_OUT_OF_INDEXES));
    }

    bool IsAllocated() const noexcept { return m_index != TLS_OUT_OF_INDEXES; }
    void* Value() const noexcept { return IsAllocated() ? ThreadSlotValue(m_index) : nullptr; }
    void SetValue(void* value) const noexcept
    {
        if (IsAllocated())
            SetThreadSlotValue(m_index, value);
    }

private:
    DWORD m_index = TLS_OUT_OF_INDEXES;
};

}

#pragma once

#include <mutex>

namespace utility::platform
{

/// Something that a fork has to find at rest. The new process has none of the other threads, and would wait for ever
/// for what one of them held: while it is copied, everything of this kind is held, the latest first. So what is taken
/// while another one is held is made ahead of that.
class HeldAtFork
{
public:
    HeldAtFork(const HeldAtFork&) = delete;
    HeldAtFork& operator=(const HeldAtFork&) = delete;

    virtual void Hold() = 0;
    virtual void Release() = 0;

    /// What was made ahead of this one.
    HeldAtFork* Earlier() const noexcept { return m_earlier; }

protected:
    /// From now on, until the library is unloaded.
    HeldAtFork() noexcept;
    ~HeldAtFork() = default;

private:
    HeldAtFork* m_earlier = nullptr;
};

/// A mutex that is held at a fork.
class ForkSafeMutex final : public HeldAtFork
{
public:
    void lock() { m_mutex.lock(); }
    void unlock() { m_mutex.unlock(); }

private:
    void Hold() override { lock(); }
    void Release() override { unlock(); }

    std::mutex m_mutex;
};

}

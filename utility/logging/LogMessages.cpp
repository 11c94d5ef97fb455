#include "utility/logging/LogMessages.h"

#include "utility/guards/internal/LockGuard.h"
#include "utility/logging/internal/KeptLog.h"
#include "utility/platform/AtFork.h"
#include "utility/platform/LoadOrder.h"

#include <array>
#include <map>
#include <utility>

namespace
{

/// How much longer than its text the memory of a message may be.
constexpr std::size_t spareLength = 128;

}

namespace utility::detail
{

/// A store for each owner.
class LogStores final : platform::HeldAtFork
{
    /// In cache lines of its own: other threads write to what is beside it. All that a message changes of it is in one.
    struct alignas(64) Store final : CLogMessages
    {
        Store(const void* owner, std::uint64_t capacity) : CLogMessages(capacity) { m_owner = owner; }
    };
    using Stores = std::map<const void*, Store>;

public:
    static LogStores& The()
    {
        static platform::UntilUnload<LogStores> stores;
        return *stores;
    }

    CLogMessages& Of(const void* owner)
    {
        // Stores stay until the library is unloaded, so one that was found before is found without the lock.
        std::atomic<Stores::value_type*>& found = m_found[PlaceOf(owner)];
        if (Stores::value_type* const each = found.load(std::memory_order_acquire);
            each != nullptr && each->first == owner)
            return each->second;
        const LockGuard guard(m_lock);
        const std::uint64_t capacity = CLogMessages::m_nDefaultLogCapacity.load(std::memory_order_relaxed);
        Stores::value_type& each = *m_stores.try_emplace(owner, owner, capacity).first;
        found.store(&each, std::memory_order_release);
        return each.second;
    }

private:
    static constexpr int placeBits = 6;

    static std::size_t PlaceOf(const void* owner)
    {
        // By the golden ratio: owners are often so many bytes apart.
        return reinterpret_cast<std::uintptr_t>(owner) * 0x9E37'79B9'7F4A'7C15 >> (64 - placeBits);
    }

    void Hold() override
    {
        m_lock.Lock();
        for (auto& [owner, store] : m_stores)
            store.m_lock.Lock();
    }

    void Release() override
    {
        for (auto& [owner, store] : m_stores)
            store.m_lock.Unlock();
        m_lock.Unlock();
    }

    CCriticalSectionSpinCount m_lock;
    Stores m_stores;
    /// Each the latest that was found of its owners.
    std::array<std::atomic<Stores::value_type*>, 1 << placeBits> m_found{};
};

}

namespace
{

/// When the library is loaded: no fork finds another thread making them.
[[gnu::constructor(utility::platform::restIsMade)]] void MakeLogStores() { utility::detail::LogStores::The(); }

}

CLogMessage::CLogMessage(LogSeverity severity, const std::wstring& message)
    : m_eSeverity(severity), m_strMessage(message)
{
}

void utility::detail::DeliverLogText(const void* owner, LogSeverity severity, std::wstring_view text)
{
    // The store comes first: an owner has one even if the text began with a null and nothing is left of it.
    LogStores::The().Of(owner).Store(severity, text);
}

constinit std::atomic<std::uint64_t> CLogMessages::m_nDefaultLogCapacity = 500;

CLogMessages& CLogMessages::instance(const void* owner) { return utility::detail::LogStores::The().Of(owner); }

void CLogMessages::SetDefaultLogCapacity(std::uint64_t capacity)
{
    m_nDefaultLogCapacity.store(capacity, std::memory_order_relaxed);
}

CLogMessages::CLogMessages(std::uint64_t capacity) : m_ring(Ring::capacity_type(capacity, 0)), m_capacity(capacity) {}

CLogMessages::~CLogMessages() = default;

void CLogMessages::SetLogCapacity(std::uint64_t capacity)
{
    const utility::LockGuard guard(m_lock);
    m_ring.set_capacity(Ring::capacity_type(capacity, 0));
    m_capacity.store(capacity, std::memory_order_relaxed);
}

void CLogMessages::push(LogSeverity severity, const std::wstring& message) { Store(severity, message); }

void CLogMessages::pop(Ring& messages)
{
    // The capacity is read outside the lock on purpose, and a change until the swap is undone by it: the caller's
    // messages may be many and are not to be destroyed under the lock.
    const std::uint64_t capacity = m_capacity.load(std::memory_order_relaxed);
    messages.clear();
    messages.set_capacity(Ring::capacity_type(capacity, 0));
    const utility::LockGuard guard(m_lock);
    m_ring.swap(messages);
    m_capacity.store(capacity, std::memory_order_relaxed);
}

void CLogMessages::Store(LogSeverity severity, std::wstring_view message)
{
    if (message.empty())
        return;
    // Ahead of the lock, and of a failed allocation.
    if (utility::detail::KeptLog* const kept = utility::detail::TheKeptLog())
        kept->Add(m_owner, severity, message);
    const utility::LockGuard guard(m_lock);
    if (m_ring.full() && !m_ring.empty())
    {
        // The oldest message gives its place, and its memory if that is not far too much.
        CLogMessage& oldest = m_ring.front();
        std::wstring& text = oldest.m_strMessage;
        if (text.capacity() < message.size() || text.capacity() > message.size() + spareLength)
            std::wstring(message).swap(text);
        else
        {
            text.resize(message.size());
            message.copy(text.data(), message.size());
        }
        oldest.m_eSeverity = severity;
        if (m_ring.size() > 1)
            m_ring.rotate(m_ring.begin() + 1);
        return;
    }
    CLogMessage stored(severity, std::wstring());
    stored.m_strMessage = message;
    m_ring.push_back(std::move(stored));
}

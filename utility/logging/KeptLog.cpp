#include "utility/logging/internal/KeptLog.h"

#include "utility/platform/Threads.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <vector>

namespace utility::detail
{

namespace
{

// Takes no memory before something is written to it.
constinit KeptLog keptLog = {};
constinit std::atomic<bool> isLogKept = false;

std::int64_t Now() noexcept
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

/// For what is seen neither ahead of the odd state of a message nor behind the even one.
template <class T>
void Store(T& place, T value) noexcept
{
    std::atomic_ref(place).store(value, std::memory_order_release);
}

template <class T>
T Load(const T& place) noexcept
{
    return std::atomic_ref(const_cast<T&>(place)).load();
}

}

void KeepLog() noexcept { isLogKept.store(true, std::memory_order_relaxed); }

KeptLog* TheKeptLog() noexcept { return isLogKept.load(std::memory_order_relaxed) ? &keptLog : nullptr; }

KeptLog::Lane& KeptLog::LaneOf(std::uint64_t owner, std::uint64_t number) noexcept
{
    for (;;)
    {
        // A free lane has the owner null, as the first one has, which is never another's.
        const auto lane = std::ranges::find(lanes, owner, [](const Lane& each) { return Load(each.owner); });
        if (lane != lanes.end())
            return *lane;
        Lane& oldest = *std::ranges::min_element(lanes.begin() + 1, lanes.end(), {},
                                                 [](const Lane& each) { return Load(each.latest); });
        std::uint64_t earlier = Load(oldest.owner);
        if (std::atomic_ref(oldest.owner).compare_exchange_strong(earlier, owner))
        {
            Store(oldest.latest, number);
            return oldest;
        }
    }
}

void KeptLog::Add(const void* owner, LogSeverity severity, std::wstring_view text) noexcept
{
    const std::uint64_t number = ++std::atomic_ref(numbers);
    const std::uint64_t address = reinterpret_cast<std::uintptr_t>(owner);
    Lane& lane = LaneOf(address, number);
    Store(lane.latest, number);
    for (std::size_t tries = 0; tries != laneLength; ++tries)
    {
        KeptMessage& message = lane.messages[std::atomic_ref(lane.written)++ % laneLength];
        const std::uint64_t whole = 2 * number;
        std::uint64_t state = Load(message.state);
        if (state % 2 != 0 || !std::atomic_ref(message.state).compare_exchange_strong(state, whole + 1))
            continue;
        Store(message.owner, address);
        Store(message.time, Now());
        Store<std::uint32_t>(message.thread, platform::ThreadNumber());
        Store(message.severity, severity);
        Store(message.length, static_cast<std::uint32_t>(text.size()));
        for (std::size_t i = 0; i != std::min(text.size(), KeptMessage::textCapacity); ++i)
            Store(message.text[i], text[i]);
        Store(message.state, whole);
        return;
    }
}

void EachKeptMessage(std::uint64_t block, const ReadMemory& read, const std::function<void(const KeptMessage&)>& visit)
{
    struct Place
    {
        std::uint64_t state;
        std::uint64_t address;
    };
    std::vector<Place> places;
    for (std::size_t lane = 0; lane != KeptLog::laneCount; ++lane)
    {
        for (std::size_t i = 0; i != KeptLog::laneLength; ++i)
        {
            Place place = {};
            place.address = block + offsetof(KeptLog, lanes) + lane * sizeof(KeptLog::Lane) +
                            offsetof(KeptLog::Lane, messages) + i * sizeof(KeptMessage);
            if (!read(place.address, &place.state, sizeof place.state))
                return;
            if (place.state != 0 && place.state % 2 == 0)
                places.push_back(place);
        }
    }
    std::ranges::sort(places, {}, &Place::state);
    for (const Place& place : places)
    {
        KeptMessage message;
        std::uint64_t stateAfter = 0;
        if (!read(place.address, &message, sizeof message) || !read(place.address, &stateAfter, sizeof stateAfter))
            return;
        if (stateAfter == place.state)
            visit(message);
    }
}

}

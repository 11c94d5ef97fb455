#pragma once

// The latest messages of the log, where the report of a crash finds them: one block of a fixed layout without pointers,
// which the thread that crashed reads without a lock, and another process by copying its bytes.
//
// The block is a table of lanes, one for an owner, and a lane is a ring of messages: a noisy owner takes the place of
// its own messages alone. The first lane is that of messages without an owner. A new owner has the lane in which
// nothing was written for the longest time, so with more owners than lanes the longest silent one loses its messages
// one by one.
//
// Each message has a state: 0 if there never was one, an odd number while it is written, and then an even one that
// never comes again. Whoever reads takes the state, the message and the state again, and leaves out what changed
// meanwhile. Who writes never waits: a place that another thread is just writing to is left to it, and the next one is
// taken.

#include "utility/logging/LogSeverity.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <type_traits>

namespace utility::detail
{

/// All of a message is read and written as atomic by the functions below.
struct KeptMessage
{
    static constexpr std::size_t textCapacity = 240;

    std::uint64_t state;
    std::uint64_t owner; ///< its address
    std::int64_t time;   ///< in microseconds since the start of 1970 UTC
    std::uint32_t thread;
    LogSeverity severity;
    std::uint32_t length; ///< of the whole text, of which the first characters are kept
    wchar_t text[textCapacity];

    std::wstring_view Text() const { return {text, length < textCapacity ? length : textCapacity}; }
    bool IsCut() const { return length > textCapacity; }
};

/// All zeros at first.
struct KeptLog
{
    static constexpr std::size_t laneCount = 32;
    static constexpr std::size_t laneLength = 32;

    struct Lane
    {
        std::uint64_t owner;
        std::uint64_t latest;  ///< the number of its latest message
        std::uint64_t written; ///< messages
        std::array<KeptMessage, laneLength> messages;
    };

    std::uint64_t numbers; ///< of messages, in the order in which they came
    std::array<Lane, laneCount> lanes;

    /// From any thread, and in a fault as well: nothing is allocated, and no lock is taken.
    void Add(const void* owner, LogSeverity severity, std::wstring_view text) noexcept;

private:
    Lane& LaneOf(std::uint64_t owner, std::uint64_t number) noexcept;
};

static_assert(std::is_trivial_v<KeptLog> && std::is_standard_layout_v<KeptLog>);
static_assert(offsetof(KeptMessage, state) == 0 && offsetof(KeptMessage, owner) == 8 &&
              offsetof(KeptMessage, time) == 16 && offsetof(KeptMessage, thread) == 24 &&
              offsetof(KeptMessage, severity) == 28 && offsetof(KeptMessage, length) == 32 &&
              offsetof(KeptMessage, text) == 36);
static_assert(offsetof(KeptLog::Lane, messages) == 24 && offsetof(KeptLog, lanes) == 8);

/// Has the messages of all stores kept in the block from now on. Any thread may call, more than once too.
void KeepLog() noexcept;

/// The block; null if nobody asked for it.
KeptLog* TheKeptLog() noexcept;

/// Reads memory of the process that the block is in. False if it cannot be read.
using ReadMemory = std::function<bool(std::uint64_t address, void* bytes, std::size_t size)>;

/// Visits the messages of the block at this address in the order in which they came, while others may write to it,
/// and up to one that cannot be read. Whatever is in the block, nothing else is read.
void EachKeptMessage(std::uint64_t block, const ReadMemory& read, const std::function<void(const KeptMessage&)>& visit);

}

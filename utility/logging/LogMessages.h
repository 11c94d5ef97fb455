#pragma once

// Where log messages wait until someone collects them: for each owner a ring of the most recent ones, in memory.
// Messages are written with the streams of logging/LogStream.h.
//
//     boost::circular_buffer_space_optimized<CLogMessage> messages;
//     CLogMessages::instance(database).pop(messages);
//     for (const CLogMessage& message : messages)
//         Show(message.m_eSeverity, message.m_strMessage);
//
// Any thread may call anything, and so may the child of a fork. Only a failed allocation throws.

#include "utility/guards/Locks.h"
#include "utility/logging/LogSeverity.h"
#include "utility/platform/Export.h"

#include <boost/circular_buffer.hpp>

#include <atomic>
#include <cstdint>
#include <string>
#include <string_view>

namespace utility::detail
{
class LogStores;
void DeliverLogText(const void* owner, LogSeverity severity, std::wstring_view text);
}

/// A message as a store keeps it.
struct UTILITY_API CLogMessage
{
    /// Copies the text.
    CLogMessage(LogSeverity severity, const std::wstring& message);
    CLogMessage(const CLogMessage&) = default;
    CLogMessage& operator=(const CLogMessage&) = default;
    /// The other message keeps its severity, and its text is empty.
    CLogMessage(CLogMessage&&) noexcept = default;
    CLogMessage& operator=(CLogMessage&&) noexcept = default;
    ~CLogMessage() = default;

    /// As it was given to the stream, or LogSeverityNone of a message for debugging while those are off.
    LogSeverity m_eSeverity;
    /// Ends in the line feed that the log streams see to.
    std::wstring m_strMessage;
};

/// The messages of one owner, oldest first. There is no test of the severity here.
class UTILITY_API CLogMessages
{
public:
    /// The store of an owner, which may be null, made on first use. An owner is an address and nothing more: whoever
    /// comes to live there later has the same store. The store is the library's and lasts until it is unloaded.
    static CLogMessages& instance(const void* owner);

    /// How many messages the stores hold that are made from now on; 500 at first.
    static void SetDefaultLogCapacity(std::uint64_t capacity);

    CLogMessages(const CLogMessages&) = delete;
    CLogMessages& operator=(const CLogMessages&) = delete;
    ~CLogMessages();

    /// How many messages this store holds. If there are more, the newest are dropped: deliberately unlike in push.
    void SetLogCapacity(std::uint64_t capacity);

    /// Adds a copy of a message as it is; in a full store it takes the place of the oldest. An empty one is ignored.
    void push(LogSeverity severity, const std::wstring& message);

    /// Moves all messages to the caller's ring, which loses what it held and gets the capacity of the store. A change
    /// of the capacity by another thread meanwhile may be lost.
    void pop(boost::circular_buffer_space_optimized<CLogMessage>& messages);

protected:
    /// An empty store for so many messages.
    explicit CLogMessages(std::uint64_t capacity);

private:
    using Ring = boost::circular_buffer_space_optimized<CLogMessage>;
    friend class utility::detail::LogStores;
    friend void utility::detail::DeliverLogText(const void* owner, LogSeverity severity, std::wstring_view text);

    UTILITY_LOCAL void Store(LogSeverity severity, std::wstring_view message);

    UTILITY_LOCAL static std::atomic<std::uint64_t> m_nDefaultLogCapacity;

    CCriticalSectionSpinCount m_lock;
    Ring m_ring;
    /// That of the ring, to be read without the lock.
    std::atomic<std::uint64_t> m_capacity;
    const void* m_owner = nullptr;
};

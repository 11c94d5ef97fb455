#pragma once

// The way to write a log message: insert values into a short-lived stream, and what it holds becomes one message in
// the store of the owner (logging/LogMessages.h).
//
//     LogFile(LogSeverityWarning, database) << L"Tool " << number << " is worn";
//
// The message is stored when the object that LogFile gave dies, which is the end of the statement, and at each
// std::flush or std::endl. A line feed is added where it does not end in one. The text ends at its first null
// character. A message below the level of SetLogLevel is not formatted at all.
//
// One stream, one thread; any number of streams may write for one owner. Only a failed allocation throws, out of the
// statement: the message is lost then, and nothing else.

#include "utility/logging/LogSeverity.h"
#include "utility/platform/Export.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

class CEntityDatabase;

namespace utility::detail
{

template <class T>
inline constexpr bool IsNarrowText = std::is_same_v<std::decay_t<T>, char*> ||
                                     std::is_same_v<std::decay_t<T>, const char*> || std::is_base_of_v<std::string, T>;

/// What a wide stream prints as a number. A `char` is not among them, `signed char` and `unsigned char` are.
template <class T>
inline constexpr bool IsInteger =
    std::is_integral_v<T> && !std::is_same_v<T, char> && !std::is_same_v<T, wchar_t> && !std::is_same_v<T, char8_t> &&
    !std::is_same_v<T, char16_t> && !std::is_same_v<T, char32_t>;

}

/// A stream without a filter: whatever is inserted is stored.
class UTILITY_API CLogStream : public std::basic_ostream<wchar_t>
{
public:
    /// Where the text is kept until it is stored.
    class UTILITY_API CLogStreamBuffer : public std::basic_stringbuf<wchar_t>
    {
    public:
        /// For messages of this severity to the store of `owner`, which may be null.
        CLogStreamBuffer(const void* owner, LogSeverity severity);
        ~CLogStreamBuffer() override;

    protected:
        /// Stores what was put in as one message.
        int sync() override;

    private:
        LogSeverity m_eSeverity;
        const void* m_pOwner;
    };

    /// For messages of this severity to the store of `owner`, which may be null.
    CLogStream(const void* owner, LogSeverity severity);
    /// Stores what is left, or drops it where memory is short: the destructor of a stream cannot throw.
    ~CLogStream() override;

private:
    CLogStreamBuffer m_buffer;
};

/// A log stream behind the test of its severity against the level, which is made once, at construction. Text and
/// numbers do not need a stream as long as nothing can have changed how they are formatted; the first other value or
/// manipulator makes one, and from then on everything goes through it. The text is the same.
class UTILITY_API CLogStreamHelper
{
public:
    /// For messages of this severity, if the level lets them pass now, to the store of `owner`, which may be null.
    UTILITY_INLINE CLogStreamHelper(const void* owner, LogSeverity severity)
        : m_pOwner(owner),
          m_eSeverity(severity),
          m_bEnabled(severity >= utility::detail::logLevel.load(std::memory_order_relaxed))
    {
        if (m_bEnabled) [[unlikely]]
            Begin();
    }
    CLogStreamHelper(const CLogStreamHelper&) = delete;
    CLogStreamHelper& operator=(const CLogStreamHelper&) = delete;
    /// Stores what is left. A failed allocation is thrown from here, unless another exception is on its way.
    UTILITY_INLINE ~CLogStreamHelper() noexcept(false)
    {
        if (m_bEnabled) [[unlikely]]
            End();
    }

    /// Manipulators; std::flush and std::endl store what was inserted so far as a message.
    UTILITY_INLINE CLogStreamHelper&
    operator<<(std::basic_ostream<wchar_t>& (*manipulator)(std::basic_ostream<wchar_t>&))
    {
        if (m_bEnabled) [[unlikely]]
            Apply(manipulator);
        return *this;
    }

    /// Whatever can be inserted into a wide stream, but for narrow text, which has its own operators below.
    template <class T>
    requires(!utility::detail::IsNarrowText<T>) CLogStreamHelper& operator<<(const T& value)
    {
        if (m_bEnabled) [[unlikely]] // most messages are below the level
            Insert(value);
        return *this;
    }

private:
    friend UTILITY_API CLogStreamHelper& operator<<(CLogStreamHelper& helper, const char* const text);
    friend UTILITY_API CLogStreamHelper& operator<<(CLogStreamHelper& helper, const std::string& text);

    template <class T>
    void Insert(const T& value)
    {
        if constexpr (std::is_same_v<T, std::wstring> || std::is_same_v<T, std::wstring_view>)
            InsertText(value);
        else if constexpr (std::is_convertible_v<const T&, const wchar_t*> &&
                           (std::is_pointer_v<T> || std::is_array_v<T>))
            InsertText(static_cast<const wchar_t*>(value));
        else if constexpr (std::is_same_v<T, wchar_t>)
            InsertText(std::wstring_view(&value, 1));
        else if constexpr (std::is_same_v<T, bool> || utility::detail::IsInteger<T>)
        {
            if (m_stream)
                *m_stream << value;
            else if (value < T{})
                AppendInteger(0 - static_cast<std::uint64_t>(value), true);
            else
                AppendInteger(static_cast<std::uint64_t>(value), false);
        }
        else if constexpr (std::is_same_v<T, float> || std::is_same_v<T, double>)
        {
            if (m_stream)
                *m_stream << value;
            else
                AppendReal(value);
        }
        else
            Stream() << value;
    }

    void Begin();
    void End();
    void Apply(std::basic_ostream<wchar_t>& (*manipulator)(std::basic_ostream<wchar_t>&));
    void InsertText(std::wstring_view text);
    void InsertText(const wchar_t* text);
    UTILITY_LOCAL void InsertNarrow(std::string_view text);
    UTILITY_LOCAL wchar_t* RoomFor(std::size_t length);
    UTILITY_LOCAL wchar_t* LongRoomFor(std::size_t length);
    UTILITY_LOCAL void AppendText(std::wstring_view text);
    void AppendInteger(std::uint64_t magnitude, bool negative);
    void AppendReal(double value);
    CLogStream& Stream();
    UTILITY_LOCAL std::wstring_view Text() const;
    UTILITY_LOCAL void Deliver();

    const void* m_pOwner;
    LogSeverity m_eSeverity;
    bool m_bEnabled;
    // What follows is there from Begin on, and End leaves nothing in it to destroy: a message below the level has none.
    std::size_t m_nLength;
    union
    {
        /// The whole text, once it is too long for m_szText.
        std::wstring m_strLong;
    };
    union
    {
        std::optional<CLogStream> m_stream;
    };
    wchar_t m_szText[256];
};

/// Narrow text is converted from the system's code page, also if it then goes nowhere. Null counts as empty, and what
/// cannot be converted as well.
UTILITY_API CLogStreamHelper& operator<<(CLogStreamHelper& helper, const char* const text);
UTILITY_API CLogStreamHelper& operator<<(CLogStreamHelper& helper, const std::string& text);
inline CLogStreamHelper& operator<<(CLogStreamHelper&& helper, const char* const text) { return helper << text; }
inline CLogStreamHelper& operator<<(CLogStreamHelper&& helper, const std::string& text) { return helper << text; }

/// A stream for a message to the store of `owner`, which is only used as an address and may be null.
UTILITY_INLINE CLogStreamHelper LogFile(LogSeverity severity, const void* owner) { return {owner, severity}; }

namespace utility::detail
{

inline LogSeverity DebugSeverity(LogSeverity severity)
{
    return logDebugMessages.load(std::memory_order_relaxed) ? severity : LogSeverityNone;
}

}

/// The same for a message for debugging: of severity LogSeverityNone unless LogDebugMessages().
UTILITY_INLINE CLogStreamHelper DbgLogFile(LogSeverity severity, const void* owner)
{
    return {owner, utility::detail::DebugSeverity(severity)};
}
UTILITY_INLINE CLogStreamHelper DbgLogFile(LogSeverity severity, CEntityDatabase* database)
{
    return {database, utility::detail::DebugSeverity(severity)};
}

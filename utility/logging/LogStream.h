#pragma once

// The way to write a log message: insert values into a short-lived stream, and what it holds becomes one message in
// the store of the owner (logging/LogMessages.h).
//
//     LogFile(LogSeverityWarning, database) << L"Tool " << number << " is worn";
//
// The message is stored when the object that LogFile gave dies, which is the end of the statement, and at each
// std::flush or std::endl. A line feed is added where it does not end in one. The text ends at its first null character.
// A message below the level of SetLogLevel is not formatted at all.
//
// One stream, one thread; any number of streams may write for one owner. Only a failed allocation throws.

#include "utility/logging/LogMessages.h"
#include "utility/platform/Export.h"

#include <cstddef>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

class CEntityDatabase;

/// A stream without a filter: whatever is inserted is stored.
class UTILITY_API CLogStream : public std::basic_ostream<wchar_t>
{
public:
    class UTILITY_API CLogStreamBuffer : public std::basic_stringbuf<wchar_t>
    {
    public:
        CLogStreamBuffer(const void* owner, LogSeverity severity);
        ~CLogStreamBuffer() override;

    protected:
        /// Stores what was put in as one message.
        int sync() override;

    private:
        LogSeverity m_eSeverity;
        const void* m_pOwner;
    };

    CLogStream(const void* owner, LogSeverity severity);
    /// Stores what is left.
    ~CLogStream() override;

private:
    CLogStreamBuffer m_buffer;
};

/// A log stream behind the test of its severity against the level, which is made once, at construction.
class UTILITY_API CLogStreamHelper
{
public:
    CLogStreamHelper(const void* owner, LogSeverity severity);
    CLogStreamHelper(const CLogStreamHelper&) = delete;
    CLogStreamHelper& operator=(const CLogStreamHelper&) = delete;
    ~CLogStreamHelper();

    CLogStreamHelper& operator<<(std::basic_ostream<wchar_t>& (*manipulator)(std::basic_ostream<wchar_t>&));

    /// Whatever can be inserted into a wide stream, but for narrow text, which has its own operators below.
    template <class T>
    requires(!std::is_same_v<std::remove_cv_t<std::remove_pointer_t<std::decay_t<T>>>, char> ||
             !std::is_pointer_v<std::decay_t<T>>) CLogStreamHelper&
    operator<<(const T& value)
    {
        if (m_bEnabled)
            m_stream << value;
        return *this;
    }

private:
    friend UTILITY_API CLogStreamHelper& operator<<(CLogStreamHelper& helper, const std::string& text);

    bool m_bEnabled;
    CLogStream m_stream;
};

/// Narrow text is converted from the system's code page, also if it then goes nowhere. Null counts as empty, and what
/// cannot be converted as well.
UTILITY_API CLogStreamHelper& operator<<(CLogStreamHelper& helper, const char* const text);
UTILITY_API CLogStreamHelper& operator<<(CLogStreamHelper& helper, const std::string& text);
inline CLogStreamHelper& operator<<(CLogStreamHelper&& helper, const char* const text) { return helper << text; }
inline CLogStreamHelper& operator<<(CLogStreamHelper&& helper, const std::string& text) { return helper << text; }

/// A stream for a message to the store of `owner`, which is only used as an address and may be null.
UTILITY_API CLogStreamHelper LogFile(LogSeverity severity, const void* owner);

/// The same for a message for debugging: of severity LogSeverityNone unless LogDebugMessages().
UTILITY_API CLogStreamHelper DbgLogFile(LogSeverity severity, const void* owner);
UTILITY_API CLogStreamHelper DbgLogFile(LogSeverity severity, CEntityDatabase* database);

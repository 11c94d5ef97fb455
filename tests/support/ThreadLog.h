#pragma once

#include "utility/logging/LogMessages.h"
#include "utility/logging/ThreadDatabase.h"

#include <ostream>
#include <string>
#include <vector>

namespace support
{

struct Logged
{
    LogSeverity severity;
    std::wstring text;
    bool operator==(const Logged&) const = default;
};

inline void PrintTo(const Logged& message, std::ostream* stream)
{
    *stream << static_cast<int>(message.severity) << ": \"";
    for (const wchar_t character : message.text)
        *stream << static_cast<char>(character);
    *stream << '"';
}

/// Empties the store of an owner and gives what was in it.
inline std::vector<Logged> TakeLog(const void* owner)
{
    boost::circular_buffer_space_optimized<CLogMessage> messages;
    CLogMessages::instance(owner).pop(messages);
    std::vector<Logged> taken;
    for (const CLogMessage& message : messages)
        taken.push_back({message.m_eSeverity, message.m_strMessage});
    return taken;
}

/// The calling thread works for a new database for a scope.
class ThreadLog
{
public:
    ThreadLog() : m_earlier(GetThreadDatabase()) { SetThreadDatabase(reinterpret_cast<CEntityDatabase*>(&m_database)); }
    ThreadLog(const ThreadLog&) = delete;
    ThreadLog& operator=(const ThreadLog&) = delete;
    ~ThreadLog()
    {
        SetThreadDatabase(m_earlier);
        // A store outlives its owner, and another may come to live at its place.
        Take();
    }

    std::vector<Logged> Take() const { return TakeLog(&m_database); }

private:
    char m_database = 0;
    CEntityDatabase* m_earlier;
};

}

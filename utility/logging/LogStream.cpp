#include "utility/logging/LogStream.h"

#include "utility/platform/Text.h"

#include <limits>

namespace utility::detail
{

void DeliverLogText(const void* owner, LogSeverity severity, std::wstring_view text)
{
    // The store comes first: an owner has one even if the text begins with a null and nothing is left of it. That the
    // text is cut there, its line feed with it, is deliberate.
    CLogMessages::instance(owner).Store(severity, text.substr(0, text.find(L'\0')));
}

}

namespace
{

std::wstring WideFromSystemCodePage(std::string_view text)
{
    std::wstring wide;
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return wide;
    auto& service = utility::platform::Text();
    const int length = static_cast<int>(text.size());
    const int size = service.FromCodePage(CP_ACP, text.data(), length, nullptr, 0);
    wide.resize(static_cast<std::size_t>(size));
    if (size != 0)
        service.FromCodePage(CP_ACP, text.data(), length, wide.data(), size);
    return wide;
}

}

CLogStream::CLogStreamBuffer::CLogStreamBuffer(const void* owner, LogSeverity severity)
    : m_eSeverity(severity), m_pOwner(owner)
{
}

CLogStream::CLogStreamBuffer::~CLogStreamBuffer() = default;

int CLogStream::CLogStreamBuffer::sync()
{
    if (pbase() == pptr())
        return 0;
    if (pptr()[-1] != L'\n')
        sputc(L'\n');
    utility::detail::DeliverLogText(m_pOwner, m_eSeverity, view());
    str(std::wstring());
    return 0;
}

CLogStream::CLogStream(const void* owner, LogSeverity severity)
    : std::basic_ostream<wchar_t>(nullptr), m_buffer(owner, severity)
{
    rdbuf(&m_buffer);
}

CLogStream::~CLogStream() { m_buffer.pubsync(); }

CLogStreamHelper::CLogStreamHelper(const void* owner, LogSeverity severity)
    : m_bEnabled(severity >= GetLogLevel()), m_stream(owner, m_bEnabled ? severity : LogSeverityNone)
{
}

CLogStreamHelper::~CLogStreamHelper() = default;

CLogStreamHelper&
CLogStreamHelper::operator<<(std::basic_ostream<wchar_t>& (*manipulator)(std::basic_ostream<wchar_t>&))
{
    if (m_bEnabled)
        m_stream << manipulator;
    return *this;
}

CLogStreamHelper& operator<<(CLogStreamHelper& helper, const char* const text)
{
    return helper << std::string(text == nullptr ? "" : text);
}

CLogStreamHelper& operator<<(CLogStreamHelper& helper, const std::string& text)
{
    const std::wstring wide = WideFromSystemCodePage(text);
    if (helper.m_bEnabled)
        helper.m_stream << wide;
    return helper;
}

CLogStreamHelper LogFile(LogSeverity severity, const void* owner) { return CLogStreamHelper(owner, severity); }

CLogStreamHelper DbgLogFile(LogSeverity severity, const void* owner)
{
    return CLogStreamHelper(owner, LogDebugMessages() ? severity : LogSeverityNone);
}

CLogStreamHelper DbgLogFile(LogSeverity severity, CEntityDatabase* database)
{
    return DbgLogFile(severity, static_cast<const void*>(database));
}

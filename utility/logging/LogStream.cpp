#include "utility/logging/LogStream.h"

#include "utility/logging/LogMessages.h"
#include "utility/platform/Text.h"

#include <algorithm>
#include <cfenv>
#include <charconv>
#include <exception>
#include <iterator>
#include <locale>
#include <new>
#include <utility>

namespace utility::detail
{

void DeliverLogText(const void* owner, LogSeverity severity, std::wstring_view text)
{
    // The store comes first: an owner has one even if the text begins with a null and nothing is left of it. That the
    // text is cut there, its line feed with it, is deliberate.
    CLogMessages::instance(owner).Store(severity, text.substr(0, text.find(L'\0')));
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
    // Nothing is left to whoever tries again where this fails.
    std::wstring text = std::move(*this).str();
    if (text.back() != L'\n')
        text += L'\n';
    utility::detail::DeliverLogText(m_pOwner, m_eSeverity, text);
    return 0;
}

CLogStream::CLogStream(const void* owner, LogSeverity severity)
    : std::basic_ostream<wchar_t>(nullptr), m_buffer(owner, severity)
{
    rdbuf(&m_buffer);
}

CLogStream::~CLogStream()
{
    try
    {
        m_buffer.pubsync();
    }
    catch (const std::exception&)
    {
        // The destructor of any stream is one that does not throw.
    }
}

CLogStreamHelper::CLogStreamHelper(const void* owner, LogSeverity severity)
    : m_pOwner(owner), m_eSeverity(severity), m_bEnabled(severity >= GetLogLevel()), m_nLength(0)
{
    // Other locales may group the digits of a number.
    if (m_bEnabled && std::locale() != std::locale::classic())
        m_stream.emplace(m_pOwner, m_eSeverity);
}

CLogStreamHelper::~CLogStreamHelper() noexcept(false)
{
    // Most messages are below the level.
    if (!m_bEnabled)
        return;
    try
    {
        if (m_stream)
            m_stream->rdbuf()->pubsync();
        else
            Deliver();
    }
    catch (const std::exception&)
    {
        if (std::uncaught_exceptions() == 0)
            throw;
    }
}

CLogStreamHelper&
CLogStreamHelper::operator<<(std::basic_ostream<wchar_t>& (*manipulator)(std::basic_ostream<wchar_t>&))
{
    constexpr auto endl = &std::endl<wchar_t, std::char_traits<wchar_t>>;
    constexpr auto flush = &std::flush<wchar_t, std::char_traits<wchar_t>>;
    if (!m_bEnabled)
        return *this;
    if (manipulator != endl && manipulator != flush)
    {
        Stream() << manipulator;
        return *this;
    }
    if (m_stream)
    {
        // As the manipulators do it, but that a failure to deliver is not kept from the caller.
        if (manipulator == endl)
            m_stream->put(L'\n');
        if (m_stream->good())
            m_stream->rdbuf()->pubsync();
        return *this;
    }
    if (manipulator == endl)
        AppendText(L"\n");
    Deliver();
    return *this;
}

void CLogStreamHelper::InsertText(std::wstring_view text)
{
    if (m_stream)
        *m_stream << text;
    else
        AppendText(text);
}

void CLogStreamHelper::InsertText(const wchar_t* text)
{
    if (text == nullptr)
        Stream() << text;
    else
        InsertText(std::wstring_view(text));
}

void CLogStreamHelper::InsertNarrow(std::string_view text)
{
    const std::wstring wide = utility::platform::WideFromCodePage(CP_ACP, text);
    if (m_bEnabled)
        InsertText(wide);
}

void CLogStreamHelper::AppendText(std::wstring_view text)
{
    if (m_strLong.empty() && text.size() <= std::size(m_szText) - m_nLength)
    {
        text.copy(m_szText + m_nLength, text.size());
        m_nLength += text.size();
        return;
    }
    if (m_strLong.empty())
    {
        m_strLong.reserve(2 * (m_nLength + text.size()));
        m_strLong.append(m_szText, m_nLength);
    }
    m_strLong += text;
}

void CLogStreamHelper::AppendInteger(std::uint64_t magnitude, bool negative)
{
    wchar_t text[20];
    wchar_t* begin = std::end(text);
    do
        *--begin = static_cast<wchar_t>(L'0' + magnitude % 10);
    while ((magnitude /= 10) != 0);
    if (negative)
        *--begin = L'-';
    AppendText({begin, static_cast<std::size_t>(std::end(text) - begin)});
}

// As a stream does it, which on Windows sets the locale of the whole process for a moment meanwhile.
void CLogStreamHelper::AppendReal(double value)
{
    // A stream may round to where the thread rounds.
    if (std::fegetround() != FE_TONEAREST)
    {
        Stream() << value;
        return;
    }
    constexpr int digitsOfAStream = 6;
    char text[32];
    const char* const end = std::to_chars(text, std::end(text), value, std::chars_format::general, digitsOfAStream).ptr;
    wchar_t wide[std::size(text)];
    std::copy(static_cast<const char*>(text), end, wide);
    AppendText({wide, static_cast<std::size_t>(end - text)});
}

CLogStream& CLogStreamHelper::Stream()
{
    if (!m_stream)
    {
        m_stream.emplace(m_pOwner, m_eSeverity);
        // A stream keeps the locale that it began with.
        if (std::locale() != std::locale::classic())
            m_stream->imbue(std::locale::classic());
        const std::wstring_view text = Text();
        m_stream->rdbuf()->sputn(text.data(), static_cast<std::streamsize>(text.size()));
    }
    return *m_stream;
}

std::wstring_view CLogStreamHelper::Text() const
{
    return m_strLong.empty() ? std::wstring_view(m_szText, m_nLength) : std::wstring_view(m_strLong);
}

void CLogStreamHelper::Deliver()
{
    if (Text().empty())
        return;
    // Nothing is left to whoever tries again where this fails.
    struct Emptying
    {
        CLogStreamHelper& helper;
        ~Emptying()
        {
            helper.m_nLength = 0;
            helper.m_strLong.clear();
        }
    } const emptying{*this};
    if (Text().back() != L'\n')
        AppendText(L"\n");
    utility::detail::DeliverLogText(m_pOwner, m_eSeverity, Text());
}

CLogStreamHelper& operator<<(CLogStreamHelper& helper, const char* const text)
{
    helper.InsertNarrow(text == nullptr ? std::string_view() : std::string_view(text));
    return helper;
}

CLogStreamHelper& operator<<(CLogStreamHelper& helper, const std::string& text)
{
    helper.InsertNarrow(text);
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

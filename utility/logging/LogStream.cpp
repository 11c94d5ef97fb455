#include "utility/logging/LogStream.h"

#include "utility/logging/LogMessages.h"
#include "utility/numbers/FloatFormat.h"
#include "utility/numbers/internal/FixedDigits.h"
#include "utility/platform/Text.h"

#include <algorithm>
#include <cfenv>
#include <charconv>
#include <cmath>
#include <cstring>
#include <exception>
#include <iterator>
#include <locale>
#include <new>
#include <span>
#include <utility>

namespace
{

/// Asked for each message.
bool IsGlobalLocaleClassic()
{
    static const std::locale& classic = std::locale::classic();
    const std::locale global;
    // What has the same bytes is the same locale, and the operator is a call.
    return std::memcmp(static_cast<const void*>(&global), &classic, sizeof global) == 0 || global == classic;
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
    // That the text is cut at its first null, its line feed with it, is deliberate.
    utility::detail::DeliverLogText(m_pOwner, m_eSeverity, std::wstring_view(text).substr(0, text.find(L'\0')));
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

void CLogStreamHelper::Begin()
{
    m_nLength = 0;
    ::new (&m_strLong) std::wstring();
    ::new (&m_stream) std::optional<CLogStream>();
    // Other locales may group the digits of a number.
    if (!IsGlobalLocaleClassic())
        m_stream.emplace(m_pOwner, m_eSeverity);
}

void CLogStreamHelper::End()
{
    // They are not destroyed.
    struct LeavingNothing
    {
        CLogStreamHelper& helper;
        ~LeavingNothing()
        {
            helper.m_stream.reset();
            if (helper.m_strLong.capacity() != std::wstring().capacity()) [[unlikely]]
                std::wstring().swap(helper.m_strLong);
        }
    } const leavingNothing{*this};
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

void CLogStreamHelper::Apply(std::basic_ostream<wchar_t>& (*manipulator)(std::basic_ostream<wchar_t>&))
{
    constexpr auto endl = &std::endl<wchar_t, std::char_traits<wchar_t>>;
    constexpr auto flush = &std::flush<wchar_t, std::char_traits<wchar_t>>;
    if (manipulator != endl && manipulator != flush)
    {
        Stream() << manipulator;
        return;
    }
    if (m_stream)
    {
        // As the manipulators do it, but that a failure to deliver is not kept from the caller.
        if (manipulator == endl)
            m_stream->put(L'\n');
        if (m_stream->good())
            m_stream->rdbuf()->pubsync();
        return;
    }
    if (manipulator == endl)
        *RoomFor(1) = L'\n';
    Deliver();
}

void CLogStreamHelper::InsertText(std::wstring_view text)
{
    // A null is left to the stream, which cuts the message there.
    if (m_stream || text.find(L'\0') != std::wstring_view::npos)
        Stream() << text;
    else
        AppendText(text);
}

void CLogStreamHelper::InsertText(const wchar_t* text)
{
    if (m_stream || text == nullptr)
        Stream() << text;
    else
        AppendText(text);
}

void CLogStreamHelper::InsertNarrow(std::string_view text)
{
    const std::wstring wide = utility::platform::WideFromCodePage(CP_ACP, text);
    if (m_bEnabled)
        InsertText(wide);
}

/// At the end of the text, which is that much longer then.
wchar_t* CLogStreamHelper::RoomFor(std::size_t length)
{
    if (!m_strLong.empty() || length > std::size(m_szText) - m_nLength) [[unlikely]]
        return LongRoomFor(length);
    m_nLength += length;
    return m_szText + m_nLength - length;
}

[[gnu::noinline]] wchar_t* CLogStreamHelper::LongRoomFor(std::size_t length)
{
    if (m_strLong.empty())
    {
        m_strLong.reserve(2 * (m_nLength + length));
        m_strLong.append(m_szText, m_nLength);
    }
    m_strLong.append(length, L'\0');
    return m_strLong.data() + m_strLong.size() - length;
}

void CLogStreamHelper::AppendText(std::wstring_view text) { std::copy(text.begin(), text.end(), RoomFor(text.size())); }

void CLogStreamHelper::AppendInteger(std::uint64_t magnitude, bool negative)
{
    const std::size_t length = utility::detail::CountDigits(magnitude);
    wchar_t* to = RoomFor((negative ? 1 : 0) + length);
    if (negative)
        *to++ = L'-';
    utility::detail::WriteDigits(to, magnitude, length);
}

// As a stream does it, which on Windows sets the locale of the whole process for a moment meanwhile.
void CLogStreamHelper::AppendReal(double value)
{
    // A stream may round to where the thread rounds, and the sign of what is no number is the system's.
    if (std::isnan(value) || std::fegetround() != FE_TONEAREST)
    {
        Stream() << value;
        return;
    }
    const double magnitude = std::fabs(value);
    if (magnitude >= 1e-4 && magnitude < 999'999.5)
    {
        // No exponent, and no zeros at the end. A value that rounds up to a power of ten gets the same text if it is taken
        // for one below that as if it is taken for the power.
        constexpr double powers[] = {1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5};
        const auto places = std::ranges::count_if(powers, [magnitude](double power) { return power > magnitude; });
        const auto format = [value, places](std::span<wchar_t> text)
        { return FormatFixed(text, value, static_cast<int>(places), false, L".", true); };
        wchar_t text[16];
        if (m_strLong.empty() && std::size(text) <= std::size(m_szText) - m_nLength)
            m_nLength += format(std::span(m_szText).subspan(m_nLength));
        else
            AppendText({text, format(text)});
        return;
    }
    constexpr int digitsOfAStream = 6;
    char text[32];
    const char* const end = std::to_chars(text, std::end(text), value, std::chars_format::general, digitsOfAStream).ptr;
    std::copy(static_cast<const char*>(text), end, RoomFor(static_cast<std::size_t>(end - text)));
}

CLogStream& CLogStreamHelper::Stream()
{
    if (!m_stream)
    {
        m_stream.emplace(m_pOwner, m_eSeverity);
        // A stream keeps the locale that it began with.
        if (!IsGlobalLocaleClassic())
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
        *RoomFor(1) = L'\n';
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

#include "utility/platform/posix/text/CodePages.h"

#include "utility/platform/posix/threads/RuntimeMutex.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <iconv.h>
#include <iterator>
#include <mutex>

namespace utility::platform::posix
{

namespace
{

struct Encoding
{
    UINT codePage;
    const char* name;
};

/// Those that iconv does not know by their numbers.
constexpr Encoding encodings[] = {
    {2, "MACINTOSH"},  {10000, "MACINTOSH"}, {20127, "US-ASCII"}, {20866, "KOI8-R"}, {21866, "KOI8-U"},
    {51932, "EUC-JP"}, {51949, "EUC-KR"},    {54936, "GB18030"},  {65000, "UTF-7"},
};

/// The name under which iconv knows a Windows code page.
std::string EncodingName(UINT codePage)
{
    const auto* const encoding = std::ranges::find(encodings, codePage, &Encoding::codePage);
    if (encoding != std::end(encodings))
        return encoding->name;
    constexpr UINT beforeIso8859 = 28590;
    constexpr UINT iso8859Parts = 16;
    return codePage > beforeIso8859 && codePage <= beforeIso8859 + iso8859Parts
               ? "ISO-8859-" + std::to_string(codePage - beforeIso8859)
               : "CP" + std::to_string(codePage);
}

/// One iconv conversion, in which `substitute` stands for what has no counterpart or is malformed.
class Conversion
{
public:
    Conversion(const std::string& to, const std::string& from)
    {
        const std::lock_guard lock(RuntimeMutex());
        m_descriptor = ::iconv_open(to.c_str(), from.c_str());
    }
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;
    ~Conversion()
    {
        const std::lock_guard lock(RuntimeMutex());
        if (IsOpen())
            ::iconv_close(m_descriptor);
    }

    bool IsOpen() const { return m_descriptor != reinterpret_cast<iconv_t>(std::intptr_t{-1}); }

    template <class In, class Out>
    std::basic_string<Out> Convert(const In* text, std::size_t length, Out substitute) const
    {
        std::basic_string<Out> result;
        char* in = const_cast<char*>(reinterpret_cast<const char*>(text));
        std::size_t inLeft = length * sizeof(In);
        while (!Append(result, &in, &inLeft))
        {
            Finish(result);
            result += substitute;
            in += sizeof(In);
            inLeft -= sizeof(In);
        }
        Finish(result);
        return result;
    }

private:
    /// Appends what the bytes stand for. False where something has no counterpart or is malformed: that is next then.
    template <class Out>
    bool Append(std::basic_string<Out>& result, char** in, std::size_t* inLeft) const
    {
        for (;;)
        {
            Out chunk[256];
            char* out = reinterpret_cast<char*>(chunk);
            std::size_t outLeft = sizeof(chunk);
            const bool failed = ::iconv(m_descriptor, in, inLeft, &out, &outLeft) == static_cast<std::size_t>(-1);
            const int reason = errno;
            result.append(chunk, (sizeof(chunk) - outLeft) / sizeof(Out));
            if (!failed || reason != E2BIG)
                return !failed;
        }
    }

    /// Appends what is held back: a letter whose accent might have followed, or the way back to plain characters.
    template <class Out>
    void Finish(std::basic_string<Out>& result) const
    {
        Append(result, nullptr, nullptr);
    }

    iconv_t m_descriptor;
};

}

std::optional<std::string> Encode(UINT codePage, std::wstring_view text)
{
    const Conversion conversion(EncodingName(codePage), "WCHAR_T");
    return conversion.IsOpen() ? std::optional(conversion.Convert(text.data(), text.size(), '?')) : std::nullopt;
}

std::optional<std::wstring> Decode(UINT codePage, std::string_view text)
{
    const Conversion conversion("WCHAR_T", EncodingName(codePage));
    return conversion.IsOpen() ? std::optional(conversion.Convert(text.data(), text.size(), L'\xFFFD')) : std::nullopt;
}

}

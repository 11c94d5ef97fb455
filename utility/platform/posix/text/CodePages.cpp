#include "utility/platform/posix/text/CodePages.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <iconv.h>

namespace utility::platform::posix
{

namespace
{

/// The name under which iconv knows a Windows code page.
std::string EncodingName(UINT codePage) { return codePage == 54936 ? "GB18030" : "CP" + std::to_string(codePage); }

/// One iconv conversion, in which `substitute` stands for what has no counterpart or is malformed.
class Conversion
{
public:
    Conversion(const std::string& to, const std::string& from) : m_descriptor(::iconv_open(to.c_str(), from.c_str())) {}
    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;
    ~Conversion()
    {
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
        while (inLeft != 0)
        {
            Out chunk[256];
            char* out = reinterpret_cast<char*>(chunk);
            std::size_t outLeft = sizeof(chunk);
            const bool failed = ::iconv(m_descriptor, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1);
            const int reason = errno;
            result.append(chunk, (sizeof(chunk) - outLeft) / sizeof(Out));
            if (failed && reason != E2BIG)
            {
                result += substitute;
                in += sizeof(In);
                inLeft -= sizeof(In);
            }
        }
        return result;
    }

private:
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

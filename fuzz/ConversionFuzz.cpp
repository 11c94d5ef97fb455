// Conversions of arbitrary text through a locale of UTF-8: what is wide came from the same bytes, or there is a
// failure. Searches of the text in itself find no later place than there is.

#include "utility/text/Conversion.h"
#include "utility/text/NarrowText.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <typeinfo>

using tstd::convert_impl::converter;

namespace
{

void Require(bool holds)
{
    if (!holds)
        std::abort();
}

void Convert(const std::string& bytes)
{
    static const std::locale locale("C.UTF-8");
    try
    {
        const std::wstring wide = converter<wchar_t>::convert(bytes, locale);
        // GCC's facet completes a character that a null cuts short by what follows the null.
        Require(bytes.find('\0') != std::string::npos || converter<char>::convert(wide, locale) == bytes);
    }
    catch (const std::bad_cast&)
    {
    }
    std::wstring wide(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(wide.data(), bytes.data(), wide.size() * sizeof(wchar_t));
    try
    {
        Require(converter<wchar_t>::convert(converter<char>::convert(wide, locale), locale) == wide);
    }
    catch (const std::bad_cast&)
    {
    }
}

/// The first byte says how many of the next ones, up to a null, are the pattern.
void Search(const std::string& bytes)
{
    const std::size_t patternSize = bytes.empty() ? 0 : static_cast<unsigned char>(bytes[0]) % 8;
    const std::string pattern = bytes.substr(bytes.empty() ? 0 : 1, patternSize).c_str();
    const std::string text = bytes.substr(bytes.size() / 2);
    const char* const found = strnistr(text.data(), pattern.c_str(), text.size());
    const std::size_t exact = text.find(pattern);
    if (found == nullptr)
        Require(exact == std::string::npos);
    else
        Require(static_cast<std::size_t>(found - text.data()) <= exact &&
                static_cast<std::size_t>(found - text.data()) + pattern.size() <= text.size());
    Require(MBCSByteCount(bytes.c_str()) <= bytes.size());
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    Convert(bytes);
    Search(bytes);
    return 0;
}

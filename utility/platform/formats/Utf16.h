#pragma once

// Wide text as it is stored: in registry values, resource strings and version records it is UTF-16, little-endian, on
// every system, whatever the width of wchar_t.

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace utility::platform::formats
{

/// Wide text as stored. A character that UTF-16 cannot hold becomes U+FFFD; lone surrogates stay as they are.
inline std::u16string Utf16FromWide(std::wstring_view text)
{
    std::u16string stored;
    stored.reserve(text.size());
    for (const wchar_t each : text)
    {
        const auto code = static_cast<char32_t>(each);
        if (sizeof(wchar_t) == sizeof(char16_t) || code < 0x10000)
        {
            stored += static_cast<char16_t>(code);
        }
        else if (code < 0x110000)
        {
            stored += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
            stored += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        }
        else
        {
            stored += u'\xFFFD';
        }
    }
    return stored;
}

/// Stored text as wide text: `units` units of two bytes each, at any address. Lone surrogates stay as they are.
inline std::wstring WideFromUtf16(const void* bytes, std::size_t units)
{
    const auto unitAt = [bytes](std::size_t index)
    {
        char16_t unit = 0;
        std::memcpy(&unit, static_cast<const char*>(bytes) + index * sizeof(unit), sizeof(unit));
        return static_cast<char32_t>(unit);
    };
    std::wstring text;
    text.reserve(units);
    for (std::size_t i = 0; i < units; ++i)
    {
        char32_t code = unitAt(i);
        if (sizeof(wchar_t) > sizeof(char16_t) && (code & 0xFC00) == 0xD800 && i + 1 < units &&
            (unitAt(i + 1) & 0xFC00) == 0xDC00)
            code = 0x10000 + ((code & 0x3FF) << 10) + (unitAt(++i) & 0x3FF);
        text += static_cast<wchar_t>(code);
    }
    return text;
}

}

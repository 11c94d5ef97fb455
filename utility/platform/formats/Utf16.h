#pragma once

// Wide text as it is stored: in registry values, resource strings and version records it is UTF-16, little-endian, on
// every system, whatever the width of wchar_t.

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

namespace utility::platform::formats
{

/// Whether a unit is the first half of a character that takes two.
constexpr bool IsHighSurrogate(char32_t unit) { return (unit & ~char32_t{0x3FF}) == 0xD800; }
/// Whether a unit is the second half.
constexpr bool IsLowSurrogate(char32_t unit) { return (unit & ~char32_t{0x3FF}) == 0xDC00; }
/// The character that both halves make; it is not checked that they are halves.
constexpr char32_t CodePointOf(char32_t high, char32_t low) { return 0x10000 + ((high & 0x3FF) << 10) + (low & 0x3FF); }

/// Appends a code point to a text whose units, be they as narrow as 16 bits, hold UTF-16 then.
template <class Text>
void AppendCodePoint(Text& text, char32_t code)
{
    using Unit = typename Text::value_type;
    if (sizeof(Unit) > sizeof(char16_t) || code < 0x10000)
    {
        text += static_cast<Unit>(code);
        return;
    }
    text += static_cast<Unit>(0xD800 + ((code - 0x10000) >> 10));
    text += static_cast<Unit>(0xDC00 + (code & 0x3FF));
}

/// Wide text as stored. A character that UTF-16 cannot hold becomes U+FFFD; lone surrogates stay as they are.
inline std::u16string Utf16FromWide(std::wstring_view text)
{
    std::u16string stored;
    stored.reserve(text.size());
    for (const wchar_t each : text)
    {
        const auto code = static_cast<char32_t>(each);
        AppendCodePoint(stored, code < 0x110000 ? code : U'\xFFFD');
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
        if (IsHighSurrogate(code) && i + 1 < units && IsLowSurrogate(unitAt(i + 1)))
            code = CodePointOf(code, unitAt(++i));
        AppendCodePoint(text, code);
    }
    return text;
}

}

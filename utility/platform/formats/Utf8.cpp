#include "utility/platform/formats/Utf8.h"

#include "utility/platform/formats/Utf16.h"

namespace utility::platform::formats
{

namespace
{

constexpr wchar_t replacement = 0xFFFD;

bool IsContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

struct Lead
{
    int length;              // of the whole sequence, 0 for a byte that begins none
    unsigned char secondLow; // what the second byte may be: this keeps out overlong forms, surrogates and the beyond
    unsigned char secondHigh;
};

Lead LeadOf(unsigned char byte, Malformed malformed)
{
    if (byte >= 0xC2 && byte <= 0xDF)
        return {2, 0x80, 0xBF};
    if (byte == 0xE0)
        return {3, 0xA0, 0xBF};
    if (byte == 0xED)
        return {3, 0x80, static_cast<unsigned char>(malformed == Malformed::kept ? 0xBF : 0x9F)};
    if (byte >= 0xE1 && byte <= 0xEF)
        return {3, 0x80, 0xBF};
    if (byte == 0xF0)
        return {4, 0x90, 0xBF};
    if (byte >= 0xF1 && byte <= 0xF3)
        return {4, 0x80, 0xBF};
    if (byte == 0xF4)
        return {4, 0x80, 0x8F};
    return {0, 0, 0};
}

}

std::wstring WideFromUtf8(std::string_view text, Malformed malformed)
{
    std::wstring wide;
    wide.reserve(text.size());
    std::size_t i = 0;
    while (i < text.size())
    {
        const auto first = static_cast<unsigned char>(text[i]);
        if (first < 0x80)
        {
            wide += static_cast<wchar_t>(first);
            ++i;
            continue;
        }
        const Lead lead = LeadOf(first, malformed);
        char32_t code = first & (0x7Fu >> lead.length);
        std::size_t good = 1;
        while (good < static_cast<std::size_t>(lead.length) && i + good < text.size())
        {
            const auto next = static_cast<unsigned char>(text[i + good]);
            if (good == 1 ? next < lead.secondLow || next > lead.secondHigh : !IsContinuation(next))
                break;
            code = code << 6 | (next & 0x3Fu);
            ++good;
        }
        if (good == static_cast<std::size_t>(lead.length))
            AppendCodePoint(wide, code);
        else if (malformed == Malformed::escaped)
        {
            for (std::size_t k = 0; k < good; ++k)
                wide += static_cast<wchar_t>(0xDC00 + static_cast<unsigned char>(text[i + k]));
        }
        else
            wide += replacement;
        i += good;
    }
    return wide;
}

std::string Utf8FromWide(std::wstring_view text, Malformed malformed)
{
    std::string bytes;
    bytes.reserve(text.size());
    const auto put = [&bytes](char32_t value) { bytes += static_cast<char>(static_cast<unsigned char>(value)); };
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        auto code = static_cast<char32_t>(text[i]);
        if (malformed == Malformed::escaped && code >= 0xDC80 && code <= 0xDCFF)
        {
            put(code - 0xDC00);
            continue;
        }
        // Wide characters of 32 bits are code points by themselves.
        if (sizeof(wchar_t) == sizeof(char16_t) && IsHighSurrogate(code) && i + 1 < text.size() &&
            IsLowSurrogate(static_cast<char32_t>(text[i + 1])))
            code = CodePointOf(code, static_cast<char32_t>(text[++i]));
        else if (code > 0x10FFFF ||
                 (malformed == Malformed::replaced && (IsHighSurrogate(code) || IsLowSurrogate(code))))
            code = replacement;
        if (code < 0x80)
        {
            put(code);
        }
        else if (code < 0x800)
        {
            put(0xC0 | code >> 6);
            put(0x80 | (code & 0x3F));
        }
        else if (code < 0x10000)
        {
            put(0xE0 | code >> 12);
            put(0x80 | (code >> 6 & 0x3F));
            put(0x80 | (code & 0x3F));
        }
        else
        {
            put(0xF0 | code >> 18);
            put(0x80 | (code >> 12 & 0x3F));
            put(0x80 | (code >> 6 & 0x3F));
            put(0x80 | (code & 0x3F));
        }
    }
    return bytes;
}

}

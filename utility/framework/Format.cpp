#include "utility/framework/internal/Format.h"

#include "utility/platform/formats/Utf16.h"
#include "utility/platform/Text.h"
#include "utility/platform/Types.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string_view>

namespace utility::framework
{

namespace
{

enum class Width
{
    standard,
    byte,       // hh
    narrow,     // h
    wide,       // l, w
    sixtyFour,  // ll, I64, j, z, t, I
    longDouble, // L
};

struct Directive
{
    std::string flags;
    int width = 0;
    int precision = -1;
    Width size = Width::standard;
    wchar_t type = L'\0';

    bool Has(char flag) const { return flags.find(flag) != std::string::npos; }
};

/// Walks a format and takes the arguments that its directives ask for.
class Formatter
{
public:
    Formatter(const wchar_t* format, std::va_list arguments) : m_at(format) { va_copy(m_arguments, arguments); }
    Formatter(const Formatter&) = delete;
    Formatter& operator=(const Formatter&) = delete;
    ~Formatter() { va_end(m_arguments); }

    std::wstring Run()
    {
        while (*m_at != L'\0')
        {
            const wchar_t* const begin = m_at;
            if (*m_at++ != L'%')
                m_result += *begin;
            else if (!Put(Parse()))
                m_result.append(begin, m_at);
        }
        return std::move(m_result);
    }

private:
    Directive Parse()
    {
        Directive directive;
        while (*m_at != L'\0' && std::wcschr(L"-+ #0", *m_at) != nullptr)
            directive.flags += static_cast<char>(*m_at++);
        directive.width = Number();
        if (directive.width < 0)
        {
            directive.flags += '-';
            directive.width = -directive.width;
        }
        if (*m_at == L'.')
        {
            ++m_at;
            directive.precision = Number();
        }
        directive.size = Size();
        directive.type = *m_at;
        if (*m_at != L'\0')
            ++m_at;
        return directive;
    }

    int Number()
    {
        constexpr int limit = 100000; // keeps a damaged format from asking for gigabytes
        if (*m_at == L'*')
        {
            ++m_at;
            const int given = va_arg(m_arguments, int);
            return given < -limit ? -limit : given > limit ? limit : given;
        }
        int number = 0;
        for (; *m_at >= L'0' && *m_at <= L'9'; ++m_at)
            number = number < limit ? number * 10 + static_cast<int>(*m_at - L'0') : limit;
        return number;
    }

    Width Size()
    {
        struct Name
        {
            std::wstring_view letters;
            Width size;
        };
        constexpr Name names[] = {
            {L"hh", Width::byte},     {L"h", Width::narrow},      {L"ll", Width::sixtyFour}, {L"l", Width::wide},
            {L"w", Width::wide},      {L"I64", Width::sixtyFour}, {L"I32", Width::standard}, {L"I", Width::sixtyFour},
            {L"j", Width::sixtyFour}, {L"z", Width::sixtyFour},   {L"t", Width::sixtyFour},  {L"L", Width::longDouble},
        };
        for (const Name& name : names)
        {
            if (std::wcsncmp(m_at, name.letters.data(), name.letters.size()) == 0)
            {
                m_at += name.letters.size();
                return name.size;
            }
        }
        return Width::standard;
    }

    bool Put(const Directive& directive)
    {
        switch (directive.type)
        {
        case L'%':
            m_result += L'%';
            return true;
        case L'c':
        case L'C':
            PutCharacter(directive);
            return true;
        case L's':
        case L'S':
            PutText(directive);
            return true;
        case L'd':
        case L'i':
            PutInteger(directive, Signed(directive.size));
            return true;
        case L'o':
        case L'u':
        case L'x':
        case L'X':
            PutInteger(directive, Unsigned(directive.size));
            return true;
        case L'e':
        case L'E':
        case L'f':
        case L'F':
        case L'g':
        case L'G':
        case L'a':
        case L'A':
            PutReal(directive, directive.size == Width::longDouble
                                   ? static_cast<double>(va_arg(m_arguments, long double))
                                   : va_arg(m_arguments, double));
            return true;
        case L'p':
        {
            Directive digits = directive;
            digits.precision = 16;
            digits.type = L'X';
            PutInteger(digits,
                       static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(va_arg(m_arguments, void*))));
            return true;
        }
        case L'n':
            static_cast<void>(va_arg(m_arguments, void*));
            return true;
        default:
            return false;
        }
    }

    long long Signed(Width size)
    {
        if (size == Width::sixtyFour)
            return va_arg(m_arguments, long long);
        const int value = va_arg(m_arguments, int);
        return size == Width::byte     ? static_cast<signed char>(value)
               : size == Width::narrow ? static_cast<short>(value)
                                       : value;
    }

    unsigned long long Unsigned(Width size)
    {
        if (size == Width::sixtyFour)
            return va_arg(m_arguments, unsigned long long);
        const unsigned int value = va_arg(m_arguments, unsigned int);
        return size == Width::byte     ? static_cast<unsigned char>(value)
               : size == Width::narrow ? static_cast<unsigned short>(value)
                                       : value;
    }

    /// What the runtime's printf makes of a number.
    template <class Value>
    static std::string Printed(const std::string& format, int width, int precision, Value value)
    {
        const int size = std::snprintf(nullptr, 0, format.c_str(), width, precision, value);
        std::string text(size < 0 ? 0 : static_cast<std::size_t>(size), '\0');
        std::snprintf(text.data(), text.size() + 1, format.c_str(), width, precision, value);
        return text;
    }

    template <class Value>
    void PutInteger(const Directive& directive, Value value)
    {
        const std::string text = Printed("%" + directive.flags + "*.*ll" + static_cast<char>(directive.type),
                                         directive.width, directive.precision, value);
        m_result.append(text.begin(), text.end());
    }

    void PutReal(const Directive& directive, double value)
    {
        std::string text =
            Printed("%" + directive.flags + "*.*" + static_cast<char>(directive.type), 0, directive.precision, value);
        // The symbol of the runtime's locale has any number of bytes; nothing else of a number is beyond these.
        constexpr const char* others = "+- 0123456789ABCDEFINPXabcdefinpx";
        const std::size_t symbol = text.find_first_not_of(others);
        if (symbol != std::string::npos)
            text =
                text.substr(0, symbol) + '.' + text.substr(std::min(text.find_first_of(others, symbol), text.size()));
        const auto width = static_cast<std::size_t>(directive.width);
        if (directive.Has('0') && !directive.Has('-') && std::isfinite(value) && width > text.size())
        {
            const bool isHexadecimal = directive.type == L'a' || directive.type == L'A';
            text.insert(text.find_first_of("0123456789") + (isHexadecimal ? 2 : 0), width - text.size(), '0');
        }
        Pad(directive, std::wstring(text.begin(), text.end()));
    }

    static bool IsNarrow(const Directive& directive)
    {
        const bool capital = directive.type == L'S' || directive.type == L'C';
        return directive.size == Width::narrow || (capital && directive.size != Width::wide);
    }

    void PutCharacter(const Directive& directive)
    {
        const int value = va_arg(m_arguments, int);
        std::wstring text;
        if (IsNarrow(directive))
            text = platform::WideFromCodePage(CP_ACP, std::string(1, static_cast<char>(value)));
        else
            platform::formats::AppendCodePoint(text, static_cast<char32_t>(value) < 0x110000
                                                         ? static_cast<char32_t>(value)
                                                         : static_cast<char16_t>(value));
        Pad(directive, text);
    }

    void PutText(const Directive& directive)
    {
        const auto limit = directive.precision < 0 ? SIZE_MAX : static_cast<std::size_t>(directive.precision);
        if (IsNarrow(directive))
        {
            const char* const text = va_arg(m_arguments, const char*);
            Pad(directive, Cut(platform::WideFromCodePage(
                                   CP_ACP, text == nullptr ? "(null)" : std::string(text, ::strnlen(text, limit))),
                               limit));
        }
        else
        {
            const wchar_t* const text = va_arg(m_arguments, const wchar_t*);
            Pad(directive, Cut(text == nullptr ? L"(null)" : std::wstring(text, ::wcsnlen(text, limit)), limit));
        }
    }

    /// As many units of UTF-16 as the limit allows, without half a character at the end.
    static std::wstring Cut(const std::wstring& text, std::size_t limit)
    {
        std::u16string units = platform::formats::Utf16FromWide(text);
        if (units.size() < limit)
            return text;
        units.resize(limit);
        if (!units.empty() && platform::formats::IsHighSurrogate(units.back()))
            units.pop_back();
        return platform::formats::WideFromUtf16(units.data(), units.size());
    }

    void Pad(const Directive& directive, const std::wstring& text)
    {
        const auto width = static_cast<std::size_t>(directive.width);
        const std::size_t size = width == 0 ? 0 : platform::formats::Utf16FromWide(text).size();
        const std::size_t blanks = width > size ? width - size : 0;
        const bool left = directive.Has('-');
        m_result.append(left ? 0 : blanks, L' ').append(text).append(left ? blanks : 0, L' ');
    }

    const wchar_t* m_at;
    std::va_list m_arguments;
    std::wstring m_result;
};

}

std::wstring FormatWide(const wchar_t* format, std::va_list arguments) { return Formatter(format, arguments).Run(); }

}

#pragma once

#include <locale>
#include <string>

namespace support
{

/// Makes another locale the global one for a scope.
class GlobalLocale
{
public:
    explicit GlobalLocale(const std::locale& locale) : m_earlier(std::locale::global(locale)) {}
    GlobalLocale(const GlobalLocale&) = delete;
    GlobalLocale& operator=(const GlobalLocale&) = delete;
    ~GlobalLocale() { std::locale::global(m_earlier); }

private:
    std::locale m_earlier;
};

/// Digits in groups of three, and true is "yes".
template <class Character>
class Grouping : public std::numpunct<Character>
{
public:
    explicit Grouping(char separator) : m_separator(static_cast<Character>(separator)) {}

private:
    Character do_thousands_sep() const override { return m_separator; }
    std::string do_grouping() const override { return "\3"; }
    std::basic_string<Character> do_truename() const override { return {'y', 'e', 's'}; }

    Character m_separator;
};

/// The classic locale with grouped digits in narrow and wide streams.
inline std::locale GroupingLocale(char separator = '_')
{
    return {std::locale(std::locale::classic(), new Grouping<char>(separator)), new Grouping<wchar_t>(separator)};
}

}

#include "utility/text/Conversion.h"

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

using tstd::convert_impl::converter;

TEST(ConversionTest, LocaleOfUtf8ConvertsWholeCharactersAlone)
{
    const std::locale locale("C.UTF-8");
    const std::string text("\xC3\xBC\0\xE9\x89\x84\xF0\x9F\x98\x80", 10);
    const std::wstring wide(L"\u00FC\0\u9244\U0001F600", 4);
    EXPECT_EQ(converter<wchar_t>::convert(text, locale), wide);
    EXPECT_EQ(converter<char>::convert(wide, locale), text);
    for (const char* bad : {"a\xC3", "\xE9\x89", "\xFD\x8A", "\xFF", "a\xC3z", "\xED\xA0\x80"})
        EXPECT_THROW(static_cast<void>(converter<wchar_t>::convert(bad, locale)), std::bad_cast) << bad;
    EXPECT_THROW(static_cast<void>(converter<char>::convert(L"a\xD800", locale)), std::bad_cast);
}

TEST(ConversionTest, TagsThatTheLocaleDoesNotHaveThrowBadCastAndDoNotEndTheProcess)
{
    for (const wchar_t tag : {L'\U000E0000', L'\U000E0041', L'\U000E007F'})
    {
        for (const std::wstring& text :
             {std::wstring(1, tag), L"a" + std::wstring(2, tag), tag + std::wstring(L"\0b", 2)})
        {
            EXPECT_THROW(static_cast<void>(converter<char>::convert(text, std::locale::classic())), std::bad_cast);
            const std::locale unicode("C.UTF-8");
            EXPECT_EQ(converter<wchar_t>::convert(converter<char>::convert(text, unicode), unicode), text);
        }
    }
    for (const wchar_t next : {L'\U000DFFFF', L'\U000E0080'})
        EXPECT_THROW(static_cast<void>(converter<char>::convert({next}, std::locale::classic())), std::bad_cast);
}

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

#include "utility/text/Conversion.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <typeinfo>

namespace
{

using Facet = std::codecvt<wchar_t, char, std::mbstate_t>;
using ToWide = tstd::convert_impl::converter<wchar_t>;
using ToNarrow = tstd::convert_impl::converter<char>;

/// A facet that notes what it is called with, writes three characters and gives the result that it is told.
class NotingFacet : public Facet
{
public:
    explicit NotingFacet(result given, int longest = 4) : m_given(given), m_longest(longest) {}

    bool endsWithinACharacter = false;
    mutable int calls = 0;
    mutable std::size_t taken = 0;
    mutable std::wstring room;

protected:
    result do_in(state_type& state, const char* from, const char* fromEnd, const char*& fromNext, wchar_t* to,
                 wchar_t* toEnd, wchar_t*& toNext) const override
    {
        return Note(state, from, fromEnd, fromNext, to, toEnd, toNext);
    }
    result do_out(state_type& state, const wchar_t* from, const wchar_t* fromEnd, const wchar_t*& fromNext, char* to,
                  char* toEnd, char*& toNext) const override
    {
        return Note(state, from, fromEnd, fromNext, to, toEnd, toNext);
    }
    int do_max_length() const noexcept override { return m_longest; }
    bool do_always_noconv() const noexcept override { return m_given == noconv; }

private:
    template <class From, class To>
    result Note(state_type& state, const From* from, const From* fromEnd, const From*& fromNext, To* to, To* toEnd,
                To*& toNext) const
    {
        ++calls;
        taken = static_cast<std::size_t>(fromEnd - from);
        room.assign(to, toEnd);
        EXPECT_TRUE(std::mbsinit(&state));
        if (endsWithinACharacter)
            std::memset(&state, 1, sizeof(state));
        fromNext = fromEnd;
        toNext = to;
        for (const char c : {'x', 'y', 'z'})
            *toNext++ = static_cast<To>(c);
        return m_given;
    }

    result m_given;
    int m_longest;
};

struct LocaleOf
{
    explicit LocaleOf(NotingFacet* made) : facet(made), locale(std::locale::classic(), made) {}

    NotingFacet* facet;
    std::locale locale;
};

}

TEST(ConversionTest, ConvertersHoldNothing)
{
    static_assert(std::is_empty_v<ToWide> && std::is_empty_v<ToNarrow>);
    ToWide one;
    const ToWide other;
    EXPECT_EQ(&(one = other), &one);
}

TEST(ConversionTest, ClassicLocaleConvertsAscii)
{
    const std::string text("all of it, \0 too", 16);
    const std::wstring wide(text.begin(), text.end());
    EXPECT_EQ(ToWide::convert(text, std::locale::classic()), wide);
    EXPECT_EQ(ToNarrow::convert(wide, std::locale::classic()), text);
}

TEST(ConversionTest, EmptyTextIsNotShownToTheFacet)
{
    const LocaleOf failing(new NotingFacet(Facet::error));
    EXPECT_EQ(ToWide::convert("", failing.locale), L"");
    EXPECT_EQ(ToNarrow::convert(L"", failing.locale), "");
    EXPECT_EQ(failing.facet->calls, 0);
}

TEST(ConversionTest, ResultEndsWhereTheFacetSays)
{
    const LocaleOf good(new NotingFacet(Facet::ok));
    EXPECT_EQ(ToWide::convert("ab", good.locale), L"xyz");
    EXPECT_EQ(ToNarrow::convert(L"ab", good.locale), "xyz");
    EXPECT_EQ(good.facet->calls, 2);
}

TEST(ConversionTest, RoomIsDeliberatelyASumOneWayAndAProductTheOther)
{
    const LocaleOf good(new NotingFacet(Facet::ok, 6));
    EXPECT_EQ(ToWide::convert("abcde", good.locale), L"xyz");
    EXPECT_EQ(good.facet->taken, 5u);
    EXPECT_EQ(good.facet->room, std::wstring(6 + 5, L' '));
    EXPECT_EQ(ToNarrow::convert(L"abcd", good.locale), "xyz");
    EXPECT_EQ(good.facet->taken, 4u);
    EXPECT_EQ(good.facet->room, std::wstring(6 * 4, L' '));
}

TEST(ConversionTest, AnythingButOkThrowsBadCast)
{
    for (const auto result : {Facet::error, Facet::partial, Facet::noconv})
    {
        const LocaleOf failing(new NotingFacet(result));
        EXPECT_THROW(static_cast<void>(ToWide::convert("ab", failing.locale)), std::bad_cast);
        EXPECT_THROW(static_cast<void>(ToNarrow::convert(L"ab", failing.locale)), std::bad_cast);
        EXPECT_EQ(failing.facet->calls, 2);
    }
}

TEST(ConversionTest, TextThatEndsWithinACharacterThrowsBadCastThoughTheFacetSaysOk)
{
    const LocaleOf facet(new NotingFacet(Facet::ok));
    facet.facet->endsWithinACharacter = true;
    EXPECT_THROW(static_cast<void>(ToWide::convert("ab", facet.locale)), std::bad_cast);
    EXPECT_THROW(static_cast<void>(ToNarrow::convert(L"ab", facet.locale)), std::bad_cast);
}

TEST(ConversionTest, WhatTheLocaleDoesNotHaveThrowsBadCast)
{
    EXPECT_THROW(static_cast<void>(ToNarrow::convert(L"\u9244", std::locale::classic())), std::bad_cast);
}

#include "utility/text/SetCLocale.h"

#include "tests/support/DecimalComma.h"
#include "tests/support/ForwardingLocale.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <type_traits>

namespace
{

std::string HalfAsText()
{
    char text[32];
    std::snprintf(text, sizeof(text), "%.1f", 0.5);
    return text;
}

double ParsedHalf() { return std::strtod("0.5", nullptr); }

class SetCLocaleTest : public ::testing::Test
{
protected:
    SetCLocaleTest() { EXPECT_EQ(HalfAsText(), "0,5"); }

    const support::DecimalComma m_comma;
};

}

TEST_F(SetCLocaleTest, HasNoVirtualOperations) { static_assert(!std::is_polymorphic_v<CSetCLocale>); }

TEST_F(SetCLocaleTest, PointIsTheDecimalSymbolInsideAndTheEarlierOneAfterIt)
{
    EXPECT_EQ(ParsedHalf(), 0.0);
    {
        const CSetCLocale cLocale;
        EXPECT_EQ(HalfAsText(), "0.5");
        EXPECT_EQ(ParsedHalf(), 0.5);
    }
    EXPECT_EQ(HalfAsText(), "0,5");
    EXPECT_EQ(ParsedHalf(), 0.0);
}

TEST_F(SetCLocaleTest, OneMayBeInsideAnother)
{
    {
        const CSetCLocale outer;
        {
            const CSetCLocale inner;
            EXPECT_EQ(HalfAsText(), "0.5");
        }
        EXPECT_EQ(HalfAsText(), "0.5");
    }
    EXPECT_EQ(HalfAsText(), "0,5");
}

TEST_F(SetCLocaleTest, CopyPutsBackTheSame)
{
    {
        const CSetCLocale original;
        {
            const auto copy = std::make_unique<CSetCLocale>(original);
            EXPECT_EQ(HalfAsText(), "0.5");
        }
        EXPECT_EQ(HalfAsText(), "0,5");
    }
    EXPECT_EQ(HalfAsText(), "0,5");
    {
        std::unique_ptr<CSetCLocale> copy;
        {
            const CSetCLocale original;
            copy = std::make_unique<CSetCLocale>(original);
        }
        EXPECT_EQ(HalfAsText(), "0,5");
    }
    EXPECT_EQ(HalfAsText(), "0,5");
}

TEST_F(SetCLocaleTest, AssignedObjectPutsBackWhatItWasGiven)
{
    {
        CSetCLocale target;
        target = CSetCLocale(target);
        EXPECT_EQ(HalfAsText(), "0,5");
    }
    EXPECT_EQ(HalfAsText(), "0,5");
}

TEST_F(SetCLocaleTest, WhatItFoundIsPutBackOnceForEachObject)
{
    struct CountingLocale : support::ForwardingLocale
    {
        utility::platform::RuntimeLocale UseCLocale() override { return {L"found", 7, this}; }
        void UseRuntimeLocale(const utility::platform::RuntimeLocale& earlier) override
        {
            EXPECT_EQ(earlier.name, L"found");
            EXPECT_EQ(earlier.mode, 7);
            EXPECT_EQ(earlier.own, this);
            ++restored;
        }
        int restored = 0;
    } locale;
    {
        const CSetCLocale original;
        CSetCLocale copy(original);
        copy = original;
        EXPECT_EQ(locale.restored, 0);
    }
    EXPECT_EQ(locale.restored, 2);
}

#include "utility/units/Distances.h"

#include "tests/support/DistanceParseModel.h"
#include "tests/support/Doubles.h"
#include "tests/support/GlobalLocale.h"
#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"
#include "utility/numbers/FloatFormat.h"
#include "utility/settings/internal/LibraryResources.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace
{

/// Leaves the process in millimetres.
class DistancesTest : public testing::Test
{
protected:
    ~DistancesTest() override { SetDistanceUnits(DISTANCE_UNITS_MM); }
};

struct UnitRow
{
    DISTANCE_UNITS units;
    float scale;
    int places;
    const wchar_t* singular;
    const wchar_t* plural;
    const char* name;
};

class DistanceUnitTable : public DistancesTest, public testing::WithParamInterface<UnitRow>
{
};

INSTANTIATE_TEST_SUITE_P(Units, DistanceUnitTable,
                         testing::Values(UnitRow{DISTANCE_UNITS_MM, 1.0F, 4, L"mm", L"mm", "Millimetre"},
                                         UnitRow{DISTANCE_UNITS_INCH, 25.4F, 6, L"inch", L"inches", "Inch"},
                                         UnitRow{DISTANCE_UNITS_METRE, 1000.0F, 6, L"metre", L"metres", "Metre"}),
                         [](const auto& row) { return row.param.name; });

TEST_P(DistanceUnitTable, HasItsScalePlacesAndWords)
{
    const UnitRow& row = GetParam();
    SetDistanceUnits(row.units);
    EXPECT_EQ(GetDistanceUnits(), row.units);
    EXPECT_EQ(GetDistanceScale(), row.scale);
    EXPECT_EQ(DialogDecimalPlaces(), row.places);
    EXPECT_EQ(GetDistanceDescription(false), row.singular);
    EXPECT_EQ(GetDistanceDescription(true), row.plural);
    SetDistanceUnits(DISTANCE_UNITS_MM);
    EXPECT_EQ(GetDistanceScale(row.units), row.scale);
}

TEST_F(DistancesTest, UnitsAreMillimetresAtFirst)
{
    EXPECT_EQ(GetDistanceUnits(), DISTANCE_UNITS_MM);
    EXPECT_EQ(DialogDecimalPlaces(), 4);
}

TEST_F(DistancesTest, SettingTheUnitsReplacesThePlacesOfDialogs)
{
    SetDialogDecimalPlaces(2);
    SetDistanceUnits(DISTANCE_UNITS_MM);
    EXPECT_EQ(DialogDecimalPlaces(), 4);
}

TEST_F(DistancesTest, ScaleOfAnInchIsDeliberatelyAFloatAlsoWhereItIsWidened)
{
    const double scale = GetDistanceScale(DISTANCE_UNITS_INCH);
    EXPECT_EQ(scale, 25.399999618530273);
    EXPECT_EQ(to_wstring(254.0 / scale, 8), L"10.00000015");
}

TEST_F(DistancesTest, WordsDoNotFollowALaterChangeOfLanguage)
{
    support::TableModules modules;
    modules.strings[{utility::detail::LibraryResources().GetResourceDLL(), 8306}] = L"pollici";
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    SetDistanceUnits(DISTANCE_UNITS_INCH);
    EXPECT_EQ(utility::detail::LibraryString(8306), L"pollici");
    EXPECT_EQ(GetDistanceDescription(true), L"inches");
}

struct ParseRow
{
    const wchar_t* text;
    double value;
    bool isWhole;
    const char* name;
};

class ParseDistanceTable : public testing::TestWithParam<ParseRow>
{
};

INSTANTIATE_TEST_SUITE_P(
    Texts, ParseDistanceTable,
    testing::Values(ParseRow{L"10", 254.0, true, "NumberAlone"}, ParseRow{L"10 in", 254.0, true, "TwoLetters"},
                    ParseRow{L"10 cm", 254.0, true, "AnyTwoLetters"},
                    ParseRow{L"10inch", 254.0, false, "WordAtTheNumber"}, ParseRow{L"10 inch", 254.0, false, "Inch"},
                    ParseRow{L"10 inches", 254.0, false, "Inches"}, ParseRow{L"10 metre", 254.0, false, "Metre"},
                    ParseRow{L"10 metres", 254.0, false, "Metres"},
                    ParseRow{L"10 mm", 254.0, false, "MillimetresAreBeyondTheEnd"},
                    ParseRow{L"10 MM", 254.0, false, "MillimetresInCapitals"},
                    ParseRow{L"10 m", 254.0, false, "OneLetterIsBeyondTheEnd"},
                    ParseRow{L"10 in ", 254.0, true, "BlankBehindTwoLetters"},
                    ParseRow{L"10 mm ", 254.0, true, "BlankBehindMillimetres"},
                    ParseRow{L"10 m ", 254.0, true, "LetterAndBlank"}, ParseRow{L"10 5", 254.0, false, "SecondNumber"},
                    ParseRow{L"10 \"", 254.0, false, "NoLetter"},
                    ParseRow{L"10in5", 254.0, false, "DigitBehindTheWord"}, ParseRow{L"ten", 0.0, false, "NoNumber"},
                    ParseRow{L"to", 0.0, true, "TwoLettersAlone"}, ParseRow{L"", 0.0, true, "Empty"},
                    ParseRow{L" \t\n ", 0.0, true, "Blanks"}, ParseRow{L"\t10\n", 254.0, true, "BlanksAroundANumber"},
                    ParseRow{L"-1e1", -254.0, true, "Exponent"}, ParseRow{L"1,5 in", 25.4, false, "OtherSymbol"}),
    [](const auto& row) { return row.param.name; });

TEST_P(ParseDistanceTable, GivesTheScaledNumberAndWhetherAllWasRead)
{
    double value = -77.0;
    EXPECT_EQ(QLMParseDistance(GetParam().text, value, 25.4), GetParam().isWhole);
    EXPECT_EQ(value, GetParam().value);
}

TEST(ParseDistanceTest, DeliberatelyOnlyTheLettersOfAWordAreCountedAndTheWordNeverCounts)
{
    double value = 0.0;
    EXPECT_TRUE(QLMParseDistance(L"1 xy", value, 25.4));
    EXPECT_EQ(value, 25.4);
    EXPECT_FALSE(QLMParseDistance(L"1 inch", value, 1000.0));
    EXPECT_EQ(value, 1000.0);
}

TEST(ParseDistanceTest, ScaleMayBeAnything)
{
    double value = 0.0;
    EXPECT_TRUE(QLMParseDistance(L"2", value, -0.5));
    EXPECT_EQ(value, -1.0);
    EXPECT_TRUE(QLMParseDistance(L"2", value, 0.0));
    EXPECT_EQ(value, 0.0);
    EXPECT_TRUE(QLMParseDistance(L"2", value, std::numeric_limits<double>::quiet_NaN()));
    EXPECT_TRUE(std::isnan(value));
}

TEST(ParseDistanceTest, EveryWordInAnyCaseAndWhatFollowsIsReadAsStepByStep)
{
    const wchar_t* const words[] = {L"mm",     L"inch", L"inches",       L"metre",
                                    L"metres", L"m",    L"\u00E4\u00F6", L"\u6BEB\u7C73"};
    const wchar_t* const tails[] = {L"",   L" ",   L"s", L"x",   L"5",  L".",      L"-",  L"\u00A0",
                                    L" 5", L" mm", L"e", L"1e5", L"\n", L"\u00E9", L"mm", L"\U0001F600"};
    for (const std::wstring word : words)
    {
        for (unsigned capitals = 0; capitals < 1U << word.size(); ++capitals)
        {
            std::wstring typed = word;
            for (std::size_t at = 0; at < typed.size(); ++at)
            {
                if ((capitals >> at & 1) != 0)
                    typed[at] = std::toupper(typed[at], std::locale::classic());
            }
            for (const wchar_t* const tail : tails)
            {
                for (const wchar_t* const number : {L"", L"2", L"2 ", L" -2.5e0\t"})
                {
                    const std::wstring text = number + typed + tail;
                    const support::ParsedDistance expected = support::ModelParseDistance(text, 25.4);
                    double value = -77.0;
                    EXPECT_EQ(QLMParseDistance(text.c_str(), value, 25.4), expected.isWhole)
                        << testing::PrintToString(text);
                    EXPECT_EQ(value, expected.value) << testing::PrintToString(text);
                }
            }
        }
    }
}

TEST(ParseDistanceTest, TextsOfAnyLengthAndCharactersAreReadAsStepByStep)
{
    std::mt19937 random(20261122);
    constexpr wchar_t alphabet[] = L"0123456789.,+-eEdD \tmMiInNcChHsStTrR\x00E9\x00A0\x0130\x0131\xFFFF";
    for (const std::size_t length : {0, 1, 2, 3, 5, 8, 20, 100, 45, 46, 1000, 100'000})
    {
        for (int turn = 0; turn < (length > 1000 ? 3 : 300); ++turn)
        {
            std::wstring text;
            for (std::size_t at = 0; at < length; ++at)
                text += turn % 3 == 0 ? static_cast<wchar_t>(1 + random() % 0xFFFF)
                                      : alphabet[random() % (std::size(alphabet) - 1)];
            const support::ParsedDistance expected = support::ModelParseDistance(text, 25.4);
            double value = -77.0;
            EXPECT_EQ(QLMParseDistance(text.c_str(), value, 25.4), expected.isWhole) << testing::PrintToString(text);
            EXPECT_TRUE(support::Same(value, expected.value));
        }
    }
}

TEST(ParseDistanceTest, LettersAreComparedInTheGlobalLocale)
{
    /// Its capital of every letter is X.
    class OneCapital : public std::ctype<wchar_t>
    {
        wchar_t do_toupper(wchar_t) const override { return L'X'; }
    };
    double value = 0.0;
    EXPECT_TRUE(QLMParseDistance(L"1 in", value, 1.0));
    const support::GlobalLocale scope(std::locale(std::locale::classic(), new OneCapital));
    // Now it is the word of millimetres, and so the letters of the next word, inch, are passed over.
    EXPECT_FALSE(QLMParseDistance(L"1 in", value, 1.0));
}

}

#include "utility/units/DialogData.h"

#include "tests/support/Doubles.h"
#include "tests/support/RecordingForm.h"
#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"
#include "utility/numbers/FloatFormat.h"
#include "utility/units/Distances.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

using support::IsRefused;
using support::quietNan;
using support::RecordingForm;

namespace
{

constexpr int field = 1001;

/// A form with one field. Leaves the process in millimetres.
class DialogDataTest : public testing::Test
{
protected:
    DialogDataTest() { m_form.fields[field] = L"as it was"; }
    ~DialogDataTest() override { SetDistanceUnits(DISTANCE_UNITS_MM); }

    RecordingForm m_form;
    CDataExchange m_show{m_form, false};
    CDataExchange m_save{m_form, true};
};

struct ShownRow
{
    std::function<void(CDataExchange*)> show;
    DISTANCE_UNITS units;
    const wchar_t* text;
    const char* name;
};

class ShownNumber : public DialogDataTest, public testing::WithParamInterface<ShownRow>
{
};

template <class Value>
std::function<void(CDataExchange*)> TextOf(Value value)
{
    return [value](CDataExchange* exchange) { DDX_Text(exchange, field, value); };
}

template <class Value>
std::function<void(CDataExchange*)> LengthOf(Value value)
{
    return [value](CDataExchange* exchange) { DDX_Distance(exchange, field, value); };
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, ShownNumber,
    testing::Values(ShownRow{TextOf(1.5), DISTANCE_UNITS_MM, L"1.5", "Fraction"},
                    ShownRow{TextOf(2.0), DISTANCE_UNITS_MM, L"2", "WholeNumberWithoutASymbol"},
                    ShownRow{TextOf(0.00001), DISTANCE_UNITS_MM, L"0", "TooSmallForThePlaces"},
                    ShownRow{TextOf(-1.25), DISTANCE_UNITS_MM, L"-1.25", "Negative"},
                    ShownRow{TextOf(0.1F), DISTANCE_UNITS_METRE, L"0.1", "Float"},
                    ShownRow{TextOf(16777.217F), DISTANCE_UNITS_METRE, L"16777.216797", "FloatIsWidened"},
                    ShownRow{TextOf(25.4), DISTANCE_UNITS_INCH, L"25.4", "TextHasNoUnit"},
                    ShownRow{LengthOf(25.4F), DISTANCE_UNITS_INCH, L"1", "FloatLengthIsDividedAsAFloat"},
                    ShownRow{LengthOf(254.0), DISTANCE_UNITS_INCH, L"10", "DoubleLength"},
                    ShownRow{LengthOf(2.54e7), DISTANCE_UNITS_INCH, L"1000000.015018", "DoubleLengthByTheWidenedScale"},
                    ShownRow{LengthOf(1500.0), DISTANCE_UNITS_METRE, L"1.5", "Metres"},
                    ShownRow{LengthOf(1500.0F), DISTANCE_UNITS_MM, L"1500", "Millimetres"}),
    [](const auto& row) { return row.param.name; });

TEST_P(ShownNumber, IsWrittenInBothDirections)
{
    SetDistanceUnits(GetParam().units);
    GetParam().show(&m_show);
    EXPECT_EQ(m_form.fields[field], GetParam().text);
    m_form.fields[field] = L"typed";
    GetParam().show(&m_save);
    EXPECT_EQ(m_form.fields[field], GetParam().text);
    // Also what stands there already.
    GetParam().show(&m_save);
    EXPECT_EQ(m_form.written, 3);
    EXPECT_TRUE(m_form.limits.empty());
}

TEST_F(DialogDataTest, FloatLengthThatIsShownOnlyIsDividedAsAFloatAndOneThatIsTypedAsADouble)
{
    SetDistanceUnits(DISTANCE_UNITS_INCH);
    SetDialogDecimalPlaces(15);
    float value = 100.0F;
    DDX_Distance(&m_show, field, std::as_const(value));
    EXPECT_EQ(m_form.fields[field], to_wstring(100.0F / 25.4F, 15, false, GetDecimalSymbol(), true));
    const std::wstring divided = m_form.fields[field];
    DDX_Distance(&m_show, field, value);
    EXPECT_EQ(m_form.fields[field],
              to_wstring(100.0 / static_cast<double>(25.4F), 15, false, GetDecimalSymbol(), true));
    EXPECT_NE(m_form.fields[field], divided);
}

TEST_F(DialogDataTest, LengthIsShownInTheUnitAndTypedBack)
{
    SetDistanceUnits(DISTANCE_UNITS_INCH);
    float narrow = 12.7F;
    double wide = 12.7F;
    DDX_Distance(&m_show, field, narrow);
    EXPECT_EQ(m_form.fields[field], L"0.5");
    EXPECT_EQ(narrow, 12.7F);
    DDX_Distance(&m_show, field, wide);
    EXPECT_EQ(m_form.fields[field], L"0.5");

    m_form.fields[field] = L" 0.1 in";
    DDX_Distance(&m_save, field, narrow);
    DDX_Distance(&m_save, field, wide);
    EXPECT_EQ(wide, 0.1 * static_cast<double>(25.4F));
    EXPECT_EQ(narrow, static_cast<float>(wide));
    EXPECT_EQ(m_form.fields[field], L" 0.1 in");
    EXPECT_TRUE(m_form.boxes.empty());
    EXPECT_TRUE(m_form.focused.empty());
}

TEST_F(DialogDataTest, LengthMayHaveAScaleOfItsOwn)
{
    SetDistanceUnits(DISTANCE_UNITS_INCH);
    double value = 5.0;
    DDX_Distance(&m_show, field, value, 10.0);
    EXPECT_EQ(m_form.fields[field], L"0.5");
    m_form.fields[field] = L"0.25";
    DDX_Distance(&m_save, field, value, 10.0);
    EXPECT_EQ(value, 2.5);
}

TEST_F(DialogDataTest, EmptyControlIsAZero)
{
    double value = 5.0;
    m_form.fields[field].clear();
    DDX_Distance(&m_save, field, value);
    EXPECT_TRUE(support::Same(value, 0.0));
}

TEST_F(DialogDataTest, TextBehindFortyFiveCharactersIsDeliberatelyNotSeen)
{
    double value = 0.0;
    m_form.fields[field] = std::wstring(44, L'0') + L"7";
    DDX_Distance(&m_save, field, value);
    EXPECT_EQ(value, 7.0);
    m_form.fields[field] = std::wstring(45, L'0') + L"7 is not seen";
    DDX_Distance(&m_save, field, value);
    EXPECT_EQ(value, 0.0);
    EXPECT_EQ(m_form.limits, (std::vector<int>{46, 46}));
}

TEST_F(DialogDataTest, TextThatIsNoLengthIsRefusedAndNothingIsStored)
{
    for (const wchar_t* const text : {L"ten", L"1 inch", L"1 mm", L"1,5", L"1 2", L"x"})
    {
        m_form.fields[field] = text;
        m_form.boxes.clear();
        m_form.focused.clear();
        float narrow = 5.0F;
        double wide = 5.0;
        EXPECT_TRUE(IsRefused([&] { DDX_Distance(&m_save, field, narrow); }));
        EXPECT_TRUE(IsRefused([&] { DDX_Distance(&m_save, field, wide); }));
        EXPECT_TRUE(IsRefused([&] { DDX_Distance(&m_save, field, wide, 1.0); }));
        EXPECT_EQ(narrow, 5.0F);
        EXPECT_EQ(wide, 5.0);
        EXPECT_EQ(m_form.boxes, std::vector(3, RecordingForm::Box{L"Please enter a number.", 0, -1}));
        EXPECT_EQ(m_form.focused, (std::vector<int>{field, field, field}));
    }
}

TEST_F(DialogDataTest, FieldThatIsGoneIsToldToTheProgram)
{
    m_form.fields.clear();
    double value = 5.0;
    EXPECT_TRUE(support::EndsIn<CNotSupportedException>([&] { DDX_Distance(&m_save, field, value); }));
    EXPECT_TRUE(support::EndsIn<CNotSupportedException>([&] { DDX_Distance(&m_show, field, value); }));
    EXPECT_TRUE(support::EndsIn<CNotSupportedException>([&] { DDX_Text(&m_show, field, 1.0); }));
    EXPECT_EQ(value, 5.0);
    EXPECT_EQ(m_form.written, 0);
}

struct Member
{
    const char* name;
    std::function<void(CDataExchange*, double, double)> call;
    bool passesBelow;
    bool passesAt;
    bool passesAbove;
    bool passesNan;
    const wchar_t* words;
};

#define MEMBER(function, type)                                                                                         \
#function "Of_" #type, [](CDataExchange * exchange, double value, double bound)                                    \
    { function(exchange, static_cast<type>(value), static_cast<type>(bound)); }

constexpr const wchar_t* atLeastWords = L"Please enter a number greater than or equal to ";
constexpr const wchar_t* atMostWords = L"Please enter a number less than or equal to ";
constexpr const wchar_t* greaterWords = L"Please enter a number greater than ";
constexpr const wchar_t* lessWords = L"Please enter a number less than ";
constexpr const wchar_t* otherWords = L"Please enter a number other than ";

// Which values pass: less than the bound, the bound, greater ones, a NaN.
const Member members[] = {
    {MEMBER(DDV_MinFloat, float), false, true, true, false, atLeastWords},
    {MEMBER(DDV_MaxFloat, float), true, true, false, true, atMostWords},
    {MEMBER(DDV_MinFloatEx, float), false, false, true, false, greaterWords},
    {MEMBER(DDV_MaxFloatEx, float), true, false, false, true, lessWords},
    {MEMBER(DDV_FloatEx, float), true, false, true, false, otherWords},
    {MEMBER(DDV_MinDouble, double), false, true, true, true, atLeastWords},
    {MEMBER(DDV_MaxDouble, double), true, true, false, false, atMostWords},
    {MEMBER(DDV_MinDoubleEx, double), false, false, true, true, greaterWords},
    {MEMBER(DDV_MaxDoubleEx, double), true, false, false, false, lessWords},
    {MEMBER(DDV_DoubleEx, double), true, false, true, false, otherWords},
    {MEMBER(DDV_MinDistance, float), false, true, true, false, atLeastWords},
    {MEMBER(DDV_MaxDistance, float), true, true, false, true, atMostWords},
    {MEMBER(DDV_MinDistanceEx, float), false, false, true, false, greaterWords},
    {MEMBER(DDV_MaxDistanceEx, float), true, false, false, true, lessWords},
    {MEMBER(DDV_DistanceEx, float), true, false, true, false, otherWords},
    {MEMBER(DDV_MinDistance, double), false, true, true, false, atLeastWords},
    {MEMBER(DDV_MaxDistance, double), true, true, false, true, atMostWords},
    {MEMBER(DDV_MinDistanceEx, double), false, false, true, false, greaterWords},
    {MEMBER(DDV_MaxDistanceEx, double), true, false, false, true, lessWords},
    {MEMBER(DDV_DistanceEx, double), true, false, true, false, otherWords},
};

class ValidationTable : public DialogDataTest, public testing::WithParamInterface<Member>
{
protected:
    /// Holds a value against a bound, in both directions, and what the user is told of it against this.
    void Expect(bool passes, double value, double bound, const std::wstring& told)
    {
        for (CDataExchange* const exchange : {&m_save, &m_show})
        {
            exchange->PrepareEditCtrl(field);
            m_form.boxes.clear();
            m_form.focused.clear();
            EXPECT_EQ(!passes, IsRefused([&] { GetParam().call(exchange, value, bound); })) << value;
            if (passes)
            {
                EXPECT_TRUE(m_form.boxes.empty());
                EXPECT_TRUE(m_form.focused.empty());
            }
            else
            {
                EXPECT_EQ(m_form.boxes, std::vector(1, RecordingForm::Box{GetParam().words + told + L".", 0x30, 0}));
                EXPECT_EQ(m_form.focused, std::vector<int>{field});
            }
        }
        EXPECT_EQ(m_form.fields[field], L"as it was");
    }
};

INSTANTIATE_TEST_SUITE_P(Members, ValidationTable, testing::ValuesIn(members),
                         [](const auto& member) { return member.param.name; });

TEST_P(ValidationTable, ValueIsHeldAgainstTheBoundAndTheUserIsToldTheBound)
{
    Expect(GetParam().passesBelow, 0.25, 0.5, L"0.5");
    Expect(GetParam().passesAt, 0.5, 0.5, L"0.5");
    Expect(GetParam().passesAbove, 0.75, 0.5, L"0.5");
    Expect(GetParam().passesBelow, 1.0, 2.0, L"2");
    Expect(GetParam().passesAt, 0.0, -0.0, L"0");
    Expect(GetParam().passesBelow, -support::infinity, -1.5, L"-1.5");
    Expect(GetParam().passesAbove, support::infinity, -1.5, L"-1.5");
}

TEST_P(ValidationTable, NanDeliberatelyFallsToTheSideThatIsItsOwn)
{
    Expect(GetParam().passesNan, quietNan, 0.5, L"0.5");
    Expect(GetParam().passesNan, -quietNan, 0.5, L"0.5");
}

TEST_P(ValidationTable, NeedsNoControl)
{
    CDataExchange exchange(m_form, true);
    EXPECT_EQ(!GetParam().passesAbove, IsRefused([&] { GetParam().call(&exchange, 2.0, 1.0); }));
    EXPECT_TRUE(m_form.focused.empty());
}

TEST_P(ValidationTable, OnlyALengthIsToldInTheUnitOfTheProcess)
{
    SetDistanceUnits(DISTANCE_UNITS_METRE);
    const bool isLength = std::string(GetParam().name).find("Distance") != std::string::npos;
    Expect(GetParam().passesBelow, 1000.0, 1500.0, isLength ? L"1.5" : L"1500");
    Expect(GetParam().passesAbove, 2000.0, 1500.0, isLength ? L"1.5" : L"1500");
}

TEST_F(DialogDataTest, FloatsAreWidenedBeforeTheyAreHeldAgainstTheBound)
{
    EXPECT_FALSE(IsRefused([&] { DDV_MinFloat(&m_save, 0.1F, 0.1F); }));
    SetDialogDecimalPlaces(10);
    EXPECT_TRUE(IsRefused([&] { DDV_MinFloat(&m_save, 0.0F, 0.1F); }));
    EXPECT_EQ(m_form.boxes.back().text, L"Please enter a number greater than or equal to 0.1000000015.");
}

/// The first whole number that a division by the scale and a multiplication by its inverse bring to different ones.
template <class Float>
Float TellingLength()
{
    const Float scale = GetDistanceScale();
    Float length = 1;
    while (length / scale == length * (1 / scale))
        ++length;
    return length;
}

TEST_F(DialogDataTest, LengthsAreMultipliedByTheInverseOfTheScaleEachInItsOwnPrecision)
{
    SetDistanceUnits(DISTANCE_UNITS_INCH);
    SetDialogDecimalPlaces(17);
    const auto told = [&](double bound)
    { return L"Please enter a number greater than " + to_wstring(bound, 17, false, GetDecimalSymbol(), true) + L"."; };
    const float scale = GetDistanceScale();
    const auto narrow = TellingLength<float>();
    EXPECT_TRUE(IsRefused([&] { DDV_MinDistanceEx(&m_save, narrow, narrow); }));
    EXPECT_EQ(m_form.boxes.back().text, told(narrow * (1 / scale)));
    const double wideScale = scale;
    const auto wide = TellingLength<double>();
    EXPECT_TRUE(IsRefused([&] { DDV_MinDistanceEx(&m_save, wide, wide); }));
    EXPECT_EQ(m_form.boxes.back().text, told(wide * (1 / wideScale)));
}

TEST_F(DialogDataTest, LengthsThatBecomeOneInTheUnitAreTheSame)
{
    SetDistanceUnits(DISTANCE_UNITS_METRE);
    const float factor = 1 / GetDistanceScale();
    float value = 1.0F;
    while (value * factor != std::nextafter(value, 2.0F) * factor)
        value = std::nextafter(value, 2.0F);
    EXPECT_TRUE(IsRefused([&] { DDV_DistanceEx(&m_save, value, std::nextafter(value, 2.0F)); }));
    EXPECT_FALSE(IsRefused([&] { DDV_FloatEx(&m_save, value, std::nextafter(value, 2.0F)); }));
}

TEST_F(DialogDataTest, RangeIsTheFrameworksInTheUnitOfTheProcess)
{
    SetDistanceUnits(DISTANCE_UNITS_METRE);
    m_save.PrepareEditCtrl(field);
    for (const double value : {500.0, 1000.0, 1500.0})
    {
        EXPECT_FALSE(IsRefused([&] { DDV_MinMaxDistance(&m_save, value, 500.0, 1500.0); }));
        EXPECT_FALSE(IsRefused([&] { DDV_MinMaxDistance(&m_save, static_cast<float>(value), 500.0F, 1500.0F); }));
    }
    for (const double value : {499.0, 1501.0})
    {
        m_form.boxes.clear();
        EXPECT_TRUE(IsRefused([&] { DDV_MinMaxDistance(&m_save, value, 500.0, 1500.0); }));
        EXPECT_TRUE(IsRefused([&] { DDV_MinMaxDistance(&m_save, static_cast<float>(value), 500.0F, 1500.0F); }));
        EXPECT_EQ(m_form.boxes, std::vector(2, RecordingForm::Box{L"Please enter a number from 0.5 to 1.5.", 0x30, 0}));
        EXPECT_FALSE(IsRefused([&] { DDV_MinMaxDistance(&m_show, value, 500.0, 1500.0); }));
    }
    EXPECT_EQ(m_form.focused, (std::vector<int>{field, field, field, field}));
}

TEST_F(DialogDataTest, TextThatIsMissingOrMalformedStillRefuses)
{
    struct NoStrings : support::TableModules
    {
        std::wstring_view StringOf(HINSTANCE, UINT id) override { return id == 8312 ? L"%1% or %9% of 5%" : L""; }
    } modules;
    const support::Substitute<utility::platform::ModuleService> scope(utility::platform::ModulesSlot(), modules);
    EXPECT_TRUE(IsRefused([&] { DDV_MinDouble(&m_save, 0.0, 1.0); }));
    EXPECT_NE(m_form.boxes.back().text.find(L"1 or"), std::wstring::npos);
    EXPECT_TRUE(IsRefused([&] { DDV_MaxDouble(&m_save, 2.0, 1.0); }));
    EXPECT_EQ(m_form.boxes.back().text, L"");
    EXPECT_TRUE(IsRefused([&] { DDV_MinMaxDouble(&m_save, 2.0, 0.0, 1.0); }));
    EXPECT_EQ(m_form.boxes.back().text, L"");
    m_form.fields[field] = L"x";
    double value = 0.0;
    EXPECT_TRUE(IsRefused([&] { DDX_Distance(&m_save, field, value); }));
    EXPECT_EQ(m_form.boxes.back(), (RecordingForm::Box{L"", 0, -1}));
}

}

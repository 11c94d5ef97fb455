#include "utility/framework/DataExchange.h"

#include "tests/support/Doubles.h"
#include "tests/support/RecordingForm.h"

#include <gtest/gtest.h>

#include <vector>

using support::infinity;
using support::IsRefused;
using support::quietNan;
using support::RecordingForm;

namespace
{

class DataExchangeTest : public testing::Test
{
protected:
    RecordingForm m_form;
    CDataExchange m_save{m_form, true};
};

}

TEST_F(DataExchangeTest, FlagTellsTheDirection)
{
    EXPECT_TRUE(m_save.m_bSaveAndValidate);
    EXPECT_FALSE(CDataExchange(m_form, false).m_bSaveAndValidate);
}

TEST_F(DataExchangeTest, PreparedControlIsReadAndWritten)
{
    m_form.fields[7] = L"seven";
    m_form.fields[8] = L"eight";
    const CDataExchange::EditControl control = m_save.PrepareEditCtrl(7);
    wchar_t text[4];
    control.Text(text, 4);
    EXPECT_STREQ(text, L"sev");
    control.SetText(L"7");
    EXPECT_EQ(m_form.fields[7], L"7");
    EXPECT_EQ(m_form.fields[8], L"eight");
}

TEST_F(DataExchangeTest, FailureBringsTheUserToTheControlThatWasPreparedLast)
{
    m_form.fields[7] = m_form.fields[8] = L"";
    EXPECT_TRUE(IsRefused([&] { m_save.Fail(); }));
    EXPECT_TRUE(m_form.focused.empty());
    m_save.PrepareEditCtrl(7);
    m_save.PrepareEditCtrl(8);
    EXPECT_TRUE(IsRefused([&] { m_save.Fail(); }));
    EXPECT_EQ(m_form.focused, std::vector<int>{8});
    EXPECT_TRUE(m_form.boxes.empty());
}

TEST_F(DataExchangeTest, ControlThatIsMissingIsNotPrepared)
{
    m_form.fields[7] = L"";
    m_save.PrepareEditCtrl(7);
    EXPECT_TRUE(support::EndsIn<CNotSupportedException>([&] { m_save.PrepareEditCtrl(8); }));
    EXPECT_TRUE(IsRefused([&] { m_save.Fail(); }));
    EXPECT_EQ(m_form.focused, std::vector<int>{7});
}

TEST_F(DataExchangeTest, RefusalTellsTheUserAheadOfTheFailure)
{
    EXPECT_TRUE(IsRefused([&] { m_save.Refuse(L"No.", 0x30, 5); }));
    EXPECT_EQ(m_form.boxes, std::vector(1, RecordingForm::Box{L"No.", 0x30, 5}));
}

TEST_F(DataExchangeTest, UserExceptionHasNothingToSay)
{
    wchar_t text[10] = L"text";
    CUserException failure;
    EXPECT_EQ(failure.GetErrorMessage(text, 10, nullptr), 0);
    EXPECT_STREQ(text, L"");
}

TEST_F(DataExchangeTest, RangeHasBothItsBounds)
{
    for (const float value : {1.0F, 1.5F, 2.0F})
        EXPECT_FALSE(IsRefused([&] { DDV_MinMaxFloat(&m_save, value, 1.0F, 2.0F); }));
    for (const double value : {1.0, 1.5, 2.0})
        EXPECT_FALSE(IsRefused([&] { DDV_MinMaxDouble(&m_save, value, 1.0, 2.0); }));
    EXPECT_TRUE(m_form.boxes.empty());
    for (const float value : {0.5F, 2.5F, std::nextafter(1.0F, 0.0F), std::nextafter(2.0F, 3.0F)})
        EXPECT_TRUE(IsRefused([&] { DDV_MinMaxFloat(&m_save, value, 1.0F, 2.0F); }));
    for (const double value : {-infinity, infinity, std::nextafter(1.0, 0.0), std::nextafter(2.0, 3.0)})
        EXPECT_TRUE(IsRefused([&] { DDV_MinMaxDouble(&m_save, value, 1.0, 2.0); }));
    EXPECT_EQ(m_form.boxes, std::vector(8, RecordingForm::Box{L"Please enter a number from 1 to 2.", 0x30, 0}));
}

TEST_F(DataExchangeTest, RangeTellsFloatsWithSixDigitsAndDoublesWithFifteen)
{
    EXPECT_TRUE(IsRefused([&] { DDV_MinMaxFloat(&m_save, -5.0F, -0.12345678F, 1234567.0F); }));
    EXPECT_EQ(m_form.boxes.back().text, L"Please enter a number from -0.123457 to 1.23457e+06.");
    EXPECT_TRUE(IsRefused([&] { DDV_MinMaxDouble(&m_save, 1.0, 0.1, 1.0 / 3); }));
    EXPECT_EQ(m_form.boxes.back().text, L"Please enter a number from 0.1 to 0.333333333333333.");
}

TEST_F(DataExchangeTest, RangePassesANanAndAnyValueThatIsShown)
{
    EXPECT_FALSE(IsRefused([&] { DDV_MinMaxDouble(&m_save, quietNan, 1.0, 2.0); }));
    EXPECT_FALSE(IsRefused([&] { DDV_MinMaxFloat(&m_save, static_cast<float>(quietNan), 1.0F, 2.0F); }));
    CDataExchange show(m_form, false);
    EXPECT_FALSE(IsRefused([&] { DDV_MinMaxDouble(&show, 3.0, 1.0, 2.0); }));
    EXPECT_FALSE(IsRefused([&] { DDV_MinMaxFloat(&show, 3.0F, 1.0F, 2.0F); }));
}

#include "utility/framework/TerminalForm.h"

#include "tests/support/RecordingForm.h"
#include "utility/framework/DataExchange.h"
#include "utility/platform/Text.h"

#include <gtest/gtest.h>

#include <istream>
#include <sstream>
#include <streambuf>
#include <string>

using utility::framework::TerminalForm;
using utility::platform::CodePageFromWide;

namespace
{

class TerminalFormTest : public testing::Test
{
protected:
    std::wstring Text(int id, int size = 100)
    {
        std::wstring text(static_cast<std::size_t>(size), L'?');
        m_form.Text(id, text.data(), size);
        return text.c_str();
    }

    std::istringstream m_in;
    std::ostringstream m_out;
    TerminalForm m_form{m_in, m_out, {{1, L"Diameter"}, {2, L"Length", L"20"}}};
};

}

TEST_F(TerminalFormTest, AsksForEachFieldWithWhatStandsInIt)
{
    m_in.str("12.5\n30\n");
    m_form.SetText(1, L"10");
    EXPECT_TRUE(m_form.Edit());
    EXPECT_EQ(m_out.str(), "Diameter [10]: Length [20]: ");
    EXPECT_EQ(Text(1), L"12.5");
    EXPECT_EQ(Text(2), L"30");
}

TEST_F(TerminalFormTest, NullThatIsTypedDoesNotHideWhatFollowsIt)
{
    m_in.str(std::string("1\0002\n\0\n", 6));
    EXPECT_TRUE(m_form.Edit());
    EXPECT_EQ(Text(1), L"1\uFFFD2");
    EXPECT_EQ(Text(2), L"\uFFFD");
    m_form.Focus(1);
    m_in.clear();
    m_out.str("");
    EXPECT_FALSE(m_form.Edit());
    EXPECT_EQ(m_out.str(), "Diameter [" + CodePageFromWide(CP_ACP, L"1\uFFFD2") + "]: ");
}

TEST_F(TerminalFormTest, EmptyLineLeavesAField)
{
    m_in.str("\n\r\n");
    EXPECT_TRUE(m_form.Edit());
    EXPECT_EQ(Text(1), L"");
    EXPECT_EQ(Text(2), L"20");
}

TEST_F(TerminalFormTest, EndOfTheInputEndsTheEditing)
{
    m_in.str("12.5\n");
    EXPECT_FALSE(m_form.Edit());
    EXPECT_EQ(Text(1), L"12.5");
    EXPECT_EQ(Text(2), L"20");
}

TEST_F(TerminalFormTest, LastLineMayLackItsEnd)
{
    m_in.str("1\r\n2");
    EXPECT_TRUE(m_form.Edit());
    EXPECT_EQ(Text(1), L"1");
    EXPECT_EQ(Text(2), L"2");
}

TEST_F(TerminalFormTest, LineOfWhichTheRestCannotBeReadIsNone)
{
    struct Failing final : std::streambuf
    {
        Failing() { setg(&m_one, &m_one, &m_one + 1); }
        int_type underflow() override { throw std::ios_base::failure("no more"); }
        char m_one = '1';
    } failing;
    std::istream in(&failing);
    TerminalForm form(in, m_out, {{1, L"Diameter", L"20"}});
    EXPECT_FALSE(form.Edit());
    wchar_t text[10];
    form.Text(1, text, 10);
    EXPECT_STREQ(text, L"20");
}

TEST_F(TerminalFormTest, OnlyTheFieldInQuestionIsAskedForAndOnce)
{
    m_in.str("5\n6\n7\n");
    m_form.ShowBox(L"Please enter a number.", 0, -1);
    m_form.Focus(2);
    EXPECT_TRUE(m_form.Edit());
    EXPECT_EQ(m_out.str(), "Please enter a number.\nLength [20]: ");
    EXPECT_EQ(Text(2), L"5");
    EXPECT_TRUE(m_form.Edit());
    EXPECT_EQ(Text(1), L"6");
    EXPECT_EQ(Text(2), L"7");
}

TEST_F(TerminalFormTest, RefusedValueIsAskedForAgain)
{
    m_in.str("1\nx\n2\n");
    const auto save = [this]
    {
        CDataExchange exchange(m_form, true);
        exchange.PrepareEditCtrl(1);
        exchange.PrepareEditCtrl(2);
        if (Text(2) == L"x")
            exchange.Refuse(L"No.", 0, 0);
    };
    EXPECT_TRUE(m_form.Edit());
    EXPECT_TRUE(support::IsRefused(save));
    EXPECT_TRUE(m_form.Edit());
    EXPECT_FALSE(support::IsRefused(save));
    EXPECT_EQ(m_out.str(), "Diameter []: Length [20]: No.\nLength [x]: ");
}

TEST_F(TerminalFormTest, TextsAreCutToTheRoomThatThereIs)
{
    m_form.SetText(1, L"123456");
    EXPECT_EQ(Text(1, 4), L"123");
    EXPECT_EQ(Text(1, 7), L"123456");
    EXPECT_EQ(Text(1, 1), L"");
}

TEST_F(TerminalFormTest, FieldThatIsNotThereHasNoText)
{
    EXPECT_TRUE(m_form.HasField(1));
    EXPECT_FALSE(m_form.HasField(3));
    EXPECT_EQ(Text(3), L"");
    m_form.SetText(3, L"x");
    EXPECT_FALSE(m_form.HasField(3));
    m_form.Focus(3);
    m_in.str("5\n6\n");
    EXPECT_TRUE(m_form.Edit());
    EXPECT_EQ(Text(1), L"5");
}

TEST_F(TerminalFormTest, TextsAreInTheSystemsNarrowEncoding)
{
    m_in.str(CodePageFromWide(CP_ACP, L"\u00E4\n"));
    TerminalForm form(m_in, m_out, {{1, L"L\u00E4nge", L"\u00B5"}});
    EXPECT_TRUE(form.Edit());
    wchar_t text[10];
    form.Text(1, text, 10);
    EXPECT_EQ(m_out.str(), CodePageFromWide(CP_ACP, L"L\u00E4nge [\u00B5]: "));
    EXPECT_STREQ(text, L"\u00E4");
}

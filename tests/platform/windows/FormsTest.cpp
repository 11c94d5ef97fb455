#include "utility/platform/Forms.h"

#include "tests/support/RecordingForm.h"
#include "tests/support/windows/BoxAnswerer.h"
#include "utility/framework/DataExchange.h"
#include "utility/units/DialogData.h"
#include "utility/units/Distances.h"

#include <gtest/gtest.h>

#include <string>

using support::BoxAnswerer;
using utility::platform::WindowForm;

namespace
{

constexpr int diameterId = 1001;
constexpr int lengthId = 1002;

/// A dialog with two edit controls.
HWND MakeDialog()
{
    struct alignas(4)
    {
        DLGTEMPLATE head;
        WORD menu;
        WORD windowClass;
        wchar_t title[5];
    } const dialog{{WS_POPUP | WS_CAPTION | WS_VISIBLE, 0, 0, 0, 0, 100, 100}, 0, 0, L"Tool"};
    const HWND made = ::CreateDialogIndirectParamW(
        nullptr, &dialog.head, nullptr, [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
    for (const int id : {diameterId, lengthId})
        ::CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_VISIBLE | WS_TABSTOP | ES_AUTOHSCROLL, 10,
                          (id - diameterId) * 30, 80, 20, made, reinterpret_cast<HMENU>(static_cast<std::intptr_t>(id)),
                          nullptr, nullptr);
    return made;
}

/// Leaves the process in millimetres.
class WindowFormTest : public testing::Test
{
protected:
    ~WindowFormTest() override
    {
        ::DestroyWindow(m_dialog);
        SetDistanceUnits(DISTANCE_UNITS_MM);
    }

    HWND Field(int id) const { return ::GetDlgItem(m_dialog, id); }

    std::wstring TextOf(int id) const
    {
        wchar_t text[100];
        return {text, static_cast<std::size_t>(::GetWindowTextW(Field(id), text, 100))};
    }

    /// What a user types into a field.
    void Type(int id, const wchar_t* text) const
    {
        ::SendMessageW(Field(id), EM_SETSEL, 0, -1);
        for (; *text != L'\0'; ++text)
            ::SendMessageW(Field(id), WM_CHAR, *text, 1);
    }

    bool Exchange(bool save)
    {
        CDataExchange exchange(m_form, save);
        return !support::IsRefused(
            [&]
            {
                DDX_Distance(&exchange, diameterId, m_diameter);
                DDV_MinDistanceEx(&exchange, m_diameter, 0.0);
                DDX_Distance(&exchange, lengthId, m_length);
                DDV_MaxDistance(&exchange, m_length, 254.0F);
            });
    }

    const HWND m_dialog = MakeDialog();
    WindowForm m_form{m_dialog};
    double m_diameter = 12.7F;
    float m_length = 254.0F;
};

}

TEST_F(WindowFormTest, DialogIsFilledEditedAndSaved)
{
    SetDistanceUnits(DISTANCE_UNITS_INCH);
    ASSERT_TRUE(Exchange(false));
    EXPECT_EQ(TextOf(diameterId), L"0.5");
    EXPECT_EQ(TextOf(lengthId), L"10");
    Type(diameterId, L"0.25 in");
    Type(lengthId, L"5");
    ASSERT_TRUE(Exchange(true));
    EXPECT_EQ(m_diameter, 0.25 * static_cast<double>(25.4F));
    EXPECT_EQ(m_length, 127.0F);
}

TEST_F(WindowFormTest, TextThatIsNoNumberIsRefusedInABoxOverTheDialogAndTheFieldIsReadyToBeTypedOver)
{
    ASSERT_TRUE(Exchange(false));
    Type(diameterId, L"ten");
    BoxAnswerer answerer(IDOK);
    EXPECT_FALSE(Exchange(true));
    EXPECT_EQ(answerer.Text(), L"Please enter a number.");
    EXPECT_EQ(answerer.Title(), L"Tool");
    EXPECT_EQ(answerer.Owner(), m_dialog);
    EXPECT_EQ(m_diameter, static_cast<double>(12.7F));
    EXPECT_EQ(::GetFocus(), Field(diameterId));
    DWORD first = 99;
    DWORD last = 99;
    ::SendMessageW(Field(diameterId), EM_GETSEL, reinterpret_cast<WPARAM>(&first), reinterpret_cast<LPARAM>(&last));
    EXPECT_EQ(first, 0U);
    EXPECT_EQ(last, 3U);
}

TEST_F(WindowFormTest, ValueOutOfBoundsIsRefusedWithAWarning)
{
    ASSERT_TRUE(Exchange(false));
    Type(lengthId, L"254.5");
    HICON icon = nullptr;
    BoxAnswerer answerer(IDOK,
                         [&](HWND box)
                         {
                             const HWND sign = ::FindWindowExW(box, nullptr, L"Static", nullptr);
                             icon = reinterpret_cast<HICON>(::SendMessageW(sign, STM_GETICON, 0, 0));
                         });
    EXPECT_FALSE(Exchange(true));
    EXPECT_EQ(answerer.Text(), L"Please enter a number less than or equal to 254.");
    EXPECT_EQ(icon, ::LoadIconW(nullptr, reinterpret_cast<const wchar_t*>(IDI_EXCLAMATION)));
    EXPECT_EQ(::GetFocus(), Field(lengthId));
}

TEST_F(WindowFormTest, FieldMayGo)
{
    ::DestroyWindow(Field(lengthId));
    EXPECT_TRUE(m_form.HasField(diameterId));
    EXPECT_FALSE(m_form.HasField(lengthId));
    wchar_t text[] = L"text";
    m_form.Text(lengthId, text, 5);
    EXPECT_STREQ(text, L"");
    m_form.SetText(lengthId, L"x");
    m_form.Focus(lengthId);
    m_form.SetText(diameterId, L"1");
    EXPECT_TRUE(support::EndsIn<CNotSupportedException>([&] { Exchange(true); }));
}

TEST_F(WindowFormTest, TextIsCutToTheRoomThatThereIs)
{
    m_form.SetText(diameterId, L"123456");
    wchar_t text[4];
    m_form.Text(diameterId, text, 4);
    EXPECT_STREQ(text, L"123");
}

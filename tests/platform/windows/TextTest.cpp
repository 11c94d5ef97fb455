#include "utility/platform/Text.h"

#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <string_view>

TEST(WindowsTextTest, MessageOfTheSystemKeepsThePlacesForWhatIsNotKnown)
{
    wchar_t text[256] = L"";
    utility::platform::Text().SystemMessage(ERROR_BAD_EXE_FORMAT, 0, text, 256);
    EXPECT_NE(std::wstring_view(text).find(L"%1"), std::wstring_view::npos) << text;
}

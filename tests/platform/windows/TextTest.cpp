#include "utility/platform/Text.h"

#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/Types.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

extern "C" decltype(&::FormatMessageW) __imp_FormatMessageW;
extern "C" decltype(&::LocalFree) __imp_LocalFree;

TEST(WindowsTextTest, MessageOfTheSystemKeepsThePlacesForWhatIsNotKnown)
{
    wchar_t text[256] = L"";
    utility::platform::Text().SystemMessage(ERROR_BAD_EXE_FORMAT, 0, text, 256);
    EXPECT_NE(std::wstring_view(text).find(L"%1"), std::wstring_view::npos) << text;
}

TEST(WindowsTextTest, WholeMessageIsInABufferOfTheSystemWhichIsReleased)
{
    static DWORD flags, error, language;
    static HLOCAL given, released;
    released = nullptr;
    const auto format = [](DWORD with, LPCVOID, DWORD of, DWORD in, LPWSTR buffer, DWORD, va_list*) -> DWORD
    {
        flags = with;
        error = of;
        language = in;
        given = ::LocalAlloc(LMEM_FIXED, 100000 * sizeof(wchar_t));
        std::wstring(99999, L'x').copy(static_cast<wchar_t*>(given), 99999);
        *reinterpret_cast<HLOCAL*>(buffer) = given;
        return 99999;
    };
    static const auto free = __imp_LocalFree;
    const support::ImportedCall formatCall(__imp_FormatMessageW, format);
    const support::ImportedCall freeCall(__imp_LocalFree,
                                         [](HLOCAL memory)
                                         {
                                             released = memory;
                                             return free(memory);
                                         });
    EXPECT_EQ(utility::platform::Text().WholeSystemMessage(5, 0x407), std::wstring(99999, L'x'));
    EXPECT_EQ(flags, 0x1300u);
    EXPECT_EQ(error, 5u);
    EXPECT_EQ(language, 0x407u);
    EXPECT_EQ(released, given);
}

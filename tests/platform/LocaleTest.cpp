#include "utility/platform/Locale.h"

#include "utility/platform/Error.h"

#include <gtest/gtest.h>

namespace
{

struct SymbolCase
{
    DWORD locale;
    const wchar_t* symbol;
};

class DecimalSymbolOfLocaleTest : public ::testing::TestWithParam<SymbolCase>
{
};

TEST_P(DecimalSymbolOfLocaleTest, IsGivenWithItsLength)
{
    wchar_t symbol[10] = L"";
    EXPECT_EQ(utility::platform::Locale().DecimalSymbol(GetParam().locale, nullptr, 0), 2);
    EXPECT_EQ(utility::platform::Locale().DecimalSymbol(GetParam().locale, symbol, 10), 2);
    EXPECT_STREQ(symbol, GetParam().symbol);
}

INSTANTIATE_TEST_SUITE_P(Languages, DecimalSymbolOfLocaleTest,
                         ::testing::Values(SymbolCase{0x007F, L"."}, SymbolCase{0x0809, L"."}, SymbolCase{0x0409, L"."},
                                           SymbolCase{0x0804, L"."}, SymbolCase{0x0404, L"."}, SymbolCase{0x0407, L","},
                                           SymbolCase{0x0C0A, L","}, SymbolCase{0x040C, L","}, SymbolCase{0x0410, L","},
                                           SymbolCase{0x0411, L"."}, SymbolCase{0x0412, L"."}, SymbolCase{0x0416, L","},
                                           SymbolCase{0x041F, L","}));

TEST(LocaleServiceTest, UnknownLocaleIsAFailure)
{
    wchar_t symbol[10] = L"";
    EXPECT_EQ(utility::platform::Locale().DecimalSymbol(0xFFFF, symbol, 10), 0);
    EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(LocaleServiceTest, BufferThatIsTooShortIsAFailure)
{
    wchar_t symbol[1];
    EXPECT_EQ(utility::platform::Locale().DecimalSymbol(0x0407, symbol, 1), 0);
    EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
}

}

#include "utility/platform/Locale.h"

#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <type_traits>

using utility::platform::LastError;
using utility::platform::Locale;
using utility::platform::LocaleService;

namespace
{

struct LocaleCase
{
    LCID identifier;
    const wchar_t* name;
    const wchar_t* abbreviation;
    const wchar_t* nativeLanguage;
    const wchar_t* decimalSymbol;
    const wchar_t* timeSeparator;
};

const LocaleCase locales[] = {
#define UTILITY_LOCALE(identifier, name, abbreviation, nativeLanguage, decimalSymbol, timeSeparator)                   \
    {identifier, L"" name, L"" abbreviation, L"" nativeLanguage, L"" decimalSymbol, L"" timeSeparator},
#include "utility/platform/posix/locale/Locales.inc"
#undef UTILITY_LOCALE
};

std::string NameOf(const LocaleCase& locale)
{
    char name[8];
    std::snprintf(name, sizeof(name), "%04X", static_cast<unsigned int>(locale.identifier));
    return name;
}

void PrintTo(const LocaleCase& locale, std::ostream* out) { *out << NameOf(locale); }

template <class Key>
using Question = int (LocaleService::*)(Key, wchar_t*, int);

const Question<LCID> questionsByIdentifier[] = {&LocaleService::DecimalSymbol, &LocaleService::TimeSeparator,
                                                &LocaleService::Name, &LocaleService::NativeLanguageName,
                                                &LocaleService::LanguageAbbreviation};

/// The answer in a buffer that is just long enough.
template <class Key>
std::wstring Answer(Question<Key> question, std::type_identity_t<Key> key)
{
    const int length = (Locale().*question)(key, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'?');
    EXPECT_EQ((Locale().*question)(key, text.data(), length), length);
    EXPECT_EQ(text.find(L'\0') + 1, text.size());
    return text.substr(0, text.find(L'\0'));
}

/// Puts the locale of the test's thread back as it was.
class KeepThreadLocale
{
public:
    KeepThreadLocale() : m_locale(Locale().ThreadLocale()) {}
    KeepThreadLocale(const KeepThreadLocale&) = delete;
    KeepThreadLocale& operator=(const KeepThreadLocale&) = delete;
    ~KeepThreadLocale() { Locale().SetThreadLocale(m_locale); }

private:
    LCID m_locale;
};

}

class EveryLocaleTest : public ::testing::TestWithParam<LocaleCase>
{
};

TEST_P(EveryLocaleTest, IsKnownAlikeOnBothSystems)
{
    const LocaleCase& locale = GetParam();
    EXPECT_EQ(Answer<LCID>(&LocaleService::Name, locale.identifier), locale.name);
    EXPECT_EQ(Answer<LCID>(&LocaleService::LanguageAbbreviation, locale.identifier), locale.abbreviation);
    EXPECT_EQ(Answer<LCID>(&LocaleService::NativeLanguageName, locale.identifier), locale.nativeLanguage);
    EXPECT_EQ(Answer<const wchar_t*>(&LocaleService::NativeLanguageName, locale.name), locale.nativeLanguage);
    EXPECT_EQ(Answer<LCID>(&LocaleService::DecimalSymbol, locale.identifier), locale.decimalSymbol);
    constexpr LCID canadianFrench = 0x0C0C; // Wine writes its hours as words
    if (sizeof(wchar_t) == sizeof(char32_t) || locale.identifier != canadianFrench)
    {
        EXPECT_EQ(Answer<LCID>(&LocaleService::TimeSeparator, locale.identifier), locale.timeSeparator);
    }
}

INSTANTIATE_TEST_SUITE_P(Known, EveryLocaleTest, ::testing::ValuesIn(locales),
                         [](const auto& locale) { return NameOf(locale.param); });

TEST(LocaleTest, UnknownOneIsAFailure)
{
    wchar_t text[16];
    for (const auto question : questionsByIdentifier)
    {
        utility::platform::SetLastError(0);
        EXPECT_EQ((Locale().*question)(0x9999, text, 16), 0);
        EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    }
    utility::platform::SetLastError(0);
    EXPECT_EQ(Locale().NativeLanguageName(L"no such locale", text, 16), 0);
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
}

TEST(LocaleTest, BufferThatIsTooShortIsAFailure)
{
    for (const auto question : questionsByIdentifier)
    {
        wchar_t text[16];
        const int length = (Locale().*question)(0x0407, nullptr, 0);
        utility::platform::SetLastError(0);
        EXPECT_EQ((Locale().*question)(0x0407, text, length - 1), 0);
        EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    }
}

TEST(LocaleTest, NameIsFoundInAnyCase)
{
    EXPECT_EQ(Answer<const wchar_t*>(&LocaleService::NativeLanguageName, L"DE-at"), L"Deutsch");
}

TEST(LocaleTest, LanguageWithoutARegionIsAName)
{
    EXPECT_EQ(Answer<const wchar_t*>(&LocaleService::NativeLanguageName, L"fr"), L"fran\u00E7ais");
}

TEST(LocaleTest, UsersOwnIsAKnownOne) { EXPECT_NE(Locale().Name(Locale().UserDefault(), nullptr, 0), 0); }

TEST(ThreadLocaleTest, IsTheUsersUntilItIsSet)
{
    std::thread([] { EXPECT_EQ(Locale().ThreadLocale(), Locale().UserDefault()); }).join();
}

TEST(ThreadLocaleTest, IsSetForTheCallingThreadOnly)
{
    const KeepThreadLocale keep;
    EXPECT_TRUE(Locale().SetThreadLocale(0x0C07));
    EXPECT_EQ(Locale().ThreadLocale(), 0x0C07u);
    std::thread([] { EXPECT_EQ(Locale().ThreadLocale(), Locale().UserDefault()); }).join();
}

TEST(ThreadLocaleTest, UnknownLocaleIsRefused)
{
    const KeepThreadLocale keep;
    Locale().SetThreadLocale(0x0407);
    EXPECT_FALSE(Locale().SetThreadLocale(0x9999));
    EXPECT_EQ(LastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(Locale().ThreadLocale(), 0x0407u);
}

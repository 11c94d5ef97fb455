// The satellites that the library comes with.
#include "resources/StringIds.h"
#include "tests/support/ForwardingLocale.h"
#include "tests/support/ScratchHives.h"
#include "tests/support/TableModules.h"
#include "utility/platform/Modules.h"
#include "utility/settings/Lang.h"
#include "utility/settings/ResourceCounter.h"
#include "utility/settings/Version.h"
#include "utility/text/ResourceString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace
{

struct EnglishString
{
    UINT id;
    std::wstring text;
};

const EnglishString englishStrings[] = {
#define UTILITY_STRING(name, number, text) {number, L"" text},
#include "resources/Strings.inc"
#undef UTILITY_STRING
};

/// What is filled in, in alphabetical order: %c, %1%, %2%.
std::vector<std::wstring> Placeholders(const std::wstring& text)
{
    std::vector<std::wstring> found;
    for (std::size_t at = text.find(L'%'); at != std::wstring::npos; at = text.find(L'%', at))
    {
        const std::size_t end = std::min(text[at + 1] == L'c' ? at + 1 : text.find(L'%', at + 1), text.size() - 1);
        found.push_back(text.substr(at, end + 1 - at));
        at = end + 1;
    }
    std::ranges::sort(found);
    return found;
}

std::string LettersOf(LCID language)
{
    std::wstring letters;
    Lang::GetLanguageAbbreviatedName(language, letters);
    return from_utf(letters, 65001);
}

/// The library's own satellite for a language, as the library finds it.
class SatelliteTest : public ::testing::TestWithParam<LCID>
{
protected:
    struct UserLocale : support::ForwardingLocale
    {
        LCID UserDefault() override { return GetParam(); }
        bool SetThreadLocale(LCID) override { return true; }
        bool SetRuntimeLocale(const wchar_t*) override { return true; }
    };

    struct LibraryModules : support::TableModules
    {
        std::wstring FileName(HINSTANCE) override { return L"" UTILITY_SATELLITES_FOLDER "/Utility.dll"; }
    };

    std::wstring Text(UINT id) const { return resource_string(m_counter.GetResourceDLL(), id); }

    support::ScratchHives m_hives;
    UserLocale m_locale;
    LibraryModules m_modules;
    const support::Substitute<utility::platform::ModuleService> m_scope{utility::platform::ModulesSlot(), m_modules};
    const CResourceCounter m_counter{nullptr};
};

}

TEST_P(SatelliteTest, HasEveryStringWithTheSamePlaceholders)
{
    ASSERT_NE(m_counter.GetResourceDLL(), nullptr);
    for (const auto& [id, english] : englishStrings)
    {
        const std::wstring text = Text(id);
        EXPECT_FALSE(text.empty()) << id;
        EXPECT_EQ(Placeholders(text), Placeholders(english)) << id;
        // A unit may be the same word in several languages, a sentence is not.
        const bool isSentence = english.ends_with(L'.') || id >= utility::resources::NoFileFailure;
        if (isSentence || GetParam() == 0x0809)
        {
            EXPECT_EQ(text == english, GetParam() == 0x0809) << id;
        }
    }
}

TEST_P(SatelliteTest, TellsTheLanguageOfItsTexts)
{
    wchar_t language[5];
    std::swprintf(language, std::size(language), L"%04X", static_cast<unsigned int>(GetParam()));
    EXPECT_EQ(Text(utility::resources::LanguageOfTexts), GetParam() == 0x0809 ? L"0409" : language);
}

TEST_P(SatelliteTest, TellsWhatItIs)
{
    CVersion version;
    const std::string letters = LettersOf(GetParam());
    const std::wstring name = L"UtilityRes" + std::wstring(letters.begin(), letters.end()) + L".dll";
    ASSERT_TRUE(version.Initialise((L"" UTILITY_SATELLITES_FOLDER "/" + name).c_str()));
    EXPECT_EQ(version.GetFileVersionMS(), 0x07E60000u);
    EXPECT_EQ(version.GetFileVersionLS(), 2114u << 16);
    EXPECT_EQ(version.GetTranslation(), GetParam() | (1200u << 16));
    EXPECT_STREQ(version.GetCompanyName(), L"Selvane");
    EXPECT_STREQ(version.GetFileVersion(), L"2022.0.2114");
    EXPECT_EQ(version.GetOriginalFileName(), name);
}

INSTANTIATE_TEST_SUITE_P(Eleven, SatelliteTest,
                         ::testing::Values(0x0809, 0x0804, 0x0404, 0x0407, 0x0C0A, 0x040C, 0x0410, 0x0411, 0x0412,
                                           0x0416, 0x041F),
                         [](const auto& language) { return LettersOf(language.param); });

TEST(SatellitesTest, TranslationIsThatOfItsLanguage)
{
    HINSTANCE satellite = utility::platform::Modules().Load(L"" UTILITY_SATELLITES_FOLDER "/UtilityResDEU.dll");
    ASSERT_NE(satellite, nullptr);
    EXPECT_EQ(resource_string(satellite, 8310), L"Bitte geben Sie eine Zahl gr\u00F6\u00DFer als %1% ein.");
    EXPECT_TRUE(utility::platform::Modules().Free(satellite));
}

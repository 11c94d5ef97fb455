#include "utility/platform/Locale.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <optional>
#include <string>

using utility::platform::Locale;

namespace
{

/// For its lifetime an environment variable has this value.
class Variable
{
public:
    Variable(const char* name, const std::string& value) : m_name(name)
    {
        if (const char* const earlier = std::getenv(name))
            m_earlier = earlier;
        ::setenv(name, value.c_str(), 1);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable()
    {
        if (m_earlier)
            ::setenv(m_name, m_earlier->c_str(), 1);
        else
            ::unsetenv(m_name);
    }

private:
    const char* m_name;
    std::optional<std::string> m_earlier;
};

struct EnvironmentCase
{
    const char* value;
    LCID locale;
};

}

class UserDefaultLocaleTest : public ::testing::TestWithParam<EnvironmentCase>
{
};

TEST_P(UserDefaultLocaleTest, IsWhatTheEnvironmentNames)
{
    const Variable all("LC_ALL", "");
    const Variable messages("LC_MESSAGES", "");
    const Variable lang("LANG", GetParam().value);
    EXPECT_EQ(Locale().UserDefault(), GetParam().locale);
}

INSTANTIATE_TEST_SUITE_P(
    Values, UserDefaultLocaleTest,
    ::testing::Values(EnvironmentCase{"de_AT.UTF-8", 0x0C07}, EnvironmentCase{"de_DE", 0x0407},
                      EnvironmentCase{"de_DE@euro", 0x0407}, EnvironmentCase{"pt_PT.iso88591@euro", 0x0816},
                      EnvironmentCase{"es_ES.UTF-8", 0x0C0A}, EnvironmentCase{"es_MX.UTF-8", 0x080A},
                      EnvironmentCase{"zh_HK.UTF-8", 0x0C04}, EnvironmentCase{"sr_RS.UTF-8", 0x281A},
                      // a region that is not known, and none
                      EnvironmentCase{"de_BE.UTF-8", 0x0407}, EnvironmentCase{"en_DK.UTF-8", 0x0409},
                      EnvironmentCase{"zh", 0x0804}, EnvironmentCase{"ja", 0x0411},
                      // no language, and an unknown one
                      EnvironmentCase{"", 0x0409}, EnvironmentCase{"C", 0x0409}, EnvironmentCase{"C.UTF-8", 0x0409},
                      EnvironmentCase{"POSIX", 0x0409}, EnvironmentCase{".UTF-8", 0x0409},
                      EnvironmentCase{"_DE", 0x0409}, EnvironmentCase{"tlh_XX.UTF-8", 0x0409},
                      EnvironmentCase{"d\xE9_\xFF", 0x0409}));

TEST(UserDefaultLocaleTest, FirstVariableThatIsNotEmptyCounts)
{
    const Variable lang("LANG", "it_IT.UTF-8");
    const Variable messages("LC_MESSAGES", "fr_FR.UTF-8");
    const Variable all("LC_ALL", "tr_TR.UTF-8");
    EXPECT_EQ(Locale().UserDefault(), 0x041Fu);
    const Variable noAll("LC_ALL", "");
    EXPECT_EQ(Locale().UserDefault(), 0x040Cu);
    const Variable noMessages("LC_MESSAGES", "");
    EXPECT_EQ(Locale().UserDefault(), 0x0410u);
}

/// Locales for the C library that a test makes, under the names that it asks for.
class RuntimeLocaleTest : public ::testing::Test
{
public:
    RuntimeLocaleTest() { std::setlocale(LC_ALL, "C"); }
    ~RuntimeLocaleTest() override { std::setlocale(LC_ALL, m_earlier.c_str()); }

protected:
    void Install(const char* name) const
    {
        boost::filesystem::create_directory_symlink("/usr/lib/locale/C.utf8", m_folder / name);
    }

private:
    const std::string m_earlier = std::setlocale(LC_ALL, nullptr);
    const support::TemporaryFolder m_folder;
    const Variable m_path{"LOCPATH", m_folder.Path().string()};
};

TEST_F(RuntimeLocaleTest, IsThatOfTheAbbreviation)
{
    Install("de_AT.UTF-8");
    EXPECT_TRUE(Locale().SetRuntimeLocale(L"DEA"));
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "de_AT.UTF-8");
}

TEST_F(RuntimeLocaleTest, ScriptAndSortOrderAreNoPartOfTheName)
{
    Install("bs_BA.UTF-8");
    Install("es_ES.UTF-8");
    EXPECT_TRUE(Locale().SetRuntimeLocale(L"BSB"));
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "bs_BA.UTF-8");
    EXPECT_TRUE(Locale().SetRuntimeLocale(L"ESP"));
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "es_ES.UTF-8");
}

TEST_F(RuntimeLocaleTest, StaysWhereTheSystemDoesNotHaveIt)
{
    EXPECT_FALSE(Locale().SetRuntimeLocale(L"DEU"));
    EXPECT_FALSE(Locale().SetRuntimeLocale(L"XXX"));
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

TEST_F(RuntimeLocaleTest, EmptyAbbreviationStandsForTheUsersOwn)
{
    Install("fr_FR.UTF-8");
    const Variable all("LC_ALL", "fr_FR.UTF-8");
    EXPECT_TRUE(Locale().SetRuntimeLocale(L""));
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "fr_FR.UTF-8");
}

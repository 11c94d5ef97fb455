// The sample is what the settings of every system write and read, to the byte.

#include "examples/settings/Keys.h"

#include "tests/support/ScratchHives.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace
{

constexpr wchar_t options[] = L"Options";
constexpr DWORD unknownType = 0x12345678;
const std::wstring nameOfSample = L"HKEY_CURRENT_USER\\SOFTWARE\\Selvane\\Sample";
const std::wstring text = L"pr\u00FCfst\u00FCck \u9244 \U0001F600";
const std::string block = "a block of bytes that does not fit into one line of a registry file";
constexpr FILETIME time = {0x01234567, 0x01DA89AB};

class Settings : public CQLMAppSettings
{
public:
    explicit Settings(const std::wstring& appKey) : CQLMAppSettings(appKey) {}
};

/// Settings under a name of the test's own, which stands for the sample's.
class SettingsSampleTest : public testing::Test
{
protected:
    static std::string Sample() { return support::TemporaryFolder::BytesOf(UTILITY_SAMPLES "/settings.reg"); }

    static std::vector<regtext::Key> Renamed(std::vector<regtext::Key> tree, const std::wstring& from,
                                             const std::wstring& to)
    {
        for (regtext::Key& key : tree)
            key.path.replace(0, from.size(), to);
        return tree;
    }

    support::ScratchHives hives;
    const std::wstring appKey = L"SOFTWARE\\Selvane\\" + boost::filesystem::unique_path("%%%%%%%%%%%%").wstring();
    const std::wstring ownName = L"HKEY_CURRENT_USER\\" + appKey;
    const Settings settings{appKey};
};

TEST_F(SettingsSampleTest, IsWhatIsWritten)
{
    EXPECT_TRUE(settings.SetValue(nullptr, L"", L"the \"unnamed\" \\ value"));
    EXPECT_TRUE(settings.SetValue(options, L"Name", text));
    EXPECT_TRUE(settings.SetValue(options, L"Empty", std::wstring()));
    EXPECT_TRUE(settings.SetValue(options, L"Empty text", L""));
    EXPECT_TRUE(settings.SetValue(options, L"Two lines", L"one\ntwo"));
    EXPECT_TRUE(settings.SetValue(options, L"Bool", true));
    EXPECT_TRUE(settings.SetValue(options, L"Int \u00E4", -5));
    EXPECT_TRUE(settings.SetValue(options, L"Unsigned", 0xFFFFFFFFU));
    EXPECT_TRUE(settings.SetValue(options, L"Int 64", std::numeric_limits<std::int64_t>::min()));
    EXPECT_TRUE(settings.SetValue(options, L"Unsigned 64", std::numeric_limits<std::uint64_t>::max()));
    EXPECT_TRUE(settings.SetValue(options, L"Float", 0.1F));
    EXPECT_TRUE(settings.SetValue(options, L"Double", 0.1));
    EXPECT_TRUE(settings.SetValue(options, L"Time", time));
    EXPECT_TRUE(settings.SetValue(options, L"Block", block.data(), static_cast<DWORD>(block.size())));
    keys::Apply({ownName + L"\\Options", {{L"Unknown", unknownType, "\1\2\3", false}}, false});
    EXPECT_TRUE(settings.CreateKey(L"Options\\Tools [3]"));

    const std::string written = regtext::Text(Renamed(keys::Tree(keys::Locate(ownName)), ownName, nameOfSample));
    EXPECT_TRUE(written == Sample());
}

TEST_F(SettingsSampleTest, IsReadBackValueByValue)
{
    for (const regtext::Key& key : Renamed(regtext::Parse(Sample()), nameOfSample, ownName))
        keys::Apply(key);

    EXPECT_EQ(settings.GetValue(nullptr, L"", L"default"), L"the \"unnamed\" \\ value");
    EXPECT_EQ(settings.GetValue(options, L"Name", L"default"), text);
    EXPECT_EQ(settings.GetValue(options, L"Empty", L"default"), L"default");
    EXPECT_EQ(settings.GetValue(options, L"Empty text", L"default"), L"");
    EXPECT_EQ(settings.GetValue(options, L"Two lines", L"default"), L"one\ntwo");
    EXPECT_EQ(settings.GetValue(options, L"Bool", false), true);
    EXPECT_EQ(settings.GetValue(options, L"Int \u00E4", 0), -5);
    EXPECT_EQ(settings.GetValue(options, L"Unsigned", 0U), 0xFFFFFFFFU);
    EXPECT_EQ(settings.GetValue(options, L"Int 64", std::int64_t{0}), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(settings.GetValue(options, L"Unsigned 64", std::uint64_t{0}), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(settings.GetValue(options, L"Float", 0.0F), 0.1F);
    EXPECT_EQ(settings.GetValue(options, L"Double", 0.0), 0.1);
    const FILETIME found = settings.GetValue(options, L"Time", FILETIME{});
    EXPECT_EQ(found.dwLowDateTime, time.dwLowDateTime);
    EXPECT_EQ(found.dwHighDateTime, time.dwHighDateTime);

    const keys::Place place = keys::Locate(ownName + L"\\Options");
    regtext::Value value;
    EXPECT_TRUE(keys::ReadValue(place, L"Block", value));
    EXPECT_EQ(value, (regtext::Value{L"Block", REG_BINARY, block, false}));
    EXPECT_TRUE(keys::ReadValue(place, L"Unknown", value));
    EXPECT_EQ(value, (regtext::Value{L"Unknown", unknownType, "\1\2\3", false}));
    EXPECT_EQ(keys::SubKeys(place), std::vector<std::wstring>{L"Tools [3]"});
    EXPECT_EQ(keys::Read(place).values.size(), 14u);
}

}

#include "utility/settings/ResourceCounter.h"

#include "tests/support/ForwardingLocale.h"
#include "tests/support/ScratchHives.h"
#include "tests/support/TableModules.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Paths.h"
#include "utility/settings/Lang.h"
#include "utility/text/ResourceString.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using utility::platform::Modules;
using utility::platform::PathFromWide;
using utility::platform::WideFromPath;

namespace
{

using Events = std::vector<std::wstring>;

std::wstring FileOf(const wchar_t* path) { return WideFromPath(PathFromWide(path).filename()); }

std::wstring HexOf(LCID locale)
{
    wchar_t text[16];
    std::swprintf(text, std::size(text), L"%04X", static_cast<unsigned int>(locale));
    return text;
}

/// A user's language, and a record of what is made the language of thread and process.
class RecordingLocale : public support::ForwardingLocale
{
public:
    RecordingLocale(LCID language, Events& events) : m_language(language), m_events(events) {}

    LCID UserDefault() override { return m_language; }
    int LanguageAbbreviation(LCID locale, wchar_t* buffer, int size) override
    {
        EXPECT_EQ(size, 4);
        return m_system.LanguageAbbreviation(locale, buffer, size);
    }
    bool SetThreadLocale(LCID locale) override
    {
        m_events.push_back(L"thread " + HexOf(locale));
        return true;
    }
    bool SetRuntimeLocale(const wchar_t* abbreviation) override
    {
        m_events.push_back(std::wstring(L"runtime ") + abbreviation);
        return true;
    }

private:
    LCID m_language;
    Events& m_events;
};

/// A module that a test calls by a path, and a record of what else is loaded and what is freed.
class RecordingModules : public support::TableModules
{
public:
    RecordingModules(const boost::filesystem::path& moduleFile, Events& events)
        : m_moduleFile(WideFromPath(moduleFile)), m_events(events)
    {
    }

    HINSTANCE Module() { return m_module.Handle(); }

    std::wstring FileName(HINSTANCE module) override
    {
        m_events.push_back(L"file of " + NameOf(module));
        return m_moduleFile;
    }
    HINSTANCE Load(const wchar_t* path) override
    {
        m_events.push_back(L"load " + FileOf(path));
        loadedLast = path;
        const HINSTANCE loaded = instead != 0 ? reinterpret_cast<HINSTANCE>(instead) : TableModules::Load(path);
        if (loaded != nullptr)
            m_names[loaded] = FileOf(path);
        return loaded;
    }
    bool Free(HINSTANCE module) override
    {
        m_events.push_back(L"free " + NameOf(module));
        return module == Module() || instead != 0 || TableModules::Free(module);
    }

    std::wstring loadedLast;
    std::intptr_t instead = 0; ///< what a load gives instead of a module, unless 0

private:
    std::wstring NameOf(HINSTANCE module)
    {
        return module == nullptr ? L"null" : module == Module() ? L"module" : m_names[module];
    }

    std::wstring m_moduleFile;
    Events& m_events;
    support::FakeModule m_module;
    std::map<HINSTANCE, std::wstring> m_names;
    support::Substitute<utility::platform::ModuleService> m_scope{utility::platform::ModulesSlot(), *this};
};

/// A folder with a module in it, and satellites of a test's choice.
class ResourceCounterTest : public ::testing::Test
{
protected:
    /// Puts one of the modules made for the tests beside the module Milling.
    void Put(const char* kind, const char* name) const
    {
        support::TemporaryFolder::Copy(boost::filesystem::path(UTILITY_TEST_MODULES) / kind, m_folder / name);
    }

    support::ScratchHives m_hives;
    support::TemporaryFolder m_folder;
    Events m_events;
    RecordingModules m_modules{m_folder / "Milling.dll", m_events};
};

struct Search
{
    const char* name;
    LCID language;
    std::vector<std::pair<const char*, const char*>> files; ///< kind and name
    Events events;                                          ///< those between the module's file name and the first use
    const wchar_t* text;                                    ///< empty where no satellite is taken
    Events releases;
};

void PrintTo(const Search& search, std::ostream* out) { *out << search.name; }

class SatelliteSearchTest : public ResourceCounterTest, public ::testing::WithParamInterface<Search>
{
};

}

TEST_P(SatelliteSearchTest, FindsTheLanguageThenItsDefaultSublanguageThenTheModule)
{
    for (const auto& [kind, name] : GetParam().files)
        Put(kind, name);
    const RecordingLocale locale(GetParam().language, m_events);
    {
        const CResourceCounter counter(m_modules.Module());
        EXPECT_EQ(m_events.front(), L"file of module");
        EXPECT_EQ(Events(m_events.begin() + 1, m_events.end()), GetParam().events);
        EXPECT_EQ(counter.GetDLL(), m_modules.Module());
        EXPECT_EQ(counter.GetResourceDLL() == counter.GetDLL(), *GetParam().text == L'\0');
        EXPECT_EQ(resource_string(counter.GetResourceDLL(), 61000), GetParam().text);
        m_events.clear();
    }
    EXPECT_EQ(m_events, GetParam().releases);
}

constexpr const char* current = "Satellite.dll";
constexpr const char* earlierVersion = "SatelliteOfEarlierVersion.dll";
constexpr const char* nextVersion = "SatelliteOfNextVersion.dll";
constexpr const char* noVersion = "SatelliteWithoutVersion.dll";
constexpr const wchar_t* found = L"from the satellite";

INSTANTIATE_TEST_SUITE_P(
    Satellites, SatelliteSearchTest,
    ::testing::Values(Search{"OfTheLanguage",
                             0x0809,
                             {{current, "MillingResENG.dll"}},
                             {L"thread 0809", L"runtime ENG", L"load MillingResENG.dll"},
                             found,
                             {L"free module", L"free MillingResENG.dll"}},
                      Search{"OfNoLanguage",
                             0x0809,
                             {},
                             {L"thread 0809", L"runtime ENG", L"load MillingResENG.dll", L"load MillingResENU.dll"},
                             L"",
                             {L"free module", L"free module"}},
                      Search{"OfTheDefaultSublanguage",
                             0x0C07,
                             {{current, "MillingResDEU.dll"}},
                             {L"thread 0C07", L"runtime DEA", L"load MillingResDEA.dll", L"load MillingResDEU.dll"},
                             found,
                             {L"free module", L"free MillingResDEU.dll"}},
                      Search{"SimplifiedChineseDeliberatelyFallsToTraditional",
                             0x0804,
                             {{current, "MillingResCHT.dll"}},
                             {L"thread 0804", L"runtime CHS", L"load MillingResCHS.dll", L"load MillingResCHT.dll"},
                             found,
                             {L"free module", L"free MillingResCHT.dll"}},
                      Search{"SameFileIsDeliberatelyTriedTwiceForBrazil",
                             0x0416,
                             {{nextVersion, "MillingResPTB.dll"}},
                             {L"thread 0416", L"runtime PTB", L"load MillingResPTB.dll", L"load MillingResPTB.dll",
                              L"free MillingResPTB.dll", L"free MillingResPTB.dll"},
                             L"",
                             {L"free module", L"free module"}},
                      Search{"SameFileIsDeliberatelyTriedTwiceForTurkey",
                             0x041F,
                             {},
                             {L"thread 041F", L"runtime TRK", L"load MillingResTRK.dll", L"load MillingResTRK.dll"},
                             L"",
                             {L"free module", L"free module"}},
                      Search{"OfAnnextVersionIsAsIfMissing",
                             0x0C07,
                             {{nextVersion, "MillingResDEA.dll"}, {current, "MillingResDEU.dll"}},
                             {L"thread 0C07", L"runtime DEA", L"load MillingResDEA.dll", L"load MillingResDEU.dll",
                              L"free MillingResDEA.dll"},
                             found,
                             {L"free module", L"free MillingResDEU.dll"}},
                      Search{"OfAnEarlierVersionIsAsIfMissing",
                             0x0C07,
                             {{earlierVersion, "MillingResDEA.dll"}, {current, "MillingResDEU.dll"}},
                             {L"thread 0C07", L"runtime DEA", L"load MillingResDEA.dll", L"load MillingResDEU.dll",
                              L"free MillingResDEA.dll"},
                             found,
                             {L"free module", L"free MillingResDEU.dll"}},
                      Search{"WithoutAVersionIsAsIfMissing",
                             0x0C07,
                             {{nextVersion, "MillingResDEA.dll"}, {noVersion, "MillingResDEU.dll"}},
                             {L"thread 0C07", L"runtime DEA", L"load MillingResDEA.dll", L"load MillingResDEU.dll",
                              L"free MillingResDEA.dll", L"free MillingResDEU.dll"},
                             L"",
                             {L"free module", L"free module"}},
                      Search{"EnglishIsNoLanguageToFallBackTo",
                             0x040C,
                             {{current, "MillingResENG.dll"}, {current, "MillingResENU.dll"}},
                             {L"thread 040C", L"runtime FRA", L"load MillingResFRA.dll", L"load MillingResFRA.dll"},
                             L"",
                             {L"free module", L"free module"}},
                      Search{"UnknownLanguageHasNoLetters",
                             0x9999,
                             {{current, "MillingRes.dll"}},
                             {L"thread 9999", L"runtime ", L"load MillingRes.dll"},
                             found,
                             {L"free module", L"free MillingRes.dll"}},
                      Search{"PrimaryLanguageHasTenBits",
                             0x0D07,
                             {{current, "MillingResDEU.dll"}},
                             {L"thread 0D07", L"runtime ", L"load MillingRes.dll", L"load MillingRes.dll"},
                             L"",
                             {L"free module", L"free module"}},
                      Search{"DefaultOfAnUnknownSublanguage",
                             0xFC07,
                             {{current, "MillingResDEU.dll"}},
                             {L"thread FC07", L"runtime ", L"load MillingRes.dll", L"load MillingResDEU.dll"},
                             found,
                             {L"free module", L"free MillingResDEU.dll"}}),
    [](const auto& search) { return search.param.name; });

TEST_F(ResourceCounterTest, UsersChoiceComesBeforeTheSystemsLanguage)
{
    HKEY key = nullptr;
    ASSERT_EQ(m_hives.RegCreateKeyW(HKEY_CURRENT_USER, L"SOFTWARE\\Selvane\\TOLVERAN\\2022.0\\Options\\General", key),
              0);
    m_hives.RegCloseKey(key);
    ASSERT_EQ(Lang::SetLanguage(0x0410), 1);
    Put(current, "MillingResITA.dll");
    Put(current, "MillingResJPN.dll");
    const RecordingLocale locale(0x0411, m_events);
    const CResourceCounter counter(m_modules.Module());
    EXPECT_EQ(m_events, (Events{L"file of module", L"thread 0410", L"runtime ITA", L"load MillingResITA.dll"}));
}

TEST_F(ResourceCounterTest, ModulesOwnStringsServeWithoutASatellite)
{
    m_modules.strings[{m_modules.Module(), 61000}] = L"from the module";
    const RecordingLocale locale(0x0407, m_events);
    const CResourceCounter counter(m_modules.Module());
    EXPECT_EQ(resource_string(counter.GetResourceDLL(), 61000), L"from the module");
}

TEST_F(ResourceCounterTest, NullModuleHasTheSatellitesOfTheProgramAndIsNotReleased)
{
    {
        const RecordingLocale locale(0x0407, m_events);
        const CResourceCounter counter(nullptr);
        EXPECT_EQ(counter.GetDLL(), nullptr);
        EXPECT_EQ(counter.GetResourceDLL(), nullptr);
    }
    EXPECT_EQ(m_events, (Events{L"file of null", L"thread 0407", L"runtime DEU", L"load MillingResDEU.dll",
                                L"load MillingResDEU.dll"}));
}

TEST_F(ResourceCounterTest, ModuleWithoutAFileNameHasNoSatellite)
{
    RecordingModules modules({}, m_events);
    const RecordingLocale locale(0x0407, m_events);
    const CResourceCounter counter(modules.Module());
    EXPECT_EQ(counter.GetResourceDLL(), modules.Module());
}

TEST_F(ResourceCounterTest, PathMayHaveAnyLength)
{
    for (const std::size_t length : {258u, 259u, 260u, 261u, 300u, 1000u, 4000u, 40000u})
    {
        const boost::filesystem::path folder = m_folder.Path() / std::string(length - m_folder.Path().size() - 5, 'x');
        RecordingModules modules(folder / "M.dll", m_events);
        const RecordingLocale locale(0x0407, m_events);
        const CResourceCounter counter(modules.Module());
        EXPECT_EQ(modules.loadedLast, WideFromPath(folder / "MResDEU.dll")) << length;
    }
}

TEST_F(ResourceCounterTest, FolderMayLookLikeAFormat)
{
    const boost::filesystem::path folder = m_folder / "50%s %d%1%.x";
    boost::filesystem::create_directory(folder);
    support::TemporaryFolder::Copy(boost::filesystem::path(UTILITY_TEST_MODULES) / current, folder / "%sResDEU.dll");
    RecordingModules modules(folder / "%s.dll", m_events);
    const RecordingLocale locale(0x0407, m_events);
    const CResourceCounter counter(modules.Module());
    EXPECT_EQ(resource_string(counter.GetResourceDLL(), 61000), found);
}

TEST_F(ResourceCounterTest, RealLocaleOfTheThreadStaysWithTheLanguage)
{
    struct : support::ForwardingLocale
    {
        LCID UserDefault() override { return 0x0C07; }
        bool SetRuntimeLocale(const wchar_t*) override { return true; }
    } locale;
    Put(current, "MillingResDEU.dll");
    const LCID earlier = locale.ThreadLocale();
    const CResourceCounter counter(m_modules.Module());
    EXPECT_EQ(resource_string(counter.GetResourceDLL(), 61000), found);
    EXPECT_EQ(locale.ThreadLocale(), 0x0C07u);
    locale.SetThreadLocale(earlier);
}

class SmallHandleTest : public ResourceCounterTest, public ::testing::WithParamInterface<std::pair<std::intptr_t, bool>>
{
};

TEST_P(SmallHandleTest, BelowThirtyTwoIsNoModule)
{
    const auto [handle, isModule] = GetParam();
    Put(current, "MillingResDEU.dll");
    m_modules.instead = handle;
    const RecordingLocale locale(0x0407, m_events);
    const CResourceCounter counter(m_modules.Module());
    EXPECT_EQ(counter.GetResourceDLL(), isModule ? reinterpret_cast<HINSTANCE>(handle) : m_modules.Module());
}

INSTANTIATE_TEST_SUITE_P(Handles, SmallHandleTest,
                         ::testing::Values(std::pair{std::intptr_t{1}, false}, std::pair{std::intptr_t{31}, false},
                                           std::pair{std::intptr_t{32}, true}, std::pair{std::intptr_t{-1}, false}));

TEST(ResourceCounterOfALoadedModuleTest, TakesOverOneReference)
{
    const support::ScratchHives hives;
    const support::TemporaryFolder folder;
    Events events;
    const RecordingLocale locale(0x0407, events);
    for (const char* const name : {"Milling.dll", "MillingResDEU.dll"})
        support::TemporaryFolder::Copy(boost::filesystem::path(UTILITY_TEST_MODULES) / current, folder / name);
    const HINSTANCE module = Modules().Load(WideFromPath(folder / "Milling.dll").c_str());
    ASSERT_NE(module, nullptr);
    HINSTANCE satellite = nullptr;
    {
        const CResourceCounter counter(module);
        satellite = counter.GetResourceDLL();
        EXPECT_NE(satellite, module);
        EXPECT_EQ(resource_string(satellite, 61000), found);
    }
    EXPECT_FALSE(Modules().Free(module));
    EXPECT_FALSE(Modules().Free(satellite));
}

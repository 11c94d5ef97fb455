#include "utility/settings/Version.h"

#include "tests/support/ForwardingMovableMemory.h"
#include "tests/support/ForwardingVersionInfo.h"
#include "tests/support/TableModules.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/Modules.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace platform = utility::platform;

namespace
{

std::wstring Module(const char* name)
{
    return platform::WideFromPath(boost::filesystem::path(UTILITY_TEST_MODULES) / name);
}

/// What a getter gave: a null pointer and an empty text are not the same.
std::wstring Text(const wchar_t* text) { return text == nullptr ? L"(null)" : text; }

/// Says which module is the current one, for a scope.
class CurrentModule
{
public:
    explicit CurrentModule(HINSTANCE module) { utility::framework::CurrentModuleState().currentInstance = module; }
    CurrentModule(const CurrentModule&) = delete;
    CurrentModule& operator=(const CurrentModule&) = delete;
    ~CurrentModule() { utility::framework::CurrentModuleState().currentInstance = m_earlier; }

private:
    HINSTANCE m_earlier = utility::framework::CurrentModuleState().currentInstance;
};

}

struct TextGetter
{
    const char* name;
    const wchar_t* (CVersion::*getter)();
    const wchar_t* text;
};

class VersionTextTable : public ::testing::TestWithParam<TextGetter>
{
};

TEST_P(VersionTextTable, IsThatOfTheFirstTranslation)
{
    CVersion version;
    ASSERT_TRUE(version.Initialise(Module("WholeVersion.dll").c_str()));
    const wchar_t* const text = (version.*GetParam().getter)();
    EXPECT_EQ(Text(text), GetParam().text);
    EXPECT_EQ((version.*GetParam().getter)(), text) << "a copy";
}

TEST_P(VersionTextTable, IsNullInAnEmptyObject) { EXPECT_EQ((CVersion().*GetParam().getter)(), nullptr); }

TEST_P(VersionTextTable, IsAskedForByItsName)
{
    support::ForwardingVersionInfo service;
    CVersion version;
    ASSERT_TRUE(version.Initialise(Module("WholeVersion.dll").c_str()));
    service.queries.clear();
    (version.*GetParam().getter)();
    // The name of the original file is the one whose getter is not spelled like it.
    const std::string name = GetParam().name == std::string("OriginalFileName") ? "OriginalFilename" : GetParam().name;
    const std::wstring path = L"\\StringFileInfo\\0c0a04e4\\" + std::wstring(name.begin(), name.end());
    EXPECT_EQ(service.queries, std::vector{path});
}

#define TEXT_GETTER(name, text)                                                                                        \
    TextGetter { #name, &CVersion::Get##name, text }

INSTANTIATE_TEST_SUITE_P(
    Getters, VersionTextTable,
    ::testing::Values(TEXT_GETTER(CompanyName, L"Compa\u00F1\u00EDa"),
                      TEXT_GETTER(ProductName, L"the \"product\" \\ \U0001F600"),
                      TEXT_GETTER(ProductVersion, L"5.6.7.8"), TEXT_GETTER(LegalCopyright, L"\u00A9 somebody"),
                      TEXT_GETTER(Comments, L""), TEXT_GETTER(FileDescription, L"a description"),
                      TEXT_GETTER(FileVersion, L"1.2.3.4"), TEXT_GETTER(InternalName, L"internal"),
                      TEXT_GETTER(LegalTrademarks, L"\u2122"), TEXT_GETTER(OriginalFileName, L"original.dll"),
                      TEXT_GETTER(PrivateBuild, L"private"), TEXT_GETTER(SpecialBuild, L"special")),
    [](const auto& each) { return each.param.name; });

struct NumberGetter
{
    const char* name;
    DWORD (CVersion::*getter)() const;
    std::size_t field; ///< the position in the numeric block
};

class VersionNumberTable : public ::testing::TestWithParam<NumberGetter>
{
};

TEST_P(VersionNumberTable, IsTheFieldOfTheRecord)
{
    // The sample, with a number of its own in each field.
    std::string bytes = support::TemporaryFolder::BytesOf(UTILITY_TEST_MODULES "/WholeVersion.dll");
    const std::size_t block = bytes.find("\xBD\x04\xEF\xFE");
    ASSERT_NE(block, std::string::npos);
    const auto valueOf = [](std::size_t field) { return static_cast<DWORD>(0x11220000 + field); };
    for (std::size_t field = 2; field < 13; ++field)
    {
        const DWORD value = valueOf(field);
        std::memcpy(&bytes[block + field * sizeof(value)], &value, sizeof(value));
    }
    const support::TemporaryFolder folder;
    CVersion version;
    ASSERT_TRUE(version.Initialise(platform::WideFromPath(folder.File("changed.dll", bytes)).c_str()));
    EXPECT_EQ((version.*GetParam().getter)(), valueOf(GetParam().field));
}

#define NUMBER_GETTER(name, field)                                                                                     \
    NumberGetter { #name, &CVersion::Get##name, field }

INSTANTIATE_TEST_SUITE_P(Getters, VersionNumberTable,
                         ::testing::Values(NUMBER_GETTER(FileVersionMS, 2), NUMBER_GETTER(FileVersionLS, 3),
                                           NUMBER_GETTER(ProductVersionMS, 4), NUMBER_GETTER(ProductVersionLS, 5),
                                           NUMBER_GETTER(FileFlagsMask, 6), NUMBER_GETTER(FileFlags, 7),
                                           NUMBER_GETTER(FileOS, 8), NUMBER_GETTER(FileType, 9),
                                           NUMBER_GETTER(FileSubtype, 10), NUMBER_GETTER(FileDateMS, 11),
                                           NUMBER_GETTER(FileDateLS, 12)),
                         [](const auto& each) { return each.param.name; });

TEST(VersionTest, VersionNumbersHaveTheirFirstPartOnTop)
{
    CVersion version;
    ASSERT_TRUE(version.Initialise(Module("WholeVersion.dll").c_str()));
    EXPECT_EQ(version.GetFileVersionMS(), 0x00010002u);
    EXPECT_EQ(version.GetFileVersionLS(), 0x00030004u);
    EXPECT_EQ(version.GetProductVersionMS(), 0x00050006u);
    EXPECT_EQ(version.GetProductVersionLS(), 0x00070008u);
}

TEST(VersionTest, FileOfRelease2022HasIt)
{
    CVersion version;
    ASSERT_TRUE(version.Initialise(Module("VersionWithoutTranslation.dll").c_str()));
    EXPECT_EQ(version.GetFileVersionMS(), 0x07E60000u);
}

TEST(VersionTest, TranslationIsTheFirst)
{
    CVersion version;
    ASSERT_TRUE(version.Initialise(Module("WholeVersion.dll").c_str()));
    EXPECT_EQ(version.GetTranslation(), 0x04E40C0Au);
}

TEST(VersionTest, WithoutATranslationTheTextsAreThoseOfEightZeros)
{
    support::ForwardingVersionInfo service;
    CVersion version;
    ASSERT_TRUE(version.Initialise(Module("VersionWithoutTranslation.dll").c_str()));
    EXPECT_EQ(version.GetTranslation(), 0u);
    service.queries.clear();
    EXPECT_EQ(Text(version.GetCompanyName()), L"(null)");
    EXPECT_EQ(service.queries, std::vector<std::wstring>{L"\\StringFileInfo\\00000000\\CompanyName"});
    EXPECT_EQ(Text(version.GetProductName()), L"in no language");
}

TEST(VersionTest, AbsentTextIsNullAndTheNextGetterStillWorks)
{
    CVersion version;
    ASSERT_TRUE(version.Initialise(Module("VersionWithoutTranslation.dll").c_str()));
    EXPECT_EQ(version.GetSpecialBuild(), nullptr);
    EXPECT_EQ(Text(version.GetProductName()), L"in no language");
    EXPECT_EQ(version.GetLegalTrademarks(), nullptr);
    EXPECT_EQ(Text(version.GetProductName()), L"in no language");
}

TEST(VersionTest, RecordWithNumbersAloneHasNoTexts)
{
    CVersion version;
    ASSERT_TRUE(version.Initialise(Module("Resources.dll").c_str()));
    EXPECT_EQ(version.GetFileVersionMS(), 0x00010002u);
    EXPECT_EQ(version.GetProductName(), nullptr);
    EXPECT_EQ(version.GetTranslation(), 0u);
}

TEST(VersionTest, FileWithoutARecordGivesFalseAndThenTextsAreNull)
{
    const support::TemporaryFolder folder;
    for (const std::wstring& path :
         {Module("NoVersion.dll"), Module("missing.dll"), platform::WideFromPath(folder.File("empty", "")),
          platform::WideFromPath(folder.File("text", std::string(5000, 'x'))), platform::WideFromPath(folder.Path())})
    {
        CVersion version;
        EXPECT_FALSE(version.Initialise(path.c_str()));
        EXPECT_EQ(version.GetProductName(), nullptr);
        EXPECT_EQ(version.GetSpecialBuild(), nullptr);
    }
}

TEST(VersionTest, EmptyObjectHasNoTranslation) { EXPECT_EQ(CVersion().GetTranslation(), 0u); }

class VersionOfCurrentModuleTest : public ::testing::TestWithParam<bool>
{
};

TEST_P(VersionOfCurrentModuleTest, IsReadForNull)
{
    const auto program = platform::Modules().ModuleAt(&platform::ModulesSlot());
    const CurrentModule scope(GetParam() ? program : nullptr);
    CVersion version;
    ASSERT_TRUE(version.Initialise(nullptr));
    EXPECT_EQ(Text(version.GetProductName()), L"The \"tests\" \\ of Utility \u2192 \U0001F600; gepr\u00FCft");
    EXPECT_EQ(Text(version.GetCompanyName()), L"Somebody");
    EXPECT_EQ(Text(version.GetFileVersion()), L"1.22.333");
    EXPECT_EQ(Text(version.GetProductVersion()), L"1.22.333");
    EXPECT_EQ(Text(version.GetFileDescription()), L"(null)");
    EXPECT_EQ(version.GetFileVersionMS(), 0x00010016u);
    EXPECT_EQ(version.GetFileVersionLS(), 0x014D0000u);
    EXPECT_EQ(version.GetTranslation(), 0x04B00409u);
}

INSTANTIATE_TEST_SUITE_P(Modules, VersionOfCurrentModuleTest, ::testing::Bool(),
                         [](const auto& each) { return each.param ? "Set" : "UnsetWhichIsTheProgram"; });

TEST(VersionTest, CurrentModuleWithoutANameGivesFalse)
{
    struct Nameless : support::TableModules
    {
        std::wstring FileName(HINSTANCE) override { return {}; }
    } modules;
    const support::Substitute<platform::ModuleService> scope(platform::ModulesSlot(), modules);
    EXPECT_FALSE(CVersion().Initialise(nullptr));
}

struct BuiltModule
{
    const char* file;
    DWORD type;
};

class VersionOfBuiltModuleTest : public ::testing::TestWithParam<BuiltModule>
{
};

TEST_P(VersionOfBuiltModuleTest, IsThereInAStrippedFile)
{
    CVersion version;
    ASSERT_TRUE(version.Initialise(platform::WideFromPath(GetParam().file).c_str()));
    EXPECT_EQ(Text(version.GetProductName()), L"Versioned");
    EXPECT_EQ(Text(version.GetCompanyName()), L"Somebody");
    EXPECT_EQ(Text(version.GetFileDescription()), L"stripped; \"described\"");
    EXPECT_EQ(Text(version.GetLegalCopyright()), L"\u00A9 somebody");
    EXPECT_EQ(version.GetFileVersionMS(), 0xFFFF0000u);
    EXPECT_EQ(version.GetFileVersionLS(), 0x0007FFFFu);
    EXPECT_EQ(version.GetProductVersionMS(), 0xFFFF0000u);
    EXPECT_EQ(version.GetProductVersionLS(), 0x0007FFFFu);
    EXPECT_EQ(version.GetFileFlags(), 0u);
    EXPECT_EQ(version.GetFileType(), GetParam().type);
}

INSTANTIATE_TEST_SUITE_P(Modules, VersionOfBuiltModuleTest,
                         ::testing::Values(BuiltModule{UTILITY_VERSIONED_PROGRAM, 1},
                                           BuiltModule{UTILITY_VERSIONED_MODULE, 2}),
                         [](const auto& each) { return each.param.type == 1 ? "Program" : "Library"; });

TEST(VersionOfTwoFilesTest, SecondInitialiseFreesTheFirstBlockFirst)
{
    support::ForwardingMovableMemory service;
    {
        CVersion version;
        ASSERT_TRUE(version.Initialise(Module("WholeVersion.dll").c_str()));
        ASSERT_TRUE(version.Initialise(Module("VersionWithoutTranslation.dll").c_str()));
        ASSERT_EQ(service.allocated.size(), 2u);
        EXPECT_EQ(service.freed, std::vector{service.allocated[0]});
        EXPECT_EQ(Text(version.GetProductName()), L"in no language");
        EXPECT_FALSE(version.Initialise(Module("NoVersion.dll").c_str()));
        EXPECT_EQ(service.freed, service.allocated);
    }
    EXPECT_EQ(service.freed, service.allocated);
    EXPECT_EQ(service.unlocked, service.allocated);
}

namespace
{

enum class Step
{
    none,
    size,
    allocation,
    lock,
    read,
    fixedInformation,
};

/// Version records, and the memory for them, that fail at a step.
class FailingVersionInfo final : public support::ForwardingVersionInfo, public support::ForwardingMovableMemory
{
public:
    DWORD GetFileVersionInfoSizeW(const wchar_t* path) override
    {
        return failAt == Step::size ? 0 : ForwardingVersionInfo::GetFileVersionInfoSizeW(path);
    }
    HANDLE GlobalAlloc(std::size_t size) override
    {
        return failAt == Step::allocation ? nullptr : ForwardingMovableMemory::GlobalAlloc(size);
    }
    void* GlobalLock(HANDLE memory) override
    {
        return failAt == Step::lock ? nullptr : ForwardingMovableMemory::GlobalLock(memory);
    }
    bool GetFileVersionInfoW(const wchar_t* path, DWORD size, void* data) override
    {
        return failAt != Step::read && ForwardingVersionInfo::GetFileVersionInfoW(path, size, data);
    }
    bool VerQueryValueW(const void* data, const wchar_t* subBlock, void*& value, UINT& length) override
    {
        const bool fails = failAt == Step::fixedInformation && std::wcscmp(subBlock, L"\\") == 0;
        return !fails && ForwardingVersionInfo::VerQueryValueW(data, subBlock, value, length);
    }

    Step failAt = Step::none;
};

struct FailingStep
{
    const char* name;
    Step step;
    bool blockStaysHeld; ///< by an object that was valid
};

}

class VersionFailureTest : public ::testing::TestWithParam<FailingStep>
{
protected:
    bool Initialise(CVersion& version, Step failAt)
    {
        m_service.failAt = failAt;
        return version.Initialise(Module("WholeVersion.dll").c_str());
    }

    FailingVersionInfo m_service;
};

TEST_P(VersionFailureTest, OfANewObjectLeavesItEmpty)
{
    {
        CVersion version;
        EXPECT_FALSE(Initialise(version, GetParam().step));
        EXPECT_EQ(m_service.freed, m_service.allocated);
        EXPECT_EQ(version.GetProductName(), nullptr);
    }
    EXPECT_EQ(m_service.freed, m_service.allocated);
}

TEST_P(VersionFailureTest, OfAValidObjectDeliberatelyLeavesTheNewBlockHeldWhereItCouldNotBeRead)
{
    {
        CVersion version;
        ASSERT_TRUE(Initialise(version, Step::none));
        EXPECT_FALSE(Initialise(version, GetParam().step));
        EXPECT_EQ(m_service.allocated.size() - m_service.freed.size(), GetParam().blockStaysHeld ? 1u : 0u);
    }
    EXPECT_EQ(m_service.freed, m_service.allocated);
    EXPECT_EQ(m_service.unlocked, m_service.allocated);
}

TEST_P(VersionFailureTest, IsForgottenByTheNextInitialise)
{
    {
        CVersion version;
        ASSERT_TRUE(Initialise(version, Step::none));
        EXPECT_FALSE(Initialise(version, GetParam().step));
        EXPECT_TRUE(Initialise(version, Step::none));
        EXPECT_EQ(Text(version.GetInternalName()), L"internal");
    }
    EXPECT_EQ(m_service.freed, m_service.allocated);
}

INSTANTIATE_TEST_SUITE_P(Steps, VersionFailureTest,
                         ::testing::Values(FailingStep{"Size", Step::size, false},
                                           FailingStep{"Allocation", Step::allocation, false},
                                           FailingStep{"Lock", Step::lock, true}, FailingStep{"Read", Step::read, true},
                                           FailingStep{"FixedInformation", Step::fixedInformation, false}),
                         [](const auto& each) { return each.param.name; });

TEST(VersionAssignmentTest, DeliberatelySharesTheRecordSoThatBothFreeIt)
{
    struct FreeOnce final : support::ForwardingMovableMemory
    {
        void GlobalFree(HANDLE memory) override { freed.push_back(memory); }
        ~FreeOnce() override { m_system.GlobalFree(allocated.front()); }
    } service;
    {
        CVersion version;
        ASSERT_TRUE(version.Initialise(Module("WholeVersion.dll").c_str()));
        CVersion other;
        other = version;
        EXPECT_EQ(other.GetProductName(), version.GetProductName());
        EXPECT_EQ(other.GetFileVersionMS(), 0x00010002u);
        EXPECT_EQ(other.GetTranslation(), version.GetTranslation());
    }
    ASSERT_EQ(service.allocated.size(), 1u);
    EXPECT_EQ(service.freed, (std::vector{service.allocated[0], service.allocated[0]}));
}

#include "utility/platform/Modules.h"

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <cstdint>
#include <locale>
#include <memory>
#include <thread>
#include <vector>

using utility::platform::Modules;

namespace
{

const char here = 0;
int alsoHere = 0;

}

TEST(ModulesTest, ModuleOfAnAddress)
{
    const HINSTANCE module = Modules().ModuleAt(&here);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(Modules().ModuleAt(&alsoHere), module);
    EXPECT_EQ(Modules().ModuleAt(module), module);
}

TEST(ModulesTest, AddressOutsideEveryModuleGivesNull)
{
    const auto onHeap = std::make_unique<int>(0);
    EXPECT_EQ(Modules().ModuleAt(onHeap.get()), nullptr);
    EXPECT_EQ(Modules().ModuleAt(nullptr), nullptr);
}

TEST(ModulesTest, FileNameIsTheAbsolutePathOfTheModule)
{
    const boost::filesystem::path path(Modules().FileName(Modules().ModuleAt(&here)));
    EXPECT_TRUE(path.is_absolute()) << path;
    EXPECT_TRUE(boost::filesystem::is_regular_file(path)) << path;
    EXPECT_EQ(path.stem(), "UtilityTests");
}

TEST(ModulesTest, FileNameOfNullIsThatOfTheProgram)
{
    EXPECT_EQ(Modules().FileName(nullptr), Modules().FileName(Modules().ModuleAt(&here)));
}

TEST(ModulesTest, FileNameOfALibraryIsTheLibrarys)
{
    // The C++ runtime is a library of its own on every system.
    const boost::filesystem::path path(Modules().FileName(Modules().ModuleAt(&std::locale::classic())));
    EXPECT_TRUE(path.is_absolute()) << path;
    EXPECT_NE(path.stem(), "UtilityTests");
}

TEST(ModulesTest, FileNameOfAnUnknownModuleFails)
{
    utility::platform::SetLastError(0);
    EXPECT_EQ(Modules().FileName(reinterpret_cast<HINSTANCE>(&alsoHere)), L"");
    EXPECT_EQ(utility::platform::LastError(), 126u);
}

TEST(ModulesTest, StringIsGivenInPlace)
{
    const HINSTANCE module = Modules().ModuleAt(&here);
    const std::wstring_view text = Modules().StringOf(module, 8315);
    EXPECT_EQ(text, L"Please enter a number between %1% and %2%.");
    EXPECT_EQ(Modules().StringOf(module, 8315).data(), text.data());
}

TEST(ModulesTest, AbsentStringIsEmpty)
{
    const HINSTANCE module = Modules().ModuleAt(&here);
    // The neighbours of the strings, and numbers whose low half is that of one.
    for (const UINT id : {0u, 8299u, 8316u, 0x18301u, 0x10000u + 8301u, 0xFFFF0000u + 8301u, 0u - 8301u, 0xFFFFFFFFu})
        EXPECT_EQ(Modules().StringOf(module, id), std::wstring_view()) << id;
}

TEST(ModulesTest, ModuleWithoutStringsHasNone)
{
    alignas(4096) static const char noModule[4096] = {};
    const auto module = reinterpret_cast<HINSTANCE>(const_cast<char*>(noModule));
    EXPECT_EQ(Modules().StringOf(module, 8301), std::wstring_view());
}

namespace
{

/// A module made for the tests, loaded.
class LoadedModuleTest : public ::testing::Test
{
public:
    ~LoadedModuleTest() override
    {
        while (m_module != nullptr && Modules().Free(m_module))
        {
        }
    }

protected:
    static constexpr const wchar_t* path = L"" UTILITY_TEST_MODULES "/Resources.dll";
    static constexpr const wchar_t* text = L"Gr\u00F6\u00DFe \u2192 \U0001F600";

    HINSTANCE m_module = Modules().Load(path);
};

}

TEST_F(LoadedModuleTest, ItsStringsAreGivenInPlace)
{
    ASSERT_NE(m_module, nullptr);
    const std::wstring_view string = Modules().StringOf(m_module, 8300);
    EXPECT_EQ(string, text);
    EXPECT_EQ(Modules().StringOf(m_module, 8300).data(), string.data());
    EXPECT_EQ(Modules().StringOf(m_module, 8301), std::wstring_view());
}

TEST_F(LoadedModuleTest, SameFileIsTheSameModuleUntilItsLastFree)
{
    EXPECT_EQ(Modules().Load(path), m_module);
    EXPECT_EQ(Modules().Load(L"" UTILITY_TEST_MODULES "/../modules/Resources.dll"), m_module);
    const std::wstring_view string = Modules().StringOf(m_module, 8300);
    EXPECT_TRUE(Modules().Free(m_module));
    EXPECT_TRUE(Modules().Free(m_module));
    EXPECT_EQ(string, text);
    EXPECT_TRUE(Modules().Free(m_module));
    EXPECT_FALSE(Modules().Free(m_module));
    EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(Modules().StringOf(m_module, 8300), std::wstring_view());
}

TEST_F(LoadedModuleTest, ItsResourcesAreGivenInPlaceByNumberAndByNameInAnyCase)
{
    constexpr UINT bitmap = 2;
    const auto find = [&](const wchar_t* name)
    {
        const auto bytes = Modules().ResourceOf(m_module, bitmap, name);
        EXPECT_EQ(Modules().ResourceOf(m_module, bitmap, name).data(), bytes.data());
        return bytes.size();
    };
    EXPECT_EQ(find(reinterpret_cast<const wchar_t*>(std::uintptr_t{7})), 18u);
    EXPECT_EQ(find(L"#7"), 18u);
    EXPECT_EQ(find(L"logo"), 8u);
    EXPECT_EQ(find(L"LOGO"), 8u);
    EXPECT_EQ(find(L"#8"), 0u);
    EXPECT_EQ(find(L"7"), 0u);
    EXPECT_EQ(find(L"#"), 0u);
    EXPECT_EQ(find(nullptr), 0u);
    EXPECT_TRUE(Modules().ResourceOf(m_module, 10, L"logo").empty());
    EXPECT_TRUE(Modules().ResourceOf(Modules().ModuleAt(&here), bitmap, L"logo").empty());
    EXPECT_TRUE(Modules().ResourceOf(nullptr, bitmap, L"logo").empty());
}

TEST_F(LoadedModuleTest, HasAFileName)
{
    EXPECT_TRUE(boost::filesystem::equivalent(Modules().FileName(m_module), path));
}

TEST_F(LoadedModuleTest, SeveralThreadsMayUseIt)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back(
            []
            {
                for (int turn = 0; turn < 200; ++turn)
                {
                    const HINSTANCE module = Modules().Load(path);
                    EXPECT_EQ(Modules().StringOf(module, 8300), text);
                    EXPECT_TRUE(Modules().Free(module));
                }
            });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(Modules().StringOf(m_module, 8300), text);
}

TEST(ModulesTest, WhatCannotBeLoadedGivesNull)
{
    const support::TemporaryFolder folder;
    EXPECT_EQ(Modules().Load((folder / "missing.dll").wstring().c_str()), nullptr);
    EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_EQ(Modules().Load(folder.File("text.dll", "This is no module.").wstring().c_str()), nullptr);
    EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_BAD_EXE_FORMAT));
}

TEST(ModulesTest, WhatIsNotLoadedCannotBeFreed)
{
    EXPECT_FALSE(Modules().Free(nullptr));
    EXPECT_FALSE(Modules().Free(reinterpret_cast<HINSTANCE>(&alsoHere)));
    EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
}

TEST(ModulesTest, ProgramItselfStaysHoweverOftenItIsFreed)
{
    const HINSTANCE module = Modules().ModuleAt(&here);
    EXPECT_TRUE(Modules().Free(module));
    EXPECT_TRUE(Modules().Free(module));
    EXPECT_EQ(Modules().StringOf(module, 8304), L"mm");
}

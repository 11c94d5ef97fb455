#include "utility/platform/Modules.h"

#include "utility/platform/Error.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <cwchar>
#include <locale>
#include <memory>

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
    wchar_t name[260] = L"unset";
    const DWORD length = Modules().FileName(Modules().ModuleAt(&here), name, 260);
    const boost::filesystem::path path(name);
    EXPECT_EQ(length, std::wcslen(name));
    EXPECT_TRUE(path.is_absolute()) << path;
    EXPECT_TRUE(boost::filesystem::is_regular_file(path)) << path;
    EXPECT_EQ(path.stem(), "UtilityTests");
}

TEST(ModulesTest, FileNameOfNullIsThatOfTheProgram)
{
    wchar_t ofModule[260] = L"unset";
    wchar_t ofNull[260] = L"";
    const DWORD length = Modules().FileName(Modules().ModuleAt(&here), ofModule, 260);
    EXPECT_EQ(Modules().FileName(nullptr, ofNull, 260), length);
    EXPECT_STREQ(ofNull, ofModule);
}

TEST(ModulesTest, FileNameOfALibraryIsTheLibrarys)
{
    wchar_t name[260] = L"unset";
    // The C++ runtime is a library of its own on every system.
    ASSERT_GT(Modules().FileName(Modules().ModuleAt(&std::locale::classic()), name, 260), 0u);
    const boost::filesystem::path path(name);
    EXPECT_TRUE(path.is_absolute()) << path;
    EXPECT_NE(path.stem(), "UtilityTests");
}

TEST(ModulesTest, FileNameOfAnUnknownModuleFails)
{
    wchar_t name[260] = L"unset";
    utility::platform::SetLastError(0);
    EXPECT_EQ(Modules().FileName(reinterpret_cast<HINSTANCE>(&alsoHere), name, 260), 0u);
    EXPECT_EQ(utility::platform::LastError(), 126u);
}

TEST(ModulesTest, FileNameWithoutRoomGivesTheSizeOfTheRoomAndWritesNothingBehindIt)
{
    wchar_t whole[260];
    const DWORD length = Modules().FileName(nullptr, whole, 260);
    ASSERT_GT(length, 5u);
    std::wstring room(length + 2, L'#');
    EXPECT_EQ(Modules().FileName(nullptr, room.data(), length + 1), length);
    EXPECT_EQ(room, std::wstring(whole) + L'\0' + L'#');
    for (const DWORD size : {length, DWORD{5}, DWORD{1}, DWORD{0}})
    {
        room.assign(length + 2, L'#');
        utility::platform::SetLastError(0);
        EXPECT_EQ(Modules().FileName(nullptr, room.data(), size), size);
        EXPECT_EQ(utility::platform::LastError(), 122u);
        EXPECT_EQ(room.find_last_not_of(L'#') + 1, size);
    }
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

#include "utility/platform/Modules.h"

#include <gtest/gtest.h>

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

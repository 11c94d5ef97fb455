#include "utility/text/Messages.h"

#include "tests/support/Substitute.h"
#include "tests/support/TableModules.h"
#include "utility/framework/internal/ResourceModules.h"

#include <gtest/gtest.h>

namespace
{

/// Strings 60001 and up, for the length of a test.
class LoadMessageTest : public ::testing::Test
{
protected:
    LoadMessageTest()
    {
        static support::FakeModule module;
        static const auto* const link = new utility::framework::DynLinkLibrary(module.Handle(), module.Handle());
        m_modules.strings = {
            {{link->Resources(), 60001}, L"%d of %s (%ld)"},
            {{link->Resources(), 60002}, L"[%c] behind"},
            {{link->Resources(), 60003}, std::wstring(600, L'x')},
            {{link->Resources(), 60004}, L"%s"},
            {{link->Resources(), 60005}, std::wstring(L"one\0two", 7)},
        };
    }

private:
    support::TableModules m_modules;
    support::Substitute<utility::platform::ModuleService> m_scope{utility::platform::ModulesSlot(), m_modules};
};

}

TEST_F(LoadMessageTest, FillsTheArgumentsIn)
{
    EXPECT_EQ(LoadMessage(60001, 7, L"name", std::int32_t{-3}), L"7 of name (-3)");
}

TEST_F(LoadMessageTest, StringsOfTheLibrary)
{
    EXPECT_EQ(LoadMessage(8302, 'x'), L"Invalid character (x) found whilst reading an integer number.");
    EXPECT_EQ(LoadMessage(8301), L"End of file found whilst trying to read a real number.");
}

TEST_F(LoadMessageTest, NumberWithoutStringIsEmptyAndIgnoresItsArguments)
{
    const auto* const bad = reinterpret_cast<const wchar_t*>(1);
    EXPECT_EQ(LoadMessage(60999, bad), L"");
    EXPECT_EQ(LoadMessage(-1, bad), L"");
    EXPECT_EQ(LoadMessage(0, bad), L"");
    EXPECT_EQ(LoadMessage(0x10000 + 8301, bad), L"");
}

TEST_F(LoadMessageTest, EndsAtTheFirstNull)
{
    EXPECT_EQ(LoadMessage(60002, 0), L"[");
    EXPECT_EQ(LoadMessage(60005), L"one");
}

TEST_F(LoadMessageTest, EndsAfter512Characters)
{
    EXPECT_EQ(LoadMessage(60003), std::wstring(512, L'x'));
    EXPECT_EQ(LoadMessage(60004, std::wstring(511, L'y').c_str()), std::wstring(511, L'y'));
    EXPECT_EQ(LoadMessage(60004, std::wstring(5000, L'y').c_str()), std::wstring(512, L'y'));
}

#include "utility/desktop/WindowClasses.h"

#include "tests/support/Substitute.h"
#include "utility/platform/WindowClasses.h"

#include <gtest/gtest.h>

#include <string>

TEST(GetClassAtomTest, IsWhatTheSystemHasForTheName)
{
    struct : utility::platform::WindowClassService
    {
        std::uint16_t Atom(const wchar_t* className) override
        {
            return std::wstring(className) == L"Edit" ? 0xC017 : 0;
        }
    } classes;
    const support::Substitute<utility::platform::WindowClassService> scope(utility::platform::WindowClassesSlot(),
                                                                           classes);
    EXPECT_EQ(GetClassAtom(L"Edit"), 0xC017);
    EXPECT_EQ(GetClassAtom(L"Tool"), 0);
}

TEST(GetClassAtomTest, ClassThatIsNotThereHasNone)
{
    EXPECT_EQ(GetClassAtom(L"No such class"), 0);
    EXPECT_EQ(GetClassAtom(L""), 0);
    EXPECT_EQ(GetClassAtom(nullptr), 0);
}

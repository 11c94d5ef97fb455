#include "utility/platform/WindowClasses.h"

#include <gtest/gtest.h>

TEST(PosixWindowClassesTest, ThereAreNone) { EXPECT_EQ(utility::platform::WindowClasses().Atom(L"Edit"), 0); }

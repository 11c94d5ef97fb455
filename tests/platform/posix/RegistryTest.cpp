#include "utility/platform/Registry.h"

#include "tests/support/posix/FailingCall.h"
#include "tests/support/ScratchHives.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

TEST(PosixRegistryTest, TextThatThereIsNoMemoryForIsAStatusAndNothingIsThrown)
{
    support::ScratchHives hives;
    const std::wstring text(1000, L'x');
    bool hasFailed = true;
    for (int at = 1; hasFailed; ++at)
    {
        HKEY key = nullptr;
        ASSERT_EQ(hives.RegCreateKeyW(HKEY_CURRENT_USER, L"Key", key), 0);
        const support::FailingCall failing("operator new", ENOMEM, at);
        const LSTATUS status = hives.RegSetValueW(key, nullptr, text.c_str());
        hasFailed = failing.HasFailed();
        EXPECT_EQ(status, hasFailed ? LSTATUS{ERROR_NOT_ENOUGH_MEMORY} : 0) << at;
        EXPECT_EQ(hives.RegCloseKey(key), 0);
        ASSERT_LT(at, 100);
        EXPECT_TRUE(hasFailed || at > 1);
    }
}

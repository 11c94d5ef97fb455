#include "utility/startup/LibraryFrame.h"

#include "tests/support/posix/FailingCall.h"
#include "utility/framework/internal/ResourceModules.h"

#include <gtest/gtest.h>

#include <cerrno>

TEST(ZeloInitMFCExtensionDLLTest, AddsNoLinkWithoutMemoryForIt)
{
    const auto* const earlier = utility::framework::FirstLibrary();
    {
        const support::FailingCall failing("operator new", ENOMEM);
        ZeloInitMFCExtensionDLL(nullptr, nullptr);
        EXPECT_TRUE(failing.HasFailed());
    }
    EXPECT_EQ(utility::framework::FirstLibrary(), earlier);
}

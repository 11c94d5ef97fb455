#include "utility/framework/internal/NewHandler.h"

#include <gtest/gtest.h>

TEST(FrameworkNewHandlerTest, IsNoneUntilOneIsSetAndThePreviousIsReturned)
{
    const utility::platform::NewHandler handler = [](std::size_t) { return 0; };
    EXPECT_EQ(utility::framework::SetNewHandler(handler), nullptr);
    EXPECT_EQ(utility::framework::SetNewHandler(nullptr), handler);
    EXPECT_EQ(utility::framework::SetNewHandler(nullptr), nullptr);
}

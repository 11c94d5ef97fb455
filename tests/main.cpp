#include "tests/support/OwnHives.h"
#include "utility/failures/LibraryFrame.h"

#include <gtest/gtest.h>

int main(int argumentCount, char** arguments)
{
    ::testing::InitGoogleTest(&argumentCount, arguments);
    support::UseOwnHives();
    InitialiseUtilityDLL();
    return RUN_ALL_TESTS();
}

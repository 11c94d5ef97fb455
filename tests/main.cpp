#include "utility/failures/LibraryFrame.h"

#include <gtest/gtest.h>

int main(int argumentCount, char** arguments)
{
    ::testing::InitGoogleTest(&argumentCount, arguments);
    InitialiseUtilityDLL();
    return RUN_ALL_TESTS();
}

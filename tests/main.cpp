#include "tests/support/OwnHives.h"
#include "utility/crash/UnhandledExceptionFilter.h"
#include "utility/startup/LibraryFrame.h"

#include <gtest/gtest.h>

#include <clocale>

int main(int argumentCount, char** arguments)
{
    // The library has made the user's language that of the C library, whose numbers tests compare with.
    std::setlocale(LC_ALL, "C");
    ::testing::InitGoogleTest(&argumentCount, arguments);
    support::UseOwnHives();
    // A test that fails by a fault tells that by itself, and the user's home is not for tests.
    CUnhandledExceptionFilter::g_bGenerateExceptionReport = false;
    InitialiseUtilityDLL();
    return RUN_ALL_TESTS();
}

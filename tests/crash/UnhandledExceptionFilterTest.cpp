#include "utility/crash/UnhandledExceptionFilter.h"

#include "tests/support/CaughtFault.h"
#include "utility/platform/Faults.h"

#include <gtest/gtest.h>

using utility::platform::FaultDisposition;
using utility::platform::FaultFilter;
using utility::platform::SetFaultFilter;

namespace
{

FaultDisposition FilterOfTheHost(_EXCEPTION_POINTERS*) { return 0; }
FaultDisposition OtherFilterOfTheHost(_EXCEPTION_POINTERS*) { return 0; }

/// The filter of the process is the host's own as long as one lives.
struct UnhandledExceptionFilterTest : testing::Test
{
    UnhandledExceptionFilterTest() : m_before(SetFaultFilter(&FilterOfTheHost)) {}
    ~UnhandledExceptionFilterTest() override { SetFaultFilter(m_before); }

    static FaultFilter Present()
    {
        const FaultFilter present = SetFaultFilter(&OtherFilterOfTheHost);
        SetFaultFilter(present);
        return present;
    }

    FaultFilter m_before;
};

}

#ifndef _WIN32 // where that of the first translator of the process stays ahead of it

TEST_F(UnhandledExceptionFilterTest, LibraryHasOneForAsLongAsItIsLoaded)
{
    EXPECT_EQ(m_before, &CUnhandledExceptionFilter::UnhandledExceptionFilter);
}

#endif

TEST_F(UnhandledExceptionFilterTest, TakesThePlaceOfTheEarlierFilterAndPutsItBack)
{
    {
        const CUnhandledExceptionFilter filter;
        EXPECT_EQ(Present(), &CUnhandledExceptionFilter::UnhandledExceptionFilter);
    }
    EXPECT_EQ(Present(), &FilterOfTheHost);
}

TEST_F(UnhandledExceptionFilterTest, DeliberatelyPutsBackTheEarlierFilterOfTheOneThatWasAssignedToIt)
{
    {
        CUnhandledExceptionFilter first;
        SetFaultFilter(&OtherFilterOfTheHost);
        first = CUnhandledExceptionFilter();
        EXPECT_EQ(Present(), &OtherFilterOfTheHost);
        SetFaultFilter(&FilterOfTheHost);
    }
    EXPECT_EQ(Present(), &OtherFilterOfTheHost);
}

TEST_F(UnhandledExceptionFilterTest, FaultThatNoEarlierFilterTakesGoesOn)
{
    const support::WithoutReports scope;
    _EXCEPTION_RECORD record = {};
    record.ExceptionCode = 0xC0000017;
    _CONTEXT context = {};
    _EXCEPTION_POINTERS fault = {&record, &context};
    EXPECT_EQ(CUnhandledExceptionFilter::UnhandledExceptionFilter(&fault), 0);
}

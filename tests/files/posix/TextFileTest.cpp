#include "utility/files/TextFile.h"

#include "tests/support/posix/FailingCall.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/BinaryFile.h"

#include <gtest/gtest.h>

#include <cerrno>

using support::FailingCall;

TEST(PosixTextFileTest, NarrowTextAndNumbersAllocateNothing)
{
    const support::TemporaryFolder folder;
    CTextFile text;
    text.Open(folder / "text");
    CBinaryFile binary;
    binary.Open(folder / "binary");
    const FailingCall noMemory("operator new", ENOMEM, FailingCall::always);
    text << 'c' << ""
         << "text" << -1 << 1U << -1L << 1UL << -1LL << 1ULL;
    binary << ""
           << "text" << 1.0F << DWORD{1} << static_cast<unsigned short>(1);
    EXPECT_FALSE(noMemory.HasFailed());
}

TEST(PosixTextFileTest, EmptyInsertionCallsNothingOfTheSystem)
{
    const support::TemporaryFolder folder;
    CTextFile text;
    text.Open(folder / "text");
    const FailingCall write("write", EIO, FailingCall::always);
    text << "" << L"";
    text.WriteFile("", 0);
    EXPECT_FALSE(write.HasFailed());
}

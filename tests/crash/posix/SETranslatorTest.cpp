#include "utility/crash/SETranslator.h"

#include "tests/support/CaughtFault.h"
#include "tests/support/FaultsOfTheProcessor.h"
#include "tests/support/posix/Child.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/files/TextInputOutputFile.h"
#include "utility/memory/ThreadAllocator.h"
#include "utility/platform/Debugger.h"
#include "utility/records/TextRecordPtr.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <pthread.h>
#include <string>
#include <sys/resource.h>
#include <thread>

// A sanitizer has handlers of its own, which come first.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

using support::CatchFault;
using support::Caught;
using support::Child;

namespace
{

class CursorOverBlanks final : public CTextRecordPtr
{
public:
    using CTextRecordPtr::CTextRecordPtr;
    bool IsTerminator(char c) override { return c == ' '; }
};

class PosixSETranslatorTest : public testing::Test
{
private:
    const support::WithoutReports m_without;
};

}

TEST_F(PosixSETranslatorTest, FileThatIsShortenedUnderItsReaderIsAFailureThatCanBeCaught)
{
    const support::TemporaryFolder folder;
    const std::string line = "12345" + std::string(94, ' ') + '\n';
    std::string text;
    for (int number = 0; number < 200; ++number)
        text += line;
    const auto path = folder.File("part.txt", text);
    const CSETranslator translator;
    CTextInputOutputFile file(path);
    ASSERT_TRUE(file.IsValid());
    boost::filesystem::resize_file(path, 4096);
    int lines = 0;
    const Caught caught = CatchFault(
        [&]
        {
            for (const char* start = file.DataPtr(); lines < 200; start += 100, ++lines)
            {
                CursorOverBlanks cursor(&file);
                cursor.Add(start, start + 99);
                int value = 0;
                EXPECT_TRUE(cursor.ReadInt(value));
                EXPECT_EQ(value, 12345);
            }
        });
    EXPECT_EQ(caught.code, 0xC0000006);
    EXPECT_EQ(lines, 41);
}

TEST_F(PosixSETranslatorTest, ThreadSurvivesTheEndOfItsStackAgainAndAgain)
{
    std::thread(
        []
        {
            const CThreadAllocatorManager manager;
            for (int time = 0; time < 5; ++time)
            {
                const CSETranslator translator;
                bool isDestroyed = false;
                const Caught caught = CatchFault(
                    [&]
                    {
                        const std::shared_ptr<bool> object(&isDestroyed, [](bool* is) { *is = true; });
                        support::ExhaustStack();
                    });
                EXPECT_EQ(caught.code, 0xC00000FD);
                EXPECT_TRUE(isDestroyed);
            }
            const CSETranslator translator;
            for (int time = 0; time < 5; ++time)
                EXPECT_EQ(CatchFault([] { support::ExhaustStack(); }).code, 0xC00000FD);
        })
        .join();
}

TEST_F(PosixSETranslatorTest, MainThreadSurvivesTheEndOfItsStackAndItsLimitIsAsBefore)
{
    // Of a thread that has its limit from the system, which the tests' own stack is grown for here.
    Child child(
        []
        {
            rlimit before;
            ::getrlimit(RLIMIT_STACK, &before);
            int caught = 0;
            for (int time = 0; time < 3; ++time)
            {
                const CSETranslator translator;
                caught += CatchFault([] { support::ExhaustStack(); }).code == 0xC00000FD;
            }
            rlimit after;
            ::getrlimit(RLIMIT_STACK, &after);
            return caught == 3 && after.rlim_cur == before.rlim_cur ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
}

TEST_F(PosixSETranslatorTest, ThreadWithoutRoomOnItsStackEndsTheProcessByTheFault)
{
    Child child(
        []
        {
            pthread_attr_t small;
            ::pthread_attr_init(&small);
            ::pthread_attr_setstacksize(&small, 128 * 1024);
            pthread_t thread;
            ::pthread_create(
                &thread, &small,
                [](void*) -> void*
                {
                    const CSETranslator translator;
                    CatchFault([] { support::ExhaustStack(); });
                    return nullptr;
                },
                nullptr);
            ::pthread_join(thread, nullptr);
            return 0;
        });
    EXPECT_EQ(child.Signal(), SIGSEGV);
}

TEST_F(PosixSETranslatorTest, WhatAProcessSendsItselfIsNotThrown)
{
    for (const int signal : {SIGABRT, SIGSEGV, SIGFPE})
    {
        Child child(
            [=]
            {
                const CSETranslator translator;
                return CatchFault([=] { ::raise(signal); }).code == 0 ? 0 : 1;
            });
        EXPECT_EQ(child.Signal(), signal);
    }
}

TEST_F(PosixSETranslatorTest, FaultOnAnotherThreadIsNotThrown)
{
    Child child(
        []
        {
            const CSETranslator translator;
            std::thread([] { support::ReadAt(8); }).join();
            return 0;
        });
    EXPECT_EQ(child.Signal(), SIGSEGV);
}

TEST_F(PosixSETranslatorTest, FaultBehindItsScopeIsNotThrown)
{
    Child child(
        []
        {
            {
                const CSETranslator translator;
            }
            return CatchFault([] { support::ReadAt(8); }).code == 0 ? 0 : 1;
        });
    EXPECT_EQ(child.Signal(), SIGSEGV);
}

TEST_F(PosixSETranslatorTest, DebuggerThatCameLaterIsStoppedInAndNothingIsThrown)
{
    class LateDebugger final : public utility::platform::DebuggerService
    {
    public:
        bool IsPresent() override { return m_questions++ != 0; }
        void NameThread(DWORD, const char*) override {}
        void Break() override { ::_exit(3); }
        void Output(const wchar_t*) override {}
        void Output(const char*) override {}

    private:
        int m_questions = 0;
    };
    Child child(
        []
        {
            LateDebugger debugger;
            utility::platform::DebuggerSlot().Exchange(debugger);
            const CSETranslator translator;
            CatchFault([] { support::ReadAt(8); });
            return 0;
        });
    EXPECT_EQ(child.ExitCode(), 3);
}

TEST(PosixSETranslatorReportTest, FaultThatIsCaughtLeavesAReportAllTheSame)
{
    const support::TemporaryFolder folder;
    Child child(
        [&]
        {
            ::setenv("XDG_DATA_HOME", folder.Path().c_str(), 1);
            CUnhandledExceptionFilter::g_bGenerateExceptionReport = true;
            const CSETranslator translator;
            return CatchFault([] { support::ReadAt(8); }).code == 0xC0000005 ? 0 : 1;
        });
    EXPECT_EQ(child.ExitCode(), 0);
    std::size_t reports = 0;
    for (const auto& entry : boost::filesystem::recursive_directory_iterator(folder.Path()))
        reports += entry.path().extension() == ".xml" && file_size(entry.path()) > 100;
    EXPECT_EQ(reports, 1U);
}

#endif

TEST(SanitizedFaultDeathTest, IsToldByTheSanitizerAsEver)
{
#ifdef __SANITIZE_ADDRESS__
    const CSETranslator translator;
    // Null itself would be told by the other sanitizer, and there would be no fault.
    EXPECT_DEATH(*reinterpret_cast<volatile int*>(16) = 1, "AddressSanitizer: SEGV on unknown address 0x0*10 ");
#else
    GTEST_SKIP() << "The build lacks AddressSanitizer";
#endif
}

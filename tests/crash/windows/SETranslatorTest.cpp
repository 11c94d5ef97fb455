#include "utility/crash/SETranslator.h"

#include "tests/support/CaughtFault.h"
#include "tests/support/FaultsOfTheProcessor.h"
#include "tests/support/RecordingDebugger.h"
#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/Faults.h"

#include <gtest/gtest.h>

#include <thread>
#include <windows.h>

using support::CatchFault;

extern "C" decltype(&::SetThreadStackGuarantee) __imp_SetThreadStackGuarantee;

TEST(WindowsSETranslatorTest, DebuggerThatCameLaterIsStoppedInAndTheInstructionIsTriedOnceMore)
{
    static void* page;
    page = ::VirtualAlloc(nullptr, 4096, MEM_COMMIT | MEM_RESERVE, PAGE_NOACCESS);
    struct MendingDebugger final : support::RecordingDebugger
    {
        void Break() override
        {
            ++breaks;
            DWORD before = 0;
            ::VirtualProtect(page, 4096, PAGE_READWRITE, &before);
        }
    };
    const support::WithoutReports without;
    MendingDebugger debugger;
    const CSETranslator translator;
    debugger.isPresent = true;
    const auto caught = CatchFault([] { EXPECT_EQ(support::ReadAt(reinterpret_cast<std::uintptr_t>(page)), 0); });
    EXPECT_EQ(caught.code, 0U);
    EXPECT_EQ(debugger.breaks, 1);
    // What comes afterwards is another fault.
    debugger.isPresent = false;
    EXPECT_EQ(CatchFault([] { support::ReadAt(8); }).code, 0xC0000005);
    ::VirtualFree(page, 0, MEM_RELEASE);
}

TEST(WindowsSETranslatorTest, RecordsAreThoseOfTheFaultAndNotOfOneWithinTheTranslator)
{
    struct FaultingDebugger final : support::RecordingDebugger
    {
        bool IsPresent() override
        {
            if (++questions == 2)
            {
                EXPECT_EQ(CatchFault([] { support::ReadAt(8); }).code, 0xC0000005);
            }
            return false;
        }
    };
    const support::WithoutReports without;
    FaultingDebugger debugger;
    const CSETranslator translator;
    const support::Caught caught = CatchFault([] { support::ExecuteNoInstruction(); });
    EXPECT_GE(debugger.questions, 2);
    EXPECT_EQ(caught.code, 0xC000001D);
    EXPECT_EQ(caught.message.find(L"referenced memory"), std::wstring::npos);
}

TEST(WindowsSETranslatorTest, ThreadsThatHaveOneAndTheOneThatLoadsTheLibraryKeepRoomAtTheEndOfTheirStacks)
{
    static ULONG asked;
    const support::ImportedCall call(__imp_SetThreadStackGuarantee,
                                     [](ULONG* size) -> BOOL
                                     {
                                         asked += *size;
                                         return TRUE;
                                     });
    asked = 0;
    {
        const CSETranslator translator;
    }
    EXPECT_EQ(asked, 64U * 1024);
    utility::platform::SetFaultFilter(utility::platform::SetFaultFilter(nullptr));
    EXPECT_EQ(asked, 2 * 64U * 1024);
}

TEST(WindowsSETranslatorTest, ThreadSurvivesTheEndOfItsStackAgainAndAgain)
{
    const support::WithoutReports without;
    std::thread(
        []
        {
            const CSETranslator translator;
            for (int time = 0; time < 5; ++time)
                EXPECT_EQ(CatchFault([] { support::ExhaustStack(); }).code, 0xC00000FD);
        })
        .join();
}

#include "utility/crash/SETranslator.h"

#include "tests/support/CaughtFault.h"
#include "tests/support/FaultsOfTheProcessor.h"
#include "tests/support/RecordingDebugger.h"
#include "utility/platform/Faults.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>
#include <xmmintrin.h>

using support::CatchFault;
using support::Caught;

namespace
{

class SETranslatorTest : public testing::Test
{
private:
    const support::WithoutReports m_without;
    const support::KeepFloatingControl m_control;
};

struct Fault
{
    DWORD code;
    void (*happen)();
};

/// With records of its own.
class Failure
{
public:
    explicit Failure(unsigned int code, std::uint64_t access = 0) : m_code(code)
    {
        m_record.ExceptionAddress = reinterpret_cast<void*>(0x123456789ABCDEF0);
        m_record.ExceptionInformation[0] = access;
        m_record.ExceptionInformation[1] = 0xFEDCBA98000000AB;
    }

    std::wstring Message()
    {
        CStructuredException failure(m_code, &m_pointers);
        wchar_t text[300];
        EXPECT_EQ(failure.GetErrorMessage(text, 300, nullptr), 1);
        return text;
    }

    _EXCEPTION_POINTERS* Pointers() { return &m_pointers; }

private:
    unsigned int m_code;
    _EXCEPTION_RECORD m_record = {};
    _CONTEXT m_context = {};
    _EXCEPTION_POINTERS m_pointers = {&m_record, &m_context};
};

using CodeAndText = std::pair<unsigned int, const wchar_t*>;

class StructuredExceptionTextTest : public testing::TestWithParam<CodeAndText>
{
};

class TranslatedFaultTest : public SETranslatorTest, public testing::WithParamInterface<Fault>
{
};

}

// A sanitizer has handlers of its own, which come first and end the process.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

TEST_P(TranslatedFaultTest, IsThrownAgainAndAgainAndDestructorsRun)
{
    const CSETranslator translator;
    for (int time = 0; time < 3; ++time)
    {
        auto object = std::make_shared<int>(1);
        const Caught caught = CatchFault(
            [&]
            {
                const std::shared_ptr<int> inner = object;
                GetParam().happen();
            });
        EXPECT_EQ(caught.code, GetParam().code);
        EXPECT_EQ(object.use_count(), 1);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Each, TranslatedFaultTest,
    testing::Values(Fault{0xC0000005, [] { support::ReadAt(8); }}, Fault{0xC0000005, [] { support::WriteAt(16); }},
                    Fault{0xC0000005, [] { support::CallAt(0); }}, Fault{0xC0000005, [] { support::CallAt(0x1000); }},
                    Fault{0xC0000094, [] { support::DivideByNothing(); }},
                    Fault{0xC000008E, [] { support::DivideUnmasked(1.0, 0.0, _EM_ZERODIVIDE); }},
                    Fault{0xC0000090, [] { support::DivideUnmasked(0.0, 0.0, _EM_INVALID); }},
                    Fault{0xC0000091, [] { support::DivideUnmasked(1e300, 1e-300, _EM_OVERFLOW); }},
                    Fault{0xC0000093, [] { support::DivideUnmasked(1e-300, 1e300, _EM_UNDERFLOW); }},
                    Fault{0xC000008F, [] { support::DivideUnmasked(1.0, 3.0, _EM_INEXACT); }},
                    Fault{0xC000001D, [] { support::ExecuteNoInstruction(); }},
                    Fault{0xC0000096, [] { support::ExecuteInstructionOfTheKernel(); }},
                    Fault{0x80000003, [] { support::Breakpoint(); }},
                    Fault{0xC000001D, [] { support::ExecuteNoInstructionWithoutAFrame(); }}));

TEST_F(SETranslatorTest, AccessIsToldWithItsAddress)
{
    const CSETranslator translator;
    const Caught read = CatchFault([] { support::ReadAt(0x18); });
    EXPECT_EQ(read.access, 0U);
    EXPECT_EQ(read.address, 0x18U);
    EXPECT_TRUE(read.message.ends_with(L"referenced memory at \"0x00000018\". The memory could not be read."))
        << testing::PrintToString(read.message);
    const Caught write = CatchFault([] { support::WriteAt(0x28); });
    EXPECT_EQ(write.access, 1U);
    EXPECT_EQ(write.address, 0x28U);
    EXPECT_TRUE(write.message.ends_with(L"The memory could not be written."));
    const Caught call = CatchFault([] { support::CallAt(0x1000); });
    EXPECT_EQ(call.address, 0x1000U);
    EXPECT_EQ(call.instruction, reinterpret_cast<void*>(0x1000));
}

TEST_F(SETranslatorTest, AddressThatNoMemoryCanHaveIsAllOnes)
{
    const CSETranslator translator;
    const Caught caught = CatchFault([] { support::ReadAt(0x8000000000000000); });
    EXPECT_EQ(caught.code, 0xC0000005);
    EXPECT_EQ(caught.address, std::numeric_limits<std::uint64_t>::max());
}

TEST_F(SETranslatorTest, InnerOneCountsAndGivesTheThreadBackToTheOuter)
{
    const CSETranslator outer;
    {
        const CSETranslator inner;
        EXPECT_EQ(CatchFault([] { support::ReadAt(8); }).code, 0xC0000005);
    }
    EXPECT_EQ(CatchFault([] { support::ReadAt(8); }).code, 0xC0000005);
}

TEST_F(SETranslatorTest, FaultWhileAnotherIsHandledIsThrownToo)
{
    const CSETranslator translator;
    Caught second;
    try
    {
        support::ReadAt(8);
    }
    catch (CStructuredException* failure)
    {
        second = CatchFault([] { support::DivideByNothing(); });
        failure->Delete();
    }
    EXPECT_EQ(second.code, 0xC0000094);
}

TEST_F(SETranslatorTest, EachThreadHasItsOwn)
{
    const CSETranslator translator;
    DWORD codes[4] = {};
    {
        std::vector<std::jthread> threads;
        for (DWORD& code : codes)
            threads.emplace_back(
                [&code]
                {
                    const CSETranslator own;
                    for (int time = 0; time < 20; ++time)
                        code = CatchFault([] { support::ReadAt(8); }).code;
                });
    }
    for (const DWORD code : codes)
        EXPECT_EQ(code, 0xC0000005);
    EXPECT_EQ(CatchFault([] { support::ReadAt(8); }).code, 0xC0000005);
}

TEST_F(SETranslatorTest, RoundingAndMasksAreThoseFromBeforeTheFaultAndNothingIsPending)
{
    namespace platform = utility::platform;
    const CSETranslator translator;
    platform::FloatingControl(_RC_UP, _MCW_RC);
    EXPECT_EQ(CatchFault([] { support::DivideUnmasked(1.0, 0.0, _EM_ZERODIVIDE); }).code, 0xC000008E);
    const unsigned int control = platform::FloatingControl(0, 0);
    EXPECT_EQ(control & _MCW_RC, _RC_UP);
    EXPECT_EQ(control & _EM_ZERODIVIDE, 0U);
    EXPECT_EQ(control & _EM_INVALID, _EM_INVALID);
    EXPECT_EQ(_mm_getcsr() & 0x3F, 0U);
    // The old unit's stack is empty again: eight values go in.
    EXPECT_EQ(CatchFault(
                  []
                  {
                      asm volatile("fld1; fld1; fld1; fld1");
                      support::ReadAt(8);
                  })
                  .code,
              0xC0000005);
    double sum = 0.0;
    asm volatile("fld1; fld1; fld1; fld1; fld1; fld1; fld1; fld1;"
                 "faddp; faddp; faddp; faddp; faddp; faddp; faddp; fstpl %0"
                 : "=m"(sum));
    EXPECT_EQ(sum, 8.0);
}

TEST_F(SETranslatorTest, RepairsTheFloatingStateWhateverTheSystemLeavesOfIt)
{
    namespace platform = utility::platform;
    const CSETranslator translator;
    const platform::FaultTranslator translate = platform::SetFaultTranslator(nullptr);
    platform::SetFaultTranslator(translate);
    platform::FloatingControl(_RC_UP, _MCW_RC);
    const unsigned int before = platform::FloatingControl(0, 0);
    Failure failure(0xC0000094);
    _mm_setcsr(_mm_getcsr() | 0x3F);
    asm volatile("fld1; fld1; fld1; fld1; fld1; fld1; fld1; fld1");
    CatchFault([&] { translate(0xC0000094, failure.Pointers()); });
    EXPECT_EQ(_mm_getcsr() & 0x3F, 0U);
    EXPECT_EQ(platform::FloatingControl(0, 0), before);
    double sum = 0.0;
    asm volatile("fld1; fld1; fld1; fld1; fld1; fld1; fld1; fld1;"
                 "faddp; faddp; faddp; faddp; faddp; faddp; faddp; fstpl %0"
                 : "=m"(sum));
    EXPECT_EQ(sum, 8.0);
}

TEST_F(SETranslatorTest, IsNotInstalledWithADebugger)
{
    support::RecordingDebugger debugger;
    debugger.isPresent = true;
    EXPECT_TRUE(ZeloIsDebuggerPresent());
    {
        const CSETranslator none;
        EXPECT_EQ(debugger.questions, 2);
    }
    debugger.isPresent = false;
    EXPECT_FALSE(ZeloIsDebuggerPresent());
    // One that did nothing at its start does nothing at its end either.
    const CSETranslator outer;
    {
        debugger.isPresent = true;
        const CSETranslator none;
        debugger.isPresent = false;
    }
    EXPECT_EQ(CatchFault([] { support::ReadAt(8); }).code, 0xC0000005);
}

#endif

TEST_P(StructuredExceptionTextTest, IsInTheMessageWithTheInstruction)
{
    const auto& [code, text] = GetParam();
    wchar_t number[16];
    std::swprintf(number, 16, L"%08X", code);
    EXPECT_EQ(Failure(code).Message(), std::wstring(L"Structured exception caught. Exception code: 0x") + number +
                                           L". " + text + L"\nGenerated by the instruction at \"0x9abcdef0\"");
}

INSTANTIATE_TEST_SUITE_P(
    Each, StructuredExceptionTextTest,
    testing::Values(
        CodeAndText{0x80000002, L"EXCEPTION_DATATYPE_MISALIGNMENT"}, CodeAndText{0x80000003, L"EXCEPTION_BREAKPOINT"},
        CodeAndText{0x80000004, L"EXCEPTION_SINGLE_STEP"}, CodeAndText{0xC000008C, L"EXCEPTION_ARRAY_BOUNDS_EXCEEDED"},
        CodeAndText{0xC000008D, L"EXCEPTION_FLT_DENORMAL_OPERAND"},
        CodeAndText{0xC000008E, L"EXCEPTION_FLT_DIVIDE_BY_ZERO"},
        CodeAndText{0xC000008F, L"EXCEPTION_FLT_INEXACT_RESULT"},
        CodeAndText{0xC0000090, L"EXCEPTION_FLT_INVALID_OPERATION"}, CodeAndText{0xC0000091, L"EXCEPTION_FLT_OVERFLOW"},
        CodeAndText{0xC0000092, L"EXCEPTION_FLT_STACK_CHECK"}, CodeAndText{0xC0000093, L"EXCEPTION_FLT_UNDERFLOW"},
        CodeAndText{0xC0000094, L"EXCEPTION_INT_DIVIDE_BY_ZERO"}, CodeAndText{0xC0000095, L"EXCEPTION_INT_OVERFLOW"},
        CodeAndText{0xC0000096, L"EXCEPTION_PRIV_INSTRUCTION"}, CodeAndText{0xC0000006, L"EXCEPTION_IN_PAGE_ERROR"},
        CodeAndText{0xC000001D, L"EXCEPTION_ILLEGAL_INSTRUCTION"},
        CodeAndText{0xC0000025, L"EXCEPTION_NONCONTINUABLE_EXCEPTION"},
        CodeAndText{0xC00000FD, L"EXCEPTION_STACK_OVERFLOW"}, CodeAndText{0xC0000026, L"EXCEPTION_INVALID_DISPOSITION"},
        CodeAndText{0x80000001, L"EXCEPTION_GUARD_PAGE"}, CodeAndText{0xC0000008, L"EXCEPTION_INVALID_HANDLE"}));

TEST(StructuredExceptionTest, MessageOfAnAccessViolationTellsWhatWasReadOrWrittenByLowHalves)
{
    const std::wstring start = L"Structured Exception caught. Exception code: 0xC0000005. EXCEPTION_ACCESS_VIOLATION\n"
                               L"The instruction at \"0x9abcdef0\" referenced memory at \"0x000000ab\". "
                               L"The memory could not be ";
    EXPECT_EQ(Failure(0xC0000005).Message(), start + L"read.");
    EXPECT_EQ(Failure(0xC0000005, 1).Message(), start + L"written.");
    EXPECT_EQ(Failure(0xC0000005, 8).Message(), start + L"written.");
}

TEST(StructuredExceptionTest, MessageOfACodeWithoutANameHasNone)
{
    EXPECT_EQ(Failure(0xE06D7363).Message(), L"Structured exception caught. Exception code: 0xE06D7363. \n"
                                             L"Generated by the instruction at \"0x9abcdef0\"");
}

TEST(StructuredExceptionTest, MessageIsCutToTheBuffer)
{
    Failure records(0);
    CStructuredException failure(0xC0000094, records.Pointers());
    wchar_t text[8] = L"1234567";
    unsigned int help = 9;
    EXPECT_EQ(failure.GetErrorMessage(text, 7, &help), 1);
    EXPECT_STREQ(text, L"Struct");
    EXPECT_EQ(help, 0U);
    EXPECT_EQ(failure.GetErrorMessage(text, 1, nullptr), 1);
    EXPECT_STREQ(text, L"");
}

TEST(StructuredExceptionTest, SizeOfNothingIsDeliberatelyTheLargest)
{
    Failure records(0);
    CStructuredException failure(0xC0000094, records.Pointers());
    wchar_t text[300];
    EXPECT_EQ(failure.GetErrorMessage(text, 0, nullptr), 1);
    EXPECT_EQ(text, Failure(0xC0000094).Message());
}

TEST(StructuredExceptionTest, KeepsThePointersAndNotWhatTheyPointTo)
{
    Failure records(0);
    CStructuredException failure(0xC0000094, records.Pointers());
    _EXCEPTION_POINTERS* const own = failure.GetExceptionPointers();
    EXPECT_NE(own, records.Pointers());
    EXPECT_EQ(own->ExceptionRecord, records.Pointers()->ExceptionRecord);
    EXPECT_EQ(own->ContextRecord, records.Pointers()->ContextRecord);
}

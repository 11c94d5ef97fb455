#pragma once

#include "utility/crash/SETranslator.h"
#include "utility/crash/UnhandledExceptionFilter.h"
#include "utility/platform/Types.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace support
{

/// As long as it lives faults leave no reports.
class WithoutReports
{
public:
    WithoutReports() : m_before(std::exchange(CUnhandledExceptionFilter::g_bGenerateExceptionReport, false)) {}
    WithoutReports(const WithoutReports&) = delete;
    WithoutReports& operator=(const WithoutReports&) = delete;
    ~WithoutReports() { CUnhandledExceptionFilter::g_bGenerateExceptionReport = m_before; }

private:
    bool m_before;
};

/// A failure as it was when it was caught.
struct Caught
{
    DWORD code = 0;
    std::uint64_t access = 0;
    std::uint64_t address = 0;
    const void* instruction = nullptr;
    std::wstring message;
};

inline Caught TakeFailure(CStructuredException* failure)
{
    const _EXCEPTION_RECORD& record = *failure->GetExceptionPointers()->ExceptionRecord;
    wchar_t text[256];
    unsigned int help = 7;
    EXPECT_EQ(failure->GetErrorMessage(text, 256, &help), 1);
    EXPECT_EQ(help, 0U);
    Caught caught = {record.ExceptionCode, record.ExceptionInformation[0], record.ExceptionInformation[1],
                     record.ExceptionAddress, text};
    failure->Delete();
    return caught;
}

/// What a fault is caught as; code 0 if there was none.
template <class Work>
Caught CatchFault(Work work)
{
    try
    {
        work();
    }
    catch (CStructuredException* failure)
    {
        return TakeFailure(failure);
    }
    return {};
}

}

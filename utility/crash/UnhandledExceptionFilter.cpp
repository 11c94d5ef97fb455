#include "utility/crash/UnhandledExceptionFilter.h"

#include "utility/crash/internal/ExceptionReport.h"
#include "utility/crash/internal/ReportLog.h"
#include "utility/platform/Faults.h"
#include "utility/platform/LoadOrder.h"
#include "utility/platform/ThreadSlot.h"

namespace
{

using namespace utility::platform;

constinit StaticPlace<CUnhandledExceptionFilter> theFilter;

/// Of the thread that writes a report. A fault within that is the report's and not the program's: it has none of its
/// own, or one would follow the other.
constinit ThreadSlot reportingSlot;

void InstallFilter()
{
    reportingSlot.Take();
    theFilter.Make();
}

void PutEarlierFilterBack()
{
    theFilter.Destroy();
    reportingSlot.GiveBack();
}

[[gnu::init_priority(faultFilterIsInstalled)]] LoadStep filterStep(faultFilterIsInstalled, &InstallFilter,
                                                                   &PutEarlierFilterBack);

}

constinit bool CUnhandledExceptionFilter::g_bGenerateExceptionReport = true;

CUnhandledExceptionFilter::CUnhandledExceptionFilter()
    : m_pPrevious(utility::platform::SetFaultFilter(&UnhandledExceptionFilter))
{
}

CUnhandledExceptionFilter& CUnhandledExceptionFilter::operator=(const CUnhandledExceptionFilter&) = default;

CUnhandledExceptionFilter::~CUnhandledExceptionFilter() { utility::platform::SetFaultFilter(m_pPrevious); }

FaultDisposition CUnhandledExceptionFilter::UnhandledExceptionFilter(_EXCEPTION_POINTERS* fault)
{
    CUnhandledExceptionFilter& filter = *theFilter;
    const FaultDisposition disposition = filter.m_pPrevious != nullptr ? filter.m_pPrevious(fault) : 0;
    if (g_bGenerateExceptionReport)
        filter.GenerateExceptionReport(fault);
    return disposition;
}

void CUnhandledExceptionFilter::GenerateExceptionReport(_EXCEPTION_POINTERS* const fault)
{
    using namespace utility;
    if (reportingSlot.Value() != nullptr)
        return;
    const utility::platform::ThreadSlot::Mark reporting(reportingSlot);
    // Without registers there is this process's own stack to tell of.
    if (fault->ContextRecord != nullptr && platform::ReportFromOutside(*fault, detail::TheKeptLog()))
        return;
    detail::WriteExceptionReport(*fault, [](const boost::filesystem::path& report) { detail::WriteReportLog(report); });
}

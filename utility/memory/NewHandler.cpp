#include "utility/memory/NewHandler.h"

#include "utility/framework/internal/NewHandler.h"
#include "utility/memory/MemoryReport.h"
#include "utility/platform/Debugger.h"
#include "utility/platform/Heap.h"
#include "utility/platform/ThreadSlot.h"
#include "utility/platform/UntilUnload.h"

#include <boost/format.hpp>

#include <locale>

using utility::platform::Debugger;

namespace utility::detail
{

extern platform::ThreadSlot reportingSlot;
constinit platform::ThreadSlot reportingSlot;

}

using utility::detail::reportingSlot;

CNewHandler::CNewHandler() : m_debuggerPresent(Debugger().IsPresent())
{
    static utility::platform::UntilUnload<utility::platform::ThreadSlot::Lifetime> slotLifetime(reportingSlot);
    // Asked each time: a debugger may come at any moment.
    if (!Debugger().IsPresent())
        m_previousHandler = utility::platform::SetNewHandler(&NewHandler);
    if (!Debugger().IsPresent())
        m_previousFrameworkHandler = utility::framework::SetNewHandler(&NewHandler);
}

CNewHandler::~CNewHandler()
{
    // Deliberately this way round.
    if (m_debuggerPresent)
    {
        utility::platform::SetNewHandler(m_previousHandler);
        utility::framework::SetNewHandler(m_previousFrameworkHandler);
    }
}

int CNewHandler::NewHandler(std::size_t size)
{
    // The report needs memory too. Where that is not to be had either, the failure is the same, without the rest of it.
    if (reportingSlot.Value() != nullptr)
        utility::platform::ThrowBadAllocation();
    const utility::platform::ThreadSlot::Mark reporting(reportingSlot);
    // To mark the thread may take memory as well; a report that does not know itself would go round for ever.
    if (reportingSlot.Value() == nullptr)
        utility::platform::ThrowBadAllocation();
    WalkAddressSpace();
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof(status);
    // Deliberately this way round: the line is for figures that are not to be trusted.
    if (!QLMMemoryStatus(&status))
    {
        boost::wformat text(
            L"new failed trying to service request for %1% bytes. ullTotalVirtual: %2% ullAvailVirtual: "
            L"%3%\n",
            std::locale::classic());
        Debugger().Output((text % size % status.ullTotalVirtual % status.ullAvailVirtual).str().c_str());
    }
    utility::platform::ThrowBadAllocation();
}

// The program that writes the report of another process's fault, which waits for it: the memory, the locks and the
// stack here are sound, whatever happened there. It gives 0 if there is a report.

#include "utility/crash/internal/ExceptionReport.h"
#include "utility/crash/internal/ReportLog.h"
#include "utility/platform/posix/faults/ReportedProcess.h"
#include "utility/platform/posix/faults/ReportRequest.h"

#include <cerrno>
#include <unistd.h>

namespace
{

using namespace utility;
using namespace utility::platform::posix;

bool ReadRequest(ReportRequest& request)
{
    auto* const bytes = reinterpret_cast<char*>(&request);
    std::size_t done = 0;
    while (done < sizeof(request))
    {
        const ssize_t read = ::read(STDIN_FILENO, bytes + done, sizeof(request) - done);
        if (read > 0)
            done += static_cast<std::size_t>(read);
        else if (read == 0 || errno != EINTR)
            return false;
    }
    return true;
}

}

int main()
{
    // Symbols are given up in time by themselves: this is for what may hang beside them, as a file on a network.
    ::alarm(2 * reportSeconds);
    ReportRequest request;
    if (!ReadRequest(request))
        return 2;
    SetReportedThread(request.thread, request.threadInProc);
    const _EXCEPTION_POINTERS fault = {&request.record, &request.context};
    const auto opened = [&request](const boost::filesystem::path& report)
    {
        static_cast<void>(::write(STDOUT_FILENO, "", 1));
        const auto read = [](std::uint64_t address, void* bytes, std::size_t size)
        { return ReadReportedProcess(address, bytes, size) == size; };
        if (request.log != nullptr)
            detail::WriteReportLog(reinterpret_cast<std::uintptr_t>(request.log), read, report);
    };
    return detail::WriteExceptionReport(fault, opened).empty() ? 1 : 0;
}

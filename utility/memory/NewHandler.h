#pragma once

// What happens when memory runs out: the address space is reported to the debugger's output, then the failure is
// thrown.
//
//     CNewHandler newHandler; // the first line of main: it lives as long as the process
//
// One in a process, made by its main thread. Nothing in the library makes one.

#include "utility/platform/Export.h"

#include <cstddef>

/// While no debugger is attached, memory that `new` or a node allocator cannot have ends in a std::bad_alloc with the
/// text "bad allocation", behind a report of WalkAddressSpace, or as much of it as there is memory for: what the report
/// itself cannot have throws at once.
class UTILITY_API CNewHandler
{
public:
    /// Installs the handler, for the process and for the framework, unless a debugger is attached.
    CNewHandler();
    CNewHandler(const CNewHandler&) = delete;
    CNewHandler& operator=(const CNewHandler&) = delete;
    /// Deliberately the other way round: where the handler was installed it stays, and where it was not, because of a
    /// debugger, handlers of others are removed.
    ~CNewHandler();

private:
    using Handler = int (*)(std::size_t);

    UTILITY_LOCAL static int NewHandler(std::size_t size);

    bool m_debuggerPresent;
    Handler m_previousHandler = nullptr;
    Handler m_previousFrameworkHandler = nullptr;
};

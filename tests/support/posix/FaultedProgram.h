#pragma once

#include "utility/platform/ExceptionRecord.h"

#include <sys/types.h>

namespace support
{

/// A program that is stopped at the instruction that faulted.
class FaultedProgram
{
public:
    explicit FaultedProgram(const char* path);
    FaultedProgram(const FaultedProgram&) = delete;
    FaultedProgram& operator=(const FaultedProgram&) = delete;
    ~FaultedProgram();

    /// False if it could not be started, or had no fault.
    bool IsStopped() const { return m_isStopped; }

    pid_t Process() const { return m_process; }
    const _CONTEXT& Context() const { return m_context; }

private:
    const pid_t m_process;
    _CONTEXT m_context = {};
    bool m_isStopped = false;
};

}

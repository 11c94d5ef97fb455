#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

/// The end of handles, whoever made them. Any thread may call; a handle belongs to one thread at a time. An operation
/// that fails leaves its reason in LastError().
class HandleService
{
public:
    virtual ~HandleService() = default;

    /// Closes a file, a mapping, or on Windows any object of the kernel. On Linux the only such handles are those of
    /// the file service, of threads, and of jobs and what ends in them.
    virtual bool CloseHandle(HANDLE handle) = 0;

    /// Refused with 6 on Linux, where nothing makes one.
    virtual bool CloseWindowStation(HWINSTA station) = 0;

    /// Ends a bitmap, brush, font, palette, pen or region. All but bitmaps are refused with 6 on Linux, where nothing
    /// makes one.
    virtual bool DeleteObject(void* graphicObject) = 0;
};

ServiceSlot<HandleService>& HandlesSlot() noexcept;
inline HandleService& Handles() noexcept { return HandlesSlot().Get(); }

}

#pragma once

#include "utility/platform/Service.h"

namespace utility::platform
{

/// What users copy and paste. Any thread may call.
class ClipboardService
{
public:
    virtual ~ClipboardService() = default;

    /// Puts a null-terminated text in the place of what was there.
    virtual bool SetText(const wchar_t* text) = 0;
};

ServiceSlot<ClipboardService>& ClipboardSlot() noexcept;
inline ClipboardService& Clipboard() noexcept { return ClipboardSlot().Get(); }

}

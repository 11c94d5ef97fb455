#include "utility/platform/Clipboard.h"

#include "utility/platform/SystemService.h"
#include "utility/platform/Types.h"

#include <cstring>
#include <cwchar>

namespace utility::platform
{

namespace
{

class WindowsClipboard final : public ClipboardService
{
public:
    /// The memory is deliberately left where something fails, as it is where the clipboard has taken it.
    bool SetText(const wchar_t* text) override
    {
        const std::size_t size = (std::wcslen(text) + 1) * sizeof(wchar_t);
        const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, size);
        if (memory == nullptr)
            return false;
        void* const bytes = ::GlobalLock(memory);
        if (bytes == nullptr)
            return false;
        std::memcpy(bytes, text, size);
        ::GlobalUnlock(memory);
        if (::OpenClipboard(nullptr) == FALSE)
            return false;
        const bool isSet = ::EmptyClipboard() != FALSE && ::SetClipboardData(CF_UNICODETEXT, memory) != nullptr;
        ::CloseClipboard();
        return isSet;
    }
};

}

ServiceSlot<ClipboardService>& ClipboardSlot() noexcept
{
    return SystemService<ClipboardService, WindowsClipboard>::Slot();
}

}

#include "utility/platform/Boxes.h"

#include "utility/platform/SystemService.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

namespace
{

class WindowsBoxes final : public BoxService
{
public:
    BoxAnswer AskAbortRetryIgnore(const char* title, const char* text) override
    {
        constexpr UINT style = MB_ABORTRETRYIGNORE | MB_ICONHAND | MB_DEFBUTTON2 | MB_TASKMODAL | MB_SETFOREGROUND;
        HWND owner = ::GetActiveWindow();
        if (owner != nullptr)
            owner = ::GetLastActivePopup(owner);
        switch (::MessageBoxA(owner, text, title, style))
        {
        case IDABORT:
            return BoxAnswer::abort;
        case IDRETRY:
            return BoxAnswer::retry;
        default:
            return BoxAnswer::ignore;
        }
    }
};

}

ServiceSlot<BoxService>& BoxesSlot() noexcept { return SystemService<BoxService, WindowsBoxes>::Slot(); }

}

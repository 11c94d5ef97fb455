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
        switch (::MessageBoxA(Owner(), text, title, style))
        {
        case IDABORT:
            return BoxAnswer::abort;
        case IDRETRY:
            return BoxAnswer::retry;
        default:
            return BoxAnswer::ignore;
        }
    }

    void Show(const wchar_t* title, const wchar_t* text, UINT style, UINT helpTopic) override
    {
        MSGBOXPARAMSW box{};
        box.cbSize = sizeof(box);
        box.hwndOwner = Owner();
        box.lpszText = text;
        box.lpszCaption = title;
        box.dwStyle = style;
        box.dwContextHelpId = helpTopic;
        ::MessageBoxIndirectW(&box);
    }

private:
    static HWND Owner()
    {
        const HWND active = ::GetActiveWindow();
        return active != nullptr ? ::GetLastActivePopup(active) : nullptr;
    }
};

}

ServiceSlot<BoxService>& BoxesSlot() noexcept { return SystemService<BoxService, WindowsBoxes>::Slot(); }

}

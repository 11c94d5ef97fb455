#include "utility/platform/Desktop.h"

#include "utility/platform/Types.h"

namespace utility::platform
{

namespace
{

class WindowsDesktop final : public DesktopService
{
public:
    std::optional<int> TakeQuitMessage() override
    {
        MSG message;
        if (!::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE))
            return std::nullopt;
        return static_cast<int>(message.wParam);
    }

    void PostQuitMessage(int exitCode) override { ::PostQuitMessage(exitCode); }

    bool IsControlKeyDown() override { return ::GetKeyState(VK_CONTROL) < 0; }

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

    bool ProgramPath(char (&path)[pathSize]) override { return ::GetModuleFileNameA(nullptr, path, pathSize) != 0; }
};

}

ServiceSlot<DesktopService>& DesktopSlot() noexcept
{
    static WindowsDesktop system;
    static ServiceSlot<DesktopService> slot(system);
    return slot;
}

}

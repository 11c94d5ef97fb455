#include "utility/platform/Boxes.h"

#include "utility/platform/Debugger.h"
#include "utility/platform/formats/Utf8.h"
#include "utility/platform/posix/boxes/DialogPrograms.h"
#include "utility/platform/posix/boxes/Terminal.h"
#include "utility/platform/posix/display/Display.h"
#include "utility/platform/posix/keys/ControlKey.h"
#include "utility/platform/SystemService.h"

#include <string>

namespace utility::platform
{

namespace
{

class PosixBoxes final : public BoxService
{
public:
    BoxAnswer AskAbortRetryIgnore(const char* title, const char* text) override
    {
        posix::SetControlKeyDown(false);
        const posix::Terminal terminal;
        if (terminal.IsOurs())
            return terminal.Ask(title, text);
        if (posix::HasDisplay())
        {
            if (const auto answer = posix::AskByDialogProgram(title, text))
                return *answer;
        }
        Debug(text);
        return BoxAnswer::ignore;
    }

    void Show(const wchar_t* title, const wchar_t* text, UINT style, UINT /*helpTopic*/) override
    {
        const auto narrow = [](const wchar_t* wide)
        { return wide != nullptr ? formats::Utf8FromWide(wide) : std::string(); };
        const std::string narrowTitle = narrow(title);
        const std::string narrowText = narrow(text);
        const posix::Terminal terminal;
        if (terminal.IsOurs())
            terminal.Show(narrowTitle.c_str(), narrowText.c_str());
        else if (!posix::HasDisplay() || !posix::ShowByDialogProgram(narrowTitle.c_str(), narrowText.c_str(), style))
            Debug(narrowText.c_str());
    }

private:
    static void Debug(const char* text)
    {
        Debugger().Output(text);
        Debugger().Output("\n");
    }
};

}

ServiceSlot<BoxService>& BoxesSlot() noexcept { return SystemService<BoxService, PosixBoxes>::Slot(); }

}

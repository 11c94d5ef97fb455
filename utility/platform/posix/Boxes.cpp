#include "utility/platform/Boxes.h"

#include "utility/platform/Debugger.h"
#include "utility/platform/posix/boxes/DialogPrograms.h"
#include "utility/platform/posix/boxes/Terminal.h"
#include "utility/platform/posix/keys/ControlKey.h"
#include "utility/platform/SystemService.h"

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
        Debugger().Output(text);
        Debugger().Output("\n");
        return BoxAnswer::ignore;
    }
};

}

ServiceSlot<BoxService>& BoxesSlot() noexcept { return SystemService<BoxService, PosixBoxes>::Slot(); }

}

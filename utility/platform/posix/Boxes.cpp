#include "utility/platform/Boxes.h"

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
        return posix::HasDisplay() ? posix::AskByDialogProgram(title, text) : BoxAnswer::ignore;
    }
};

}

ServiceSlot<BoxService>& BoxesSlot() noexcept { return SystemService<BoxService, PosixBoxes>::Slot(); }

}

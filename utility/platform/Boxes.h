#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

enum class BoxAnswer
{
    abort,
    retry,
    ignore,
};

/// Questions to the user, and texts to be seen. Any thread may call.
///
/// On Linux a box is on the process's terminal if it is in its foreground; otherwise, with a display, it is that of
/// `zenity` or `kdialog`; and where there is none of all these the answer is Ignore, and the text goes to the
/// debugger's output, which is the error stream unless the host takes it. A display that hangs is none.
class BoxService
{
public:
    virtual ~BoxService() = default;

    /// Asks, with Retry as the answer that takes no choice, and waits. Texts are in the system's narrow encoding. A
    /// question that cannot be asked is answered by Ignore.
    virtual BoxAnswer AskAbortRetryIgnore(const char* title, const char* text) = 0;

    /// Shows a text, and waits until the user has seen it. The style is that of a message box on Windows: 0x10 has the
    /// sign of a failure, 0x30 of a warning, 0x40 of an information; only Windows has other buttons than OK. An owner's
    /// help is asked for the topic with this number. On Linux it is Enter that goes on at a terminal.
    virtual void Show(const wchar_t* title, const wchar_t* text, UINT style, UINT helpTopic) = 0;
};

ServiceSlot<BoxService>& BoxesSlot() noexcept;
inline BoxService& Boxes() noexcept { return BoxesSlot().Get(); }

}

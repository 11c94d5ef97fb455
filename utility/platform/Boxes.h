#pragma once

#include "utility/platform/Service.h"

namespace utility::platform
{

enum class BoxAnswer
{
    abort,
    retry,
    ignore,
};

/// Questions to the user. Any thread may call.
///
/// On Linux a question is asked on the process's terminal if it is in its foreground; otherwise, with a display, by
/// `zenity` or `kdialog`; and where there is none of all these the answer is Ignore, and the text goes to the
/// debugger's output, which is the error stream unless the host takes it.
class BoxService
{
public:
    virtual ~BoxService() = default;

    /// Asks, with Retry as the answer that takes no choice, and waits. Texts are in the system's narrow encoding. A
    /// question that cannot be asked is answered by Ignore.
    virtual BoxAnswer AskAbortRetryIgnore(const char* title, const char* text) = 0;
};

ServiceSlot<BoxService>& BoxesSlot() noexcept;
inline BoxService& Boxes() noexcept { return BoxesSlot().Get(); }

}

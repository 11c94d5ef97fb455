#include "utility/desktop/Clipboard.h"

#include "utility/platform/Clipboard.h"

bool SetClipboardText(const wchar_t* text) { return utility::platform::Clipboard().SetText(text); }

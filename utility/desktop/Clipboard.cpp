#include "utility/desktop/Clipboard.h"

#include "utility/platform/Clipboard.h"

bool SetClipboardText(const wchar_t* text) { return text != nullptr && utility::platform::Clipboard().SetText(text); }

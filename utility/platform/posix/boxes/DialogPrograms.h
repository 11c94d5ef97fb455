#pragma once

#include "utility/platform/Boxes.h"

namespace utility::platform::posix
{

bool HasDisplay();

/// Asks by zenity, or else by kdialog. Ignore where there is neither, or its window is closed.
BoxAnswer AskByDialogProgram(const char* title, const char* text);

}

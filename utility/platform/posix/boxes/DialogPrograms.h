#pragma once

#include "utility/platform/Boxes.h"

#include <optional>

namespace utility::platform::posix
{

bool HasDisplay();

/// Asks by zenity, or else by kdialog. No value where there is neither, or it ends without an answer.
std::optional<BoxAnswer> AskByDialogProgram(const char* title, const char* text);

}

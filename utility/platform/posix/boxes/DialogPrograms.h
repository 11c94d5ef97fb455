#pragma once

#include "utility/platform/Boxes.h"

#include <optional>

namespace utility::platform::posix
{

/// Asks by zenity, or else by kdialog. No value where there is neither, or it ends without an answer.
std::optional<BoxAnswer> AskByDialogProgram(const char* title, const char* text);

/// Shows a text by zenity, or else by kdialog, with the sign of the style, and waits. False where there is neither, or
/// where it cannot be said that the user has seen it.
bool ShowByDialogProgram(const char* title, const char* text, UINT style);

}

#pragma once

#include "utility/platform/Types.h"

namespace utility::framework
{

/// The framework's message box, with the name of the program as its title: shows a text, and waits until the user has
/// seen it (see platform/Boxes.h). Any thread may call.
void ShowBox(const wchar_t* text, UINT style, UINT helpTopic);

/// The same with one of the numbered strings, in the display language; a number without a string has an empty text.
void ShowBox(UINT textId, UINT style, UINT helpTopic);

}

#include "utility/desktop/WindowClasses.h"

#include "utility/platform/WindowClasses.h"

unsigned short GetClassAtom(const wchar_t* className) { return utility::platform::WindowClasses().Atom(className); }

#pragma once

namespace crasher
{

/// What Crash is to do. A word without a meaning does nothing.
extern const char* cause;

/// Crashes for the cause.
void Crash();

}

#pragma once

// What the example safe_save does, for the tests to call: Save of its source, to the letter.

#include "utility/Utility.h"

#include <iostream>

namespace
{

#define main inline SafeSave
#include "examples/safe_save.cpp"
#undef main

}

#pragma once

namespace utility::resources
{

/// The numbers of the library's own strings.
enum StringId : int
{
#define UTILITY_STRING(name, number, text) name = number,
#include "resources/Strings.inc"
#undef UTILITY_STRING
};

}

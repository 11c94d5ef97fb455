#pragma once

#include "utility/platform/posix/symbols/Elfutils.h"

#include <optional>

namespace utility::platform::posix
{

/// The declaration that a piece of debugging information goes back to: where a function is inlined, itself.
Dwarf_Die OriginOf(const Elfutils& elfutils, Dwarf_Die die);

/// A type without its other names, whether constant or volatile, wherever it is described. Nothing for void.
std::optional<Dwarf_Die> TypeItself(const Elfutils& elfutils, Dwarf_Die type);

}

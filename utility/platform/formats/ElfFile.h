#pragma once

// Sections of a 64-bit, little-endian ELF file, the format of modules on Linux, read where they stand in its bytes.

#include "utility/platform/formats/Bytes.h"

#include <string_view>

namespace utility::platform::formats
{

/// The bytes of the section of a program's own data that has this name; none if there is none, in files of other kinds
/// and in damaged ones. Nothing is read outside the file.
Bytes ElfSection(Bytes file, std::string_view name);

}

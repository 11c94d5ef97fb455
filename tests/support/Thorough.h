#pragma once

#include <cstdlib>

namespace support
{

/// Whether the long tests try all of their cases, which `scripts/test --long` asks for. Otherwise a tenth has to do,
/// the same one every time.
inline bool Thorough() { return std::getenv("UTILITY_TEST_LONG") != nullptr; }

/// How many of so many cases a long test tries.
inline int Cases(int all) { return Thorough() ? all : all / 10; }

}

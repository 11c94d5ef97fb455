#pragma once

#include <cstdint>

/// How many times the calling thread has allocated with `new`, in the program and in all libraries.
std::uint64_t AllocationCount();

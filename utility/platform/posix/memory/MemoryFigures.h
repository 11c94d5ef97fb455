#pragma once

#include <cstdint>
#include <string>

namespace utility::platform::posix
{

/// Memory in bytes: how much there is, and how much of it can be had.
struct MemoryFigures
{
    std::uint64_t total;
    std::uint64_t available;
};

struct MachineMemory
{
    MemoryFigures physical;
    MemoryFigures swap;
};

/// What the machine has and the control groups of the process leave of it, out of the system's files under `root`. All
/// 0 if they cannot be read. Groups of both versions count; of the first, their limit on physical memory alone. File
/// contents that a group holds and has not used lately can be had, as the machine's own figures have it.
MachineMemory ReadMachineMemory(const std::string& root = "");

}

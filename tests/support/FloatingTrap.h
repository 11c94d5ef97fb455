#pragma once

namespace support
{

/// Whether a process with this exit status ended by a trap of its floating-point unit: what a death test expects of it.
bool EndedByFloatingTrap(int status);

}

#pragma once

namespace support
{

/// Keeps the process's hives apart from the user's, for good: from here on they are empty, and what is put there is
/// gone with the process. On Windows the registry stays the one there is.
void UseOwnHives();

}

#pragma once

namespace utility::platform::posix
{

/// Takes the advisory lock of this type, F_RDLCK or F_WRLCK, on the whole of an open file, or with F_UNLCK gives it up,
/// for all who share the descriptor: the processes forked meanwhile do. False, with the reason in errno, on failure.
bool Lock(int descriptor, short type) noexcept;

}

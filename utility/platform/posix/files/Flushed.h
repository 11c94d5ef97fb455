#pragma once

namespace utility::platform::posix
{

// A flush of a file that is on the disk already still has the disk empty its own memory, which takes as long as all of a
// small save. So the calling thread's latest flush is remembered.

/// An open file has just been brought to the disk.
void NoteFlushed(int descriptor) noexcept;

/// Whether that is the file flushed last, and neither its bytes nor what the system keeps about it have changed since.
/// (Linux before 6.13 gives the changes of a few milliseconds one time: there a change right behind the flush is seen
/// only by a new length.)
bool IsFlushed(int descriptor) noexcept;

}

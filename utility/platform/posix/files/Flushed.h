#pragma once

namespace utility::platform::posix
{

// A flush of a file that is on the disk already still has the disk empty its own memory, which takes as long as all of
// a small save. So the calling thread's latest flush is remembered, with the time of the file's last change.
//
// That time tells of each later change, unless the system gives the changes of one tick of its clock, a few
// milliseconds, the same one. It does not where the tick is over, nor, from Linux 6.13 on, where somebody has asked for
// the time ahead of the change: then that has one of its own, which is no tick. In the tick itself nothing is
// remembered.

/// An open file has just been brought to the disk.
void NoteFlushed(int descriptor) noexcept;

/// Whether that is the file flushed last, and neither its bytes nor what the system keeps about it have changed since.
bool IsFlushed(int descriptor) noexcept;

}

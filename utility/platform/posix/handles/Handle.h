#pragma once

#include "utility/platform/Types.h"

namespace utility::platform::posix
{

/// What a handle stands for.
enum class HandleKind
{
    file,
    mapping,
    thread,
    job,    ///< by the socket to its supervisor
    ending, ///< of a job or a process in one, by the socket that tells of it
    event
};

/// The handle of a thing that is known by a number, not negative, among those of its kind: by its descriptor, if it has
/// one. Neither null nor the invalid handle is one of these.
HANDLE MakeHandle(HandleKind kind, int number) noexcept;

/// The number of a thing of this kind, -1 for any other handle and for what is none.
int NumberOf(HandleKind kind, HANDLE handle) noexcept;

/// Whether this process made the handle, or else inherited it when it was forked.
bool IsOwn(HANDLE handle) noexcept;

/// Ends what a handle stands for, whatever it is. What is no handle is refused with 6.
bool CloseHandle(HANDLE handle) noexcept;

}

#pragma once

// The owner of one handle of the system: it can be moved and not copied, and its end releases the handle.
//
//     HKEY key = nullptr;
//     if (Registry().RegOpenKeyExW(HKEY_CURRENT_USER, L"SOFTWARE\\Selvane", KEY_READ, key) == 0)
//         return resource_ptr<HKEY>(key);
//
// An owner belongs to one thread at a time. Nothing here throws or reports: a release that fails is not noticed.
// On Linux there are files, keys and bitmaps; for the other handles, which nothing makes there, the release is refused.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <memory>
#include <type_traits>

/// Gives a handle back to the system; null is left alone. There is one for each of these: HKEY (RegCloseKey), HANDLE
/// (CloseHandle), HWINSTA (CloseWindowStation), HBITMAP, HBRUSH, HFONT, HPALETTE, HPEN and HRGN (DeleteObject).
/// INVALID_HANDLE_VALUE is not null.
template <class T>
UTILITY_API void release_resource_ptr(T handle) noexcept;

/// Releases the handle of a resource_ptr.
template <class T>
struct resource_releaser
{
    /// What the owner holds: the handle itself.
    using pointer = T;
    /// Gives the handle back.
    void operator()(T handle) const noexcept { release_resource_ptr<T>(handle); }
};

/// Holds one handle, or null, and nothing else. `T` is the type of the handle: resource_ptr<HKEY>.
template <class T>
using resource_ptr = std::unique_ptr<std::remove_pointer_t<T>, resource_releaser<T>>;

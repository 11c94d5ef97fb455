#include "utility/guards/ResourcePtr.h"

#include "utility/platform/Handles.h"
#include "utility/platform/Registry.h"

template <class T>
void release_resource_ptr(T handle) noexcept
{
    if (handle == nullptr)
        return;
    if constexpr (std::is_same_v<T, HKEY>)
        utility::platform::Registry().RegCloseKey(handle);
    else if constexpr (std::is_same_v<T, HANDLE>)
        utility::platform::Handles().CloseHandle(handle);
    else if constexpr (std::is_same_v<T, HWINSTA>)
        utility::platform::Handles().CloseWindowStation(handle);
    else
        utility::platform::Handles().DeleteObject(handle);
}

template UTILITY_API void release_resource_ptr(HKEY) noexcept;
template UTILITY_API void release_resource_ptr(HANDLE) noexcept;
template UTILITY_API void release_resource_ptr(HWINSTA) noexcept;
template UTILITY_API void release_resource_ptr(HBITMAP) noexcept;
template UTILITY_API void release_resource_ptr(HBRUSH) noexcept;
template UTILITY_API void release_resource_ptr(HFONT) noexcept;
template UTILITY_API void release_resource_ptr(HPALETTE) noexcept;
template UTILITY_API void release_resource_ptr(HPEN) noexcept;
template UTILITY_API void release_resource_ptr(HRGN) noexcept;

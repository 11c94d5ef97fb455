#include "utility/platform/Files.h"

#include "utility/platform/Paths.h"
#include "utility/platform/SystemService.h"
#include "utility/platform/Types.h"

#include <cstring>

namespace utility::platform
{

namespace
{

DWORD PageSize()
{
    SYSTEM_INFO system;
    ::GetSystemInfo(&system);
    return system.dwPageSize;
}

void* CopyWithByteBehind(const void* view, std::uint64_t length)
{
    void* const copy = ::VirtualAlloc(nullptr, length + 1, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (copy == nullptr)
        return nullptr;
    std::memcpy(copy, view, length);
    DWORD earlier = 0;
    ::VirtualProtect(copy, length + 1, PAGE_READONLY, &earlier);
    return copy;
}

class WindowsFiles final : public FileService
{
public:
    HANDLE OpenForReading(const boost::filesystem::path& path) override
    {
        return AreWhole(path) ? ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                              OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr)
                              : INVALID_HANDLE_VALUE;
    }

    HANDLE OpenForWriting(const boost::filesystem::path& path) override
    {
        return AreWhole(path) ? ::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                              OPEN_ALWAYS, FILE_FLAG_SEQUENTIAL_SCAN, nullptr)
                              : INVALID_HANDLE_VALUE;
    }

    bool Length(HANDLE file, std::uint64_t& length) override
    {
        LARGE_INTEGER size;
        if (!::GetFileSizeEx(file, &size))
            return false;
        length = static_cast<std::uint64_t>(size.QuadPart);
        return true;
    }

    HANDLE MapReadOnly(HANDLE file) override
    {
        return ::CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
    }

    void* ViewAll(HANDLE mapping, std::uint64_t length) override
    {
        void* const view = ::MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
        if (view == nullptr || length % PageSize() != 0)
            return view;
        // Nothing can be mapped right behind a view, so the rare file that fills its last page is read into memory.
        void* const copy = CopyWithByteBehind(view, length);
        const DWORD reason = ::GetLastError();
        ::UnmapViewOfFile(view);
        ::SetLastError(reason);
        return copy;
    }

    bool FlushView(const void* view) override { return ::FlushViewOfFile(view, 0); }

    bool UnmapView(const void* view) override
    {
        MEMORY_BASIC_INFORMATION region;
        if (::VirtualQuery(view, &region, sizeof(region)) != 0 && region.Type == MEM_PRIVATE &&
            region.AllocationBase == view)
            return ::VirtualFree(const_cast<void*>(view), 0, MEM_RELEASE);
        return ::UnmapViewOfFile(view);
    }

    DWORD Seek(HANDLE file, std::int32_t distance, std::int32_t* distanceHigh, DWORD method) override
    {
        // A LONG is as wide, but another type to the compiler.
        return ::SetFilePointer(file, distance, reinterpret_cast<LONG*>(distanceHigh), method);
    }

    bool TruncateHere(HANDLE file) override { return ::SetEndOfFile(file); }

    bool Write(HANDLE file, const void* data, DWORD size, DWORD& written) override
    {
        return ::WriteFile(file, data, size, &written, nullptr);
    }

    bool FlushToDisk(HANDLE file) override { return ::FlushFileBuffers(file); }

    bool Information(HANDLE file, BY_HANDLE_FILE_INFORMATION& information) override
    {
        return ::GetFileInformationByHandle(file, &information);
    }

    bool Close(HANDLE handle) override { return ::CloseHandle(handle); }
};

}

ServiceSlot<FileService>& FilesSlot() noexcept { return SystemService<FileService, WindowsFiles>::Slot(); }

}

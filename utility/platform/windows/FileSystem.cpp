#include "utility/platform/FileSystem.h"

#include "utility/platform/Paths.h"
#include "utility/platform/SystemService.h"
#include "utility/platform/Types.h"

#include <io.h>
#include <objbase.h>
#include <shlobj.h>
#include <string>

namespace utility::platform
{

namespace
{

using boost::filesystem::path;

/// Whether a replacement fails for this reason while another program, which may be done in a moment, has one of the
/// files open: one that looks for viruses, or makes an index.
bool MayPass(DWORD reason)
{
    return reason == ERROR_SHARING_VIOLATION || reason == ERROR_ACCESS_DENIED ||
           reason == ERROR_UNABLE_TO_REMOVE_REPLACED || reason == ERROR_UNABLE_TO_MOVE_REPLACEMENT ||
           reason == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2;
}

/// A name that an operation of the system gives: its length without the terminator, or, where the buffer is too small,
/// the size needed with it.
template <class Operation>
path NameBy(Operation operation)
{
    while (const DWORD size = operation(nullptr, 0))
    {
        std::wstring name(size - 1, L'\0');
        const DWORD length = operation(name.data(), size);
        if (length > name.size())
            continue; // it is another name meanwhile
        name.resize(length);
        return name;
    }
    return {};
}

path NameBy(DWORD(WINAPI* operation)(LPCWSTR, LPWSTR, DWORD), const path& file)
{
    if (!AreWhole(file))
        return {};
    return NameBy([&](wchar_t* name, DWORD size) { return operation(file.c_str(), name, size); });
}

class WindowsFileSystem final : public FileSystemService
{
public:
    bool Replace(const path& target, const path& replacement, const path& backup) override
    {
        if (!AreWhole(target, replacement, backup))
            return false;
        const DWORD attributes = ::GetFileAttributesW(target.c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        {
            ::SetLastError(ERROR_DIRECTORY);
            return false;
        }
        constexpr int attempts = 5;
        constexpr DWORD pause = 20; // milliseconds
        for (int attempt = 1;; ++attempt)
        {
            if (::ReplaceFileW(target.c_str(), replacement.c_str(), backup.c_str(),
                               REPLACEFILE_WRITE_THROUGH | REPLACEFILE_IGNORE_MERGE_ERRORS, nullptr, nullptr))
                return true;
            const DWORD reason = ::GetLastError();
            // The old file has got its new name already, and the new one did not follow.
            if (reason == ERROR_UNABLE_TO_MOVE_REPLACEMENT_2)
                ::MoveFileExW(backup.c_str(), target.c_str(), 0);
            if (attempt == attempts || !MayPass(reason))
            {
                ::SetLastError(reason);
                return false;
            }
            ::Sleep(pause);
        }
    }

    bool FlushName(const path& /*file*/) override { return true; }

    bool DeleteWhenUnused(const path& file) override
    {
        if (!AreWhole(file))
            return false;
        const HANDLE opened = ::CreateFileW(file.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                            OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        return opened != INVALID_HANDLE_VALUE && ::CloseHandle(opened);
    }

    bool Move(const path& from, const path& to) override
    {
        return AreWhole(from, to) &&
               ::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED);
    }

    bool CreateNew(const path& file) override
    {
        if (!AreWhole(file))
            return false;
        const HANDLE made = ::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                          CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
        return made != INVALID_HANDLE_VALUE && ::CloseHandle(made);
    }

    bool IsReadable(const path& file) override
    {
        constexpr int toRead = 4;
        return AreWhole(file) && ::_waccess(file.c_str(), toRead) == 0;
    }

    bool Length(const path& file, std::uint64_t& length) override
    {
        WIN32_FILE_ATTRIBUTE_DATA data;
        if (!AreWhole(file) || !::GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data))
            return false;
        length = static_cast<std::uint64_t>(data.nFileSizeHigh) << 32 | data.nFileSizeLow;
        return true;
    }

    path LongName(const path& file) override { return NameBy(&::GetLongPathNameW, file); }

    path ShortName(const path& file) override { return NameBy(&::GetShortPathNameW, file); }

    path DocumentsFolder() override
    {
        wchar_t* text = nullptr;
        const HRESULT result = ::SHGetKnownFolderPath(FOLDERID_Documents, 0, nullptr, &text);
        const path folder = SUCCEEDED(result) && text != nullptr ? path(text) : path();
        ::CoTaskMemFree(text);
        ::SetLastError(static_cast<DWORD>(HRESULT_CODE(result)));
        return folder;
    }

    path SystemFolder() override
    {
        return NameBy([](wchar_t* name, DWORD size) -> DWORD { return ::GetSystemDirectoryW(name, size); });
    }
};

}

ServiceSlot<FileSystemService>& FileSystemSlot() noexcept
{
    return SystemService<FileSystemService, WindowsFileSystem>::Slot();
}

}

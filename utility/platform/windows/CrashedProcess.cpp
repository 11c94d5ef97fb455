#include "utility/platform/CrashedProcess.h"

#include "utility/platform/Modules.h"
#include "utility/platform/Paths.h"
#include "utility/platform/SystemService.h"

#include <boost/filesystem/operations.hpp>

#include <cstdio>
#include <cwchar>
#include <ext/stdio_filebuf.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <share.h>
#include <shlobj.h>
#include <tlhelp32.h>

namespace utility::platform
{

namespace
{

struct CloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};

using OpenFile = std::unique_ptr<std::FILE, CloseFile>;

class ReportStream final : public std::wostream
{
public:
    explicit ReportStream(OpenFile file)
        : std::wostream(nullptr), m_file(std::move(file)), m_buffer(m_file.get(), std::ios::out)
    {
        rdbuf(&m_buffer);
    }

private:
    OpenFile m_file;
    __gnu_cxx::stdio_filebuf<wchar_t> m_buffer;
};

class WindowsCrashedProcess final : public CrashedProcessService
{
public:
    std::wstring ProgramPath() override { return platform::Modules().FileName(nullptr); }

    std::vector<LoadedModule> Modules() override
    {
        std::vector<LoadedModule> modules;
        const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPMODULE, 0);
        MODULEENTRY32W entry = {};
        entry.dwSize = sizeof(entry);
        for (BOOL isThere = ::Module32FirstW(snapshot, &entry); isThere; isThere = ::Module32NextW(snapshot, &entry))
        {
            modules.push_back(
                {entry.szExePath, reinterpret_cast<std::uintptr_t>(entry.modBaseAddr), entry.modBaseSize, {}});
        }
        ::CloseHandle(snapshot);
        return modules;
    }

    HINSTANCE ModuleAt(const void* address) override
    {
        MEMORY_BASIC_INFORMATION region;
        static_assert(sizeof(region) == 48);
        return ::VirtualQuery(address, &region, sizeof(region)) == sizeof(region)
                   ? static_cast<HINSTANCE>(region.AllocationBase)
                   : nullptr;
    }

    bool QueryVersion(SystemVersion& version, std::int32_t& result) override
    {
        HMODULE ntdll = nullptr;
        if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, L"ntdll", &ntdll))
            return false;
        const auto query = reinterpret_cast<LONG(NTAPI*)(OSVERSIONINFOEXW*)>(
            reinterpret_cast<void*>(::GetProcAddress(ntdll, "RtlGetVersion")));
        OSVERSIONINFOEXW told = {};
        static_assert(sizeof(told) == 284);
        told.dwOSVersionInfoSize = sizeof(told);
        result = query(&told);
        version = {told.dwMajorVersion,    told.dwMinorVersion,    told.dwBuildNumber,
                   told.wServicePackMajor, told.wServicePackMinor, told.wProductType};
        return true;
    }

    boost::filesystem::path LocalDataFolder() override
    {
        wchar_t path[MAX_PATH];
        const HRESULT result =
            ::SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA | CSIDL_FLAG_CREATE, nullptr, SHGFP_TYPE_CURRENT, path);
        return result == S_OK ? boost::filesystem::path(path) : boost::filesystem::path();
    }

    bool MakeFolders(const boost::filesystem::path& folder) override
    {
        const int result = ::SHCreateDirectoryExW(nullptr, folder.c_str(), nullptr);
        return result == ERROR_SUCCESS || result == ERROR_ALREADY_EXISTS;
    }

    std::unique_ptr<std::wostream> OpenReport(const boost::filesystem::path& file) override
    {
        OpenFile opened(::_wfsopen(file.c_str(), L"w", _SH_DENYRW));
        return opened != nullptr ? std::make_unique<ReportStream>(std::move(opened)) : nullptr;
    }

    std::unique_ptr<std::ostream> MakeLog(const boost::filesystem::path& file) override
    {
        boost::system::error_code ignored;
        boost::filesystem::remove(file, ignored);
        // The stream of Boost takes no name that has no narrow text.
        auto stream = std::make_unique<std::ofstream>(std::filesystem::path(file.native()));
        *stream << std::unitbuf;
        return stream->is_open() ? std::move(stream) : nullptr;
    }

    bool DescribeException(DWORD code, std::wstring& text) override
    {
        return ::FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS,
                                ::GetModuleHandleW(L"NTDLL.DLL"), code, 0, text.data(), static_cast<DWORD>(text.size()),
                                nullptr) != 0;
    }
};

}

ServiceSlot<CrashedProcessService>& CrashedProcessSlot() noexcept
{
    return SystemService<CrashedProcessService, WindowsCrashedProcess>::Slot();
}

}

#include "utility/platform/CrashedProcess.h"

#include "utility/platform/Modules.h"
#include "utility/platform/Paths.h"
#include "utility/platform/SystemService.h"

#include <boost/filesystem/operations.hpp>

#include <cstddef>
#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <locale>
#include <share.h>
#include <shlobj.h>
#include <streambuf>
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

/// Text in a file, which is closed with it.
class ReportBuffer final : public std::wstreambuf
{
public:
    explicit ReportBuffer(OpenFile file) : m_file(std::move(file)) { setp(m_text, std::end(m_text)); }
    ReportBuffer(const ReportBuffer&) = delete;
    ReportBuffer& operator=(const ReportBuffer&) = delete;
    ~ReportBuffer() override { ReportBuffer::sync(); }

protected:
    int_type overflow(int_type next) override
    {
        if (ReportBuffer::sync() != 0)
            return traits_type::eof();
        return traits_type::eq_int_type(next, traits_type::eof()) ? traits_type::not_eof(next)
                                                                  : sputc(traits_type::to_char_type(next));
    }

    int sync() override
    {
        using Encoding = std::codecvt<wchar_t, char, std::mbstate_t>;
        const auto& encoding = std::use_facet<Encoding>(getloc());
        for (const wchar_t* rest = pbase(); rest != pptr();)
        {
            char bytes[1024];
            char* end = bytes;
            std::mbstate_t state = {};
            if (encoding.out(state, rest, pptr(), rest, bytes, std::end(bytes) - 1, end) == Encoding::error)
            {
                // One character less is better than a report that ends here.
                *end++ = '?';
                ++rest;
            }
            std::fwrite(bytes, 1, static_cast<std::size_t>(end - bytes), m_file.get());
        }
        setp(m_text, std::end(m_text));
        return std::fflush(m_file.get()) == 0 && std::ferror(m_file.get()) == 0 ? 0 : -1;
    }

private:
    OpenFile m_file;
    wchar_t m_text[2048];
};

class ReportStream final : public std::wostream
{
public:
    explicit ReportStream(OpenFile file) : std::wostream(nullptr), m_buffer(std::move(file)) { rdbuf(&m_buffer); }

private:
    ReportBuffer m_buffer;
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

#include "utility/platform/CrashedProcess.h"

#include "utility/platform/Error.h"
#include "utility/platform/Files.h"
#include "utility/platform/formats/Utf8.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/faults/ReportedProcess.h"
#include "utility/platform/posix/files/KernelFile.h"
#include "utility/platform/posix/files/Lock.h"
#include "utility/platform/posix/files/WithoutSignalForSize.h"
#include "utility/platform/posix/filesystem/UserFolders.h"
#include "utility/platform/posix/handles/Handle.h"
#include "utility/platform/posix/modules/PlaceOf.h"
#include "utility/platform/SystemService.h"

#include <boost/filesystem/operations.hpp>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <locale>
#include <streambuf>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace utility::platform
{

namespace
{

std::string KernelFileOf(const char* name)
{
    return "/proc/" + std::to_string(posix::ReportedThreadInProc()) + '/' + name;
}

/// A line of the kernel's list of what is mapped.
struct Mapping
{
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    bool isCode = false;
    std::uint64_t offset = 0; ///< in the file
    std::uint64_t inode = 0;
    std::string path; ///< with the mark of a file that is gone
};

bool Parse(const std::string& line, Mapping& mapping)
{
    char rights[5];
    int pathAt = 0;
    if (std::sscanf(line.c_str(), "%" SCNx64 "-%" SCNx64 " %4s %" SCNx64 " %*x:%*x %" SCNu64 " %n", &mapping.begin,
                    &mapping.end, rights, &mapping.offset, &mapping.inode, &pathAt) != 5)
        return false;
    mapping.isCode = rights[2] == 'x';
    mapping.path = posix::ReadMappedPath(line.substr(static_cast<std::size_t>(pathAt)));
    return true;
}

/// What is mapped of one file, from its start on.
struct MappedModule : Mapping
{
    /// Whether a mapping behind it is more of the same.
    bool GoesOnWith(const Mapping& next) const
    {
        return next.path == path && next.inode == inode && (next.offset != 0 || next.begin == end);
    }
};

/// When a file was changed last; 0 if what has its path now is another one. Only their numbers tell: the device of a
/// mapped file is another one than that of the path on file systems that are made of others.
DWORD TimeOf(const boost::filesystem::path& path, std::uint64_t inode)
{
    struct stat status;
    const bool isThat = ::stat(path.c_str(), &status) == 0 && status.st_ino == inode;
    return isThat ? static_cast<DWORD>(status.st_mtime) : 0;
}

// Values and messages of the user's are nobody else's business.
constexpr mode_t ofUserAlone = S_IRUSR | S_IWUSR;

/// Opens a report that is there. What is no file, is another user's, or has other names too, would be harmed: it is
/// left alone. -1 then, and on failure.
int OpenEarlier(const char* path)
{
    const int file =
        posix::AboveStandardStreams(::open(path, O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status;
    if (file < 0 || (::fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1 &&
                     status.st_uid == ::geteuid() && ::fchmod(file, ofUserAlone) == 0))
        return file;
    ::close(file);
    return -1;
}

bool WriteAll(HANDLE file, std::string_view bytes)
{
    const posix::WithoutSignalForSize scope;
    DWORD written = 0;
    for (; !bytes.empty(); bytes.remove_prefix(written))
    {
        if (!Files().Write(file, bytes.data(), static_cast<DWORD>(bytes.size()), written))
            return false;
    }
    return true;
}

/// Text as UTF-8 in a file. The file is closed with it.
class Utf8Buffer final : public std::wstreambuf
{
public:
    explicit Utf8Buffer(HANDLE file) : m_file(file) { setp(m_text, std::end(m_text)); }
    Utf8Buffer(const Utf8Buffer&) = delete;
    Utf8Buffer& operator=(const Utf8Buffer&) = delete;
    ~Utf8Buffer() override
    {
        Utf8Buffer::sync();
        Files().Close(m_file);
    }

protected:
    int_type overflow(int_type next) override
    {
        if (Utf8Buffer::sync() != 0)
            return traits_type::eof();
        return traits_type::eq_int_type(next, traits_type::eof()) ? traits_type::not_eof(next)
                                                                  : sputc(traits_type::to_char_type(next));
    }

    int sync() override
    {
        const std::string bytes = formats::Utf8FromWide({pbase(), static_cast<std::size_t>(pptr() - pbase())});
        setp(m_text, std::end(m_text));
        return WriteAll(m_file, bytes) ? 0 : -1;
    }

private:
    HANDLE m_file;
    wchar_t m_text[2048];
};

class ReportStream final : public std::wostream
{
public:
    explicit ReportStream(HANDLE file) : std::wostream(nullptr), m_buffer(file)
    {
        imbue(std::locale::classic());
        rdbuf(&m_buffer);
    }

private:
    Utf8Buffer m_buffer;
};

/// Bytes in a file, which is closed with it.
class LogBuffer final : public std::streambuf
{
public:
    explicit LogBuffer(HANDLE file) : m_file(file) {}
    LogBuffer(const LogBuffer&) = delete;
    LogBuffer& operator=(const LogBuffer&) = delete;
    ~LogBuffer() override { Files().Close(m_file); }

protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override
    {
        return WriteAll(m_file, {text, static_cast<std::size_t>(size)}) ? size : 0;
    }

    int_type overflow(int_type next) override
    {
        const char text = traits_type::to_char_type(next);
        return xsputn(&text, 1) == 1 ? next : traits_type::eof();
    }

private:
    HANDLE m_file;
};

class LogStream final : public std::ostream
{
public:
    explicit LogStream(HANDLE file) : std::ostream(nullptr), m_buffer(file) { rdbuf(&m_buffer); }

private:
    LogBuffer m_buffer;
};

class PosixCrashedProcess final : public CrashedProcessService
{
public:
    std::wstring ProgramPath() override
    {
        boost::system::error_code error;
        return WideFromPath(posix::PlaceOf(boost::filesystem::read_symlink(KernelFileOf("exe"), error)));
    }

    std::vector<LoadedModule> Modules() override
    {
        std::vector<MappedModule> mapped;
        posix::KernelFile maps(KernelFileOf("maps"));
        Mapping mapping;
        for (std::string line; std::getline(maps, line);)
        {
            // The rest is no file's, but for the kernel's own module.
            if (!Parse(line, mapping) || !(mapping.path.starts_with('/') || mapping.path == "[vdso]"))
                continue;
            if (mapped.empty() || !mapped.back().GoesOnWith(mapping))
                mapped.push_back({mapping});
            mapped.back().end = mapping.end;
            mapped.back().isCode |= mapping.isCode;
        }
        std::erase_if(mapped, [](const MappedModule& each) { return !each.isCode; });
        std::vector<LoadedModule> modules;
        for (const MappedModule& each : mapped)
        {
            const boost::filesystem::path path = posix::PlaceOf(each.path);
            modules.push_back({WideFromPath(path), each.begin, each.end - each.begin, TimeOf(path, each.inode)});
        }
        return modules;
    }

    HINSTANCE ModuleAt(const void* address) override
    {
        const auto place = reinterpret_cast<std::uintptr_t>(address);
        for (const LoadedModule& module : Modules())
        {
            if (place - module.base < module.size)
                return reinterpret_cast<HINSTANCE>(module.base);
        }
        return nullptr;
    }

    bool QueryVersion(SystemVersion& /*version*/, std::int32_t& /*result*/) override { return false; }

    boost::filesystem::path LocalDataFolder() override
    {
        boost::filesystem::path folder = posix::UserDataFolder();
        return !folder.empty() && MakeFolders(folder) ? folder : boost::filesystem::path();
    }

    bool MakeFolders(const boost::filesystem::path& folder) override
    {
        boost::system::error_code error;
        boost::filesystem::create_directories(folder, error);
        return !error;
    }

    std::unique_ptr<std::wostream> OpenReport(const boost::filesystem::path& file) override
    {
        int descriptor = posix::MakeFile(file.c_str(), ofUserAlone);
        if (descriptor < 0 && errno == EEXIST)
            descriptor = OpenEarlier(file.c_str());
        if (descriptor < 0)
            return nullptr;
        const HANDLE opened = posix::MakeHandle(posix::HandleKind::file, descriptor);
        // Not every file system has locks.
        const bool isOthers = !posix::Lock(descriptor, F_WRLCK) && (errno == EAGAIN || errno == EACCES);
        if (isOthers || !Files().TruncateHere(opened))
        {
            Files().Close(opened);
            return nullptr;
        }
        return std::make_unique<ReportStream>(opened);
    }

    std::unique_ptr<std::ostream> MakeLog(const boost::filesystem::path& file) override
    {
        ::unlink(file.c_str());
        const int descriptor = posix::MakeFile(file.c_str(), ofUserAlone);
        return descriptor >= 0 ? std::make_unique<LogStream>(posix::MakeHandle(posix::HandleKind::file, descriptor))
                               : nullptr;
    }

    bool DescribeException(DWORD /*code*/, std::wstring& /*text*/) override
    {
        SetLastError(ERROR_NOT_SUPPORTED);
        return false;
    }
};

}

ServiceSlot<CrashedProcessService>& CrashedProcessSlot() noexcept
{
    return SystemService<CrashedProcessService, PosixCrashedProcess>::Slot();
}

}

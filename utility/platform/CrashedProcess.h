#pragma once

#include "utility/platform/ExceptionRecord.h"
#include "utility/platform/Service.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace utility::platform
{

struct LoadedModule
{
    std::wstring path;
    std::uint64_t base = 0;
    std::uint64_t size = 0; ///< in bytes
    /// When its file was changed last, in seconds since 1970, 0 if there is no file to ask. Nothing where modules tell
    /// themselves when they were linked, as on Windows.
    std::optional<DWORD> time;
};

struct SystemVersion
{
    DWORD major = 0;
    DWORD minor = 0;
    DWORD build = 0;
    std::uint16_t servicePackMajor = 0;
    std::uint16_t servicePackMinor = 0;
    std::uint8_t productType = 0;
};

/// What a report of a fault tells of the process and the machine, and where it goes. On Linux the process may be
/// another one than the calling.
class CrashedProcessService
{
public:
    virtual ~CrashedProcessService() = default;

    /// The whole path of the program; empty on failure. On Windows it is cut to 259 characters.
    virtual std::wstring ProgramPath() = 0;

    virtual std::vector<LoadedModule> Modules() = 0;

    /// The module that holds an address; null if none does.
    virtual HINSTANCE ModuleAt(const void* address) = 0;

    /// The result of the system's own query, which is 0 on success, and what it told. False if there is nobody to ask,
    /// as on Linux.
    virtual bool QueryVersion(SystemVersion& version, std::int32_t& result) = 0;

    /// The folder for what programs keep of one user on one machine; made if it is not there. Empty on failure. On
    /// Linux it is $XDG_DATA_HOME or else .local/share in the home folder.
    virtual boost::filesystem::path LocalDataFolder() = 0;

    /// Makes a folder and those above it. True if it is there.
    virtual bool MakeFolders(const boost::filesystem::path& folder) = 0;

    /// A stream of text into a new file, or one emptied, that nobody else may open until it is closed; null on failure.
    /// On Windows each \n becomes two characters and the encoding is that of the global locale, with a question mark
    /// for what that lacks; on Linux it is UTF-8, whatever the locale; a link, a pipe, a file of another user, or one
    /// that has other names too, is a failure.
    virtual std::unique_ptr<std::wostream> OpenReport(const boost::filesystem::path& file) = 0;

    /// A stream of bytes into a new file, in the place of whatever else has its name; null on failure. Each piece of
    /// text is in the file at once; on Windows each \n becomes two characters.
    virtual std::unique_ptr<std::ostream> MakeLog(const boost::filesystem::path& file) = 0;

    /// What the system says of an exception code, into a text of a fixed size: true if it said something. False with
    /// 122 in LastError() if the text is too short for it. Linux says nothing of any.
    virtual bool DescribeException(DWORD code, std::wstring& text) = 0;
};

ServiceSlot<CrashedProcessService>& CrashedProcessSlot() noexcept;
inline CrashedProcessService& CrashedProcess() noexcept { return CrashedProcessSlot().Get(); }

}

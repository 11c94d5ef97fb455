#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/Error.h"
#include "utility/platform/FileSystem.h"

#include <algorithm>
#include <string>
#include <vector>

namespace support
{

/// For its lifetime the file system service: the one there was, with a record of the names of the calls, of which those
/// in `failing` are not made and fail with the error `error`.
class ForwardingFileSystem : public utility::platform::FileSystemService
{
public:
    using path = boost::filesystem::path;

    bool Replace(const path& target, const path& replacement, const path& backup) override
    {
        return !Fails("Replace") && m_system.Replace(target, replacement, backup);
    }
    bool FlushName(const path& file) override { return !Fails("FlushName") && m_system.FlushName(file); }
    bool DeleteWhenUnused(const path& file) override
    {
        return !Fails("DeleteWhenUnused") && m_system.DeleteWhenUnused(file);
    }
    bool Move(const path& from, const path& to) override { return !Fails("Move") && m_system.Move(from, to); }
    bool CreateNew(const path& file) override { return !Fails("CreateNew") && m_system.CreateNew(file); }
    bool IsReadable(const path& file) override { return !Fails("IsReadable") && m_system.IsReadable(file); }
    bool Length(const path& file, std::uint64_t& length) override
    {
        return !Fails("Length") && m_system.Length(file, length);
    }
    path LongName(const path& file) override { return Fails("LongName") ? path() : m_system.LongName(file); }
    path ShortName(const path& file) override { return Fails("ShortName") ? path() : m_system.ShortName(file); }
    path DocumentsFolder() override { return Fails("DocumentsFolder") ? path() : m_system.DocumentsFolder(); }
    path SystemFolder() override { return Fails("SystemFolder") ? path() : m_system.SystemFolder(); }

    std::vector<std::string> calls;
    std::vector<std::string> failing;
    DWORD error = ERROR_ACCESS_DENIED;

protected:
    utility::platform::FileSystemService& m_system = utility::platform::FileSystem();

private:
    bool Fails(const char* call)
    {
        calls.emplace_back(call);
        if (std::ranges::find(failing, call) == failing.end())
            return false;
        utility::platform::SetLastError(error);
        return true;
    }

    Substitute<utility::platform::FileSystemService> m_scope{utility::platform::FileSystemSlot(), *this};
};

}

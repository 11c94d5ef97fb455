#pragma once

#include "utility/platform/Error.h"
#include "utility/platform/Files.h"

#include <algorithm>
#include <string>
#include <vector>

namespace support
{

/// A file service that hands everything to the one it was made over, records the names of the calls, and fails those
/// that are named in `failing`, and call number `failAt` (the first is 1), with the error `error`. What closes
/// something closes it all the same, and leaves an error of its own.
class ForwardingFiles : public utility::platform::FileService
{
public:
    ForwardingFiles() : m_system(utility::platform::Files()) {}

    HANDLE OpenForReading(const boost::filesystem::path& path) override
    {
        return Fails("OpenForReading") ? INVALID_HANDLE_VALUE : m_system.OpenForReading(path);
    }
    HANDLE OpenForWriting(const boost::filesystem::path& path) override
    {
        return Fails("OpenForWriting") ? INVALID_HANDLE_VALUE : m_system.OpenForWriting(path);
    }
    bool Length(HANDLE file, std::uint64_t& length) override
    {
        return !Fails("Length") && m_system.Length(file, length);
    }
    HANDLE MapReadOnly(HANDLE file) override { return Fails("MapReadOnly") ? nullptr : m_system.MapReadOnly(file); }
    void* ViewAll(HANDLE mapping, std::uint64_t length) override
    {
        return Fails("ViewAll") ? nullptr : m_system.ViewAll(mapping, length);
    }
    bool FlushView(const void* view) override { return !Fails("FlushView") && m_system.FlushView(view); }
    bool UnmapView(const void* view) override
    {
        const bool unmapped = m_system.UnmapView(view);
        utility::platform::SetLastError(ERROR_INVALID_HANDLE);
        return !Fails("UnmapView") && unmapped;
    }
    DWORD Seek(HANDLE file, std::int32_t distance, std::int32_t* distanceHigh, DWORD method) override
    {
        return Fails("Seek") ? INVALID_SET_FILE_POINTER : m_system.Seek(file, distance, distanceHigh, method);
    }
    bool TruncateHere(HANDLE file) override { return !Fails("TruncateHere") && m_system.TruncateHere(file); }
    bool Write(HANDLE file, const void* data, DWORD size, DWORD& written) override
    {
        return !Fails("Write") && m_system.Write(file, data, size, written);
    }
    bool FlushToDisk(HANDLE file) override { return !Fails("FlushToDisk") && m_system.FlushToDisk(file); }
    bool Information(HANDLE file, BY_HANDLE_FILE_INFORMATION& information) override
    {
        return !Fails("Information") && m_system.Information(file, information);
    }
    bool Close(HANDLE handle) override
    {
        const bool closed = m_system.Close(handle);
        utility::platform::SetLastError(ERROR_INVALID_HANDLE);
        return !Fails("Close") && closed;
    }

    std::vector<std::string> calls;
    std::vector<std::string> failing;
    std::size_t failAt = 0;
    DWORD error = ERROR_NOT_ENOUGH_MEMORY;

protected:
    utility::platform::FileService& System() { return m_system; }

private:
    bool Fails(const char* call)
    {
        calls.emplace_back(call);
        if (calls.size() != failAt && std::ranges::find(failing, call) == failing.end())
            return false;
        utility::platform::SetLastError(error);
        return true;
    }

    utility::platform::FileService& m_system;
};

}

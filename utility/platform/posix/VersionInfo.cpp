#include "utility/platform/VersionInfo.h"

#include "utility/platform/Error.h"
#include "utility/platform/formats/VersionRecord.h"
#include "utility/platform/Paths.h"
#include "utility/platform/posix/files/MappedFile.h"
#include "utility/platform/SystemService.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace utility::platform
{

namespace
{

/// The record of a file; its size is 0, with the reason in LastError(), if there is none. It is copied before it is
/// looked at: a program that upgrades the module in place changes the mapped bytes from one look to the next.
class RecordOfFile
{
public:
    explicit RecordOfFile(const wchar_t* path)
    {
        const posix::MappedFile file(PathFromWide(path));
        const formats::Bytes stored = formats::FindVersionRecord(file.Content());
        const formats::Bytes record = stored.first(std::min(stored.size(), formats::longestVersionRecord));
        m_record.assign(record.begin(), record.end());
        m_size = formats::VersionBlockSize(m_record);
        if (m_size == 0 && !file.Content().empty())
            SetLastError(ERROR_RESOURCE_TYPE_NOT_FOUND);
    }

    DWORD Size() const { return m_size; }
    void Read(void* block) const { formats::WriteVersionBlock(m_record, block); }

private:
    std::vector<std::byte> m_record;
    DWORD m_size;
};

class PosixVersionInfo final : public VersionInfoService
{
public:
    DWORD GetFileVersionInfoSizeW(const wchar_t* path) override { return RecordOfFile(path).Size(); }

    bool GetFileVersionInfoW(const wchar_t* path, DWORD size, void* data) override
    {
        const RecordOfFile record(path);
        if (record.Size() == 0)
            return false;
        if (record.Size() > size)
        {
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return false;
        }
        record.Read(data);
        return true;
    }

    bool VerQueryValueW(const void* data, const wchar_t* subBlock, void*& value, UINT& length) override
    {
        return data != nullptr && formats::QueryVersionBlock(data, subBlock, value, length);
    }
};

}

ServiceSlot<VersionInfoService>& VersionInfoSlot() noexcept
{
    return SystemService<VersionInfoService, PosixVersionInfo>::Slot();
}

}

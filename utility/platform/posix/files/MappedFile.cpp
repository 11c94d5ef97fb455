#include "utility/platform/posix/files/MappedFile.h"

#include "utility/platform/Error.h"
#include "utility/platform/Files.h"

namespace utility::platform::posix
{

MappedFile::MappedFile(const boost::filesystem::path& path)
{
    const HANDLE file = Files().OpenForReading(path);
    if (file == INVALID_HANDLE_VALUE)
        return;
    std::uint64_t length = 0;
    const HANDLE mapping = Files().Length(file, length) ? Files().MapReadOnly(file) : nullptr;
    const void* const view = mapping != nullptr ? Files().ViewAll(mapping, length) : nullptr;
    const DWORD reason = LastError();
    if (mapping != nullptr)
        Files().Close(mapping);
    Files().Close(file);
    if (view != nullptr)
        m_content = {static_cast<const std::byte*>(view), length};
    SetLastError(reason);
}

MappedFile::~MappedFile()
{
    if (!m_content.empty())
        Files().UnmapView(m_content.data());
}

}

#pragma once

#include "tests/support/ForwardingFiles.h"
#include "tests/support/Substitute.h"

#include <string_view>

namespace support
{

/// For a scope, whatever file is opened to read is one of these bytes, mapped where they stand. They belong to the
/// caller.
class FileOfBytes : public ForwardingFiles
{
public:
    explicit FileOfBytes(std::string_view bytes) : m_bytes(bytes) {}

    HANDLE OpenForReading(const boost::filesystem::path&) override { return this; }
    bool Length(HANDLE, std::uint64_t& length) override
    {
        length = m_bytes.size();
        return true;
    }
    HANDLE MapReadOnly(HANDLE) override { return m_bytes.empty() ? nullptr : this; }
    void* ViewAll(HANDLE, std::uint64_t) override { return const_cast<char*>(m_bytes.data()); }
    bool UnmapView(const void*) override { return true; }
    bool Close(HANDLE) override { return true; }

private:
    std::string_view m_bytes;
    const Substitute<utility::platform::FileService> m_scope{utility::platform::FilesSlot(), *this};
};

}

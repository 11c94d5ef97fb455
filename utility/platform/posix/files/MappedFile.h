#pragma once

#include "utility/platform/formats/Bytes.h"

#include <boost/filesystem/path.hpp>

namespace utility::platform::posix
{

/// The bytes of a whole file, for the lifetime of the object. Users of this library cannot write to it meanwhile.
class MappedFile
{
public:
    /// Leaves the reason in LastError() where the file cannot be read, or is empty.
    explicit MappedFile(const boost::filesystem::path& path);
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile();

    /// None if the file could not be read.
    formats::Bytes Content() const noexcept { return m_content; }

private:
    formats::Bytes m_content;
};

}

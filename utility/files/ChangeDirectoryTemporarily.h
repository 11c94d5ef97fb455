#pragma once

// Another current folder for a scope.
//
//     const CChangeDirectoryTemporarily change(L"parts");
//     const CMemoryMappedFile file(L"part.igs"); // parts/part.igs
//
// The current folder is that of the whole process: nothing on any thread may depend on it meanwhile. Both changes throw
// boost::filesystem::filesystem_error where they fail, the one back too, which ends the program while another failure
// is on its way.

#include "utility/platform/Export.h"

#include <boost/filesystem/exception.hpp>
#include <boost/filesystem/path.hpp>

#include <string>

class UTILITY_API CChangeDirectoryTemporarily
{
public:
    /// Changes to a folder that exists.
    explicit CChangeDirectoryTemporarily(const boost::filesystem::path& directory);
    explicit CChangeDirectoryTemporarily(const std::wstring& directory);
    explicit CChangeDirectoryTemporarily(const wchar_t* directory);
    /// A copy changes back to the same folder.
    CChangeDirectoryTemporarily(const CChangeDirectoryTemporarily&);
    CChangeDirectoryTemporarily& operator=(const CChangeDirectoryTemporarily&) = delete;
    /// Changes back to the folder that was current at the construction.
    ~CChangeDirectoryTemporarily() noexcept(false);

private:
    boost::filesystem::path m_saved;
};

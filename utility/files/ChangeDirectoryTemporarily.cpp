#include "utility/files/ChangeDirectoryTemporarily.h"

#include "utility/files/internal/NameOfNone.h"
#include "utility/platform/Paths.h"

#include <boost/filesystem/operations.hpp>

CChangeDirectoryTemporarily::CChangeDirectoryTemporarily(const boost::filesystem::path& directory)
    : m_saved(boost::filesystem::current_path())
{
    boost::filesystem::current_path(utility::detail::Whole(directory));
}

CChangeDirectoryTemporarily::CChangeDirectoryTemporarily(const std::wstring& directory)
    : CChangeDirectoryTemporarily(utility::platform::PathFromWide(directory))
{
}

CChangeDirectoryTemporarily::CChangeDirectoryTemporarily(const wchar_t* directory)
    : CChangeDirectoryTemporarily(utility::platform::PathFromWide(directory))
{
}

CChangeDirectoryTemporarily::CChangeDirectoryTemporarily(const CChangeDirectoryTemporarily&) = default;

CChangeDirectoryTemporarily::~CChangeDirectoryTemporarily() noexcept(false)
{
    boost::filesystem::current_path(m_saved);
}

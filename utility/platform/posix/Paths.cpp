#include "utility/platform/Paths.h"

#include "utility/platform/posix/Utf8.h"

namespace utility::platform
{

std::wstring WideFromPath(const boost::filesystem::path& path)
{
    return posix::WideFromUtf8(path.native(), posix::Malformed::Escaped);
}

boost::filesystem::path PathFromWide(const wchar_t* text)
{
    return boost::filesystem::path(posix::Utf8FromWide(text, posix::Malformed::Escaped));
}

}

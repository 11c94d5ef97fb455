#include "utility/platform/Paths.h"

namespace utility::platform
{

std::wstring WideFromPath(const boost::filesystem::path& path) { return path.native(); }

boost::filesystem::path PathFromWide(const wchar_t* text)
{
    return text != nullptr ? boost::filesystem::path(text) : boost::filesystem::path();
}

}

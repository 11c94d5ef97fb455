#include "utility/platform/Paths.h"

namespace utility::platform
{

std::wstring WideFromPath(const boost::filesystem::path& path) { return path.native(); }

boost::filesystem::path PathFromWide(std::wstring_view text) { return std::wstring(text); }

}

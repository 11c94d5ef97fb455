#include "utility/platform/Paths.h"

#include "utility/platform/formats/Utf8.h"

namespace utility::platform
{

std::wstring WideFromPath(const boost::filesystem::path& path)
{
    return formats::WideFromUtf8(path.native(), formats::Malformed::escaped);
}

std::string Utf8FromPath(const boost::filesystem::path& path) { return path.native(); }

boost::filesystem::path PathFromWide(std::wstring_view text)
{
    return formats::Utf8FromWide(text, formats::Malformed::escaped);
}

}

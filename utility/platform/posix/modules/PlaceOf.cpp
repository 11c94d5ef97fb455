#include "utility/platform/posix/modules/PlaceOf.h"

#include <boost/algorithm/string/replace.hpp>
#include <boost/filesystem/operations.hpp>

#include <string_view>

namespace utility::platform::posix
{

boost::filesystem::path PlaceOf(const boost::filesystem::path& told)
{
    constexpr std::string_view mark = " (deleted)";
    boost::system::error_code ignored;
    std::string text = told.native();
    if (text.ends_with(mark) && !boost::filesystem::exists(told, ignored))
        text.resize(text.size() - mark.size());
    return text;
}

std::string ReadMappedPath(std::string told)
{
    constexpr const char* lineFeed = "\\012";
    boost::system::error_code ignored;
    // What is not there with these four characters in its name does not have them.
    if (told.find(lineFeed) != std::string::npos && !boost::filesystem::exists(told, ignored))
        boost::replace_all(told, lineFeed, "\n");
    return told;
}

}

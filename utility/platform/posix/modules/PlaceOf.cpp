#include "utility/platform/posix/modules/PlaceOf.h"

#include <boost/filesystem/operations.hpp>

#include <string>
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

}

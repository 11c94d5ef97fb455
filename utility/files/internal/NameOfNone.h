#pragma once

#include "utility/platform/Paths.h"

#include <boost/filesystem/exception.hpp>

namespace utility::detail
{

[[noreturn]] inline void ThrowNameOfNone(const boost::filesystem::path& name)
{
    throw boost::filesystem::filesystem_error(
        "no file has this name", name, boost::system::errc::make_error_code(boost::system::errc::invalid_argument));
}

/// For what is done by Boost.Filesystem, which takes a name for that of the file ahead of its null character.
inline const boost::filesystem::path& Whole(const boost::filesystem::path& name)
{
    if (!platform::AreWhole(name))
        ThrowNameOfNone(name);
    return name;
}

}

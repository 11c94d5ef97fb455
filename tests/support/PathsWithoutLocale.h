#pragma once

#include <boost/filesystem/path.hpp>

#include <locale>

namespace support
{

/// For its lifetime no path can be made from wide text, nor wide text from a path, where that is a matter of the
/// locale: each attempt throws, as it does under a locale that is not installed.
class PathsWithoutLocale
{
public:
    PathsWithoutLocale() = default;
    PathsWithoutLocale(const PathsWithoutLocale&) = delete;
    PathsWithoutLocale& operator=(const PathsWithoutLocale&) = delete;
    ~PathsWithoutLocale() { boost::filesystem::path::imbue(m_earlier); }

private:
    /// A conversion that knows no character.
    struct Refusing : std::codecvt<wchar_t, char, std::mbstate_t>
    {
        result do_in(state_type&, const char*, const char*, const char*&, wchar_t*, wchar_t*, wchar_t*&) const override
        {
            return error;
        }
        result do_out(state_type&, const wchar_t*, const wchar_t*, const wchar_t*&, char*, char*, char*&) const override
        {
            return error;
        }
    };

    std::locale m_earlier = boost::filesystem::path::imbue(std::locale(std::locale(), new Refusing));
};

}

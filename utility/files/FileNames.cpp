#include "utility/files/FileNames.h"

#include "utility/files/internal/NameOfNone.h"
#include "utility/platform/FileSystem.h"
#include "utility/platform/Locale.h"
#include "utility/platform/Paths.h"
#include "utility/settings/Lang.h"

#include <boost/filesystem/operations.hpp>
#include <boost/format.hpp>

#include <iterator>

using boost::filesystem::path;
using utility::platform::FileSystem;
using utility::platform::PathFromWide;

path MakeTemporaryFile(const path& folder, const wchar_t* prefix)
{
    path name = PathFromWide(prefix);
    name += boost::filesystem::unique_path(PathFromWide(L"%%%%-%%%%-%%%%-%%%%"));
    return folder / name;
}

path MakeTemporaryFile(const wchar_t* folder, const wchar_t* prefix)
{
    return MakeTemporaryFile(PathFromWide(folder), prefix);
}

path MakeTemporaryFile(const std::wstring& folder, const wchar_t* prefix)
{
    return MakeTemporaryFile(PathFromWide(folder), prefix);
}

path MakeTemporaryFolder(const path& folder, const wchar_t* prefix)
{
    path made = MakeTemporaryFile(folder, prefix);
    boost::filesystem::create_directory(utility::detail::Whole(made));
    return made;
}

path MakeTemporaryFolder(const wchar_t* folder, const wchar_t* prefix)
{
    return MakeTemporaryFolder(PathFromWide(folder), prefix);
}

path MakeTemporaryFolder(const std::wstring& folder, const wchar_t* prefix)
{
    return MakeTemporaryFolder(PathFromWide(folder), prefix);
}

path FormatLanguageDependentFilename(LCID language, const wchar_t* format)
{
    wchar_t abbreviation[4] = L"";
    utility::platform::Locale().LanguageAbbreviation(language, abbreviation, static_cast<int>(std::size(abbreviation)));
    boost::wformat name(format);
    name.exceptions(boost::io::all_error_bits ^ (boost::io::too_many_args_bit | boost::io::too_few_args_bit));
    return PathFromWide((name % abbreviation).str());
}

path FindLanguageDependentFilename(const wchar_t* format)
{
    const LCID language = Lang::GetLanguage();
    for (const LCID each : {language, utility::platform::WithDefaultSublanguage(language)})
    {
        boost::system::error_code ignored;
        path name = FormatLanguageDependentFilename(each, format);
        if (boost::filesystem::exists(name, ignored))
            return name;
    }
    // Deliberately without the leniency of the others: one argument is too many for a format without %1%.
    return PathFromWide((boost::wformat(format) % L"").str());
}

path GetLongPathNameW(const path& path) { return FileSystem().LongName(path); }

path GetLongPathNameW(const wchar_t* path) { return FileSystem().LongName(PathFromWide(path)); }

path GetLongPathNameW(const std::wstring& path) { return FileSystem().LongName(PathFromWide(path)); }

path GetShortPathNameW(const path& path) { return FileSystem().ShortName(path); }

path GetShortPathNameW(const wchar_t* path) { return FileSystem().ShortName(PathFromWide(path)); }

path GetShortPathNameW(const std::wstring& path) { return FileSystem().ShortName(PathFromWide(path)); }

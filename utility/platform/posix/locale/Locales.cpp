#include "utility/platform/posix/locale/Locales.h"

#include <algorithm>
#include <iterator>

namespace utility::platform::posix
{

namespace
{

constexpr LocaleRecord locales[] = {
#define UTILITY_LOCALE(identifier, name, abbreviation, nativeLanguage, decimalSymbol, timeSeparator)                   \
    {identifier, L"" name, L"" abbreviation, L"" nativeLanguage, L"" decimalSymbol, L"" timeSeparator},
#include "utility/platform/posix/locale/Locales.inc"
#undef UTILITY_LOCALE
};

template <class Predicate>
const LocaleRecord* FindLocale(Predicate predicate)
{
    const auto* const found = std::ranges::find_if(locales, predicate);
    return found == std::end(locales) ? nullptr : found;
}

std::wstring_view LanguageOf(std::wstring_view name) { return name.substr(0, name.find(L'-')); }

/// The region of a locale's name: behind the script, if it names one, and without the sort order.
std::wstring_view RegionOf(std::wstring_view name)
{
    const std::wstring_view last = name.substr(name.rfind(L'-') + 1);
    return last.substr(0, last.find(L'_'));
}

bool EqualIgnoringCase(std::wstring_view a, std::wstring_view b)
{
    constexpr auto lower = [](wchar_t c)
    { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + (L'a' - L'A')) : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

}

const LocaleRecord* FindIdentifier(LCID locale)
{
    return FindLocale([&](const LocaleRecord& each) { return each.identifier == locale; });
}

const LocaleRecord* FindName(std::wstring_view name)
{
    return FindLocale([&](const LocaleRecord& each)
                      { return EqualIgnoringCase(each.name, name) || EqualIgnoringCase(LanguageOf(each.name), name); });
}

const LocaleRecord* FindAbbreviation(std::wstring_view abbreviation)
{
    return FindLocale([&](const LocaleRecord& each) { return each.abbreviation == abbreviation; });
}

const LocaleRecord* FindEnvironmentLocale(std::string_view value)
{
    const std::string_view narrow = value.substr(0, value.find_first_of(".@"));
    const std::wstring wide(narrow.begin(), narrow.end());
    const std::wstring_view name = wide;
    const std::wstring_view language = name.substr(0, name.find(L'_'));
    const std::wstring_view region = name.substr(name.rfind(L'_') + 1);
    if (language.empty())
        return nullptr;
    const LocaleRecord* const exact = FindLocale(
        [&](const LocaleRecord& each) { return LanguageOf(each.name) == language && RegionOf(each.name) == region; });
    return exact != nullptr ? exact
                            : FindLocale([&](const LocaleRecord& each) { return LanguageOf(each.name) == language; });
}

std::string RuntimeName(const LocaleRecord& locale)
{
    const std::wstring_view language = LanguageOf(locale.name);
    const std::wstring_view region = RegionOf(locale.name);
    const std::wstring name = std::wstring(language).append(L"_").append(region).append(L".UTF-8");
    std::string narrow(name.size(), '\0');
    std::ranges::transform(name, narrow.begin(), [](wchar_t c) { return static_cast<char>(c); });
    return narrow;
}

}

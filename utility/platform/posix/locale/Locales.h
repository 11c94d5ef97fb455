#pragma once

#include "utility/platform/Types.h"

#include <string>
#include <string_view>

namespace utility::platform::posix
{

/// What is known of a locale; the texts end with a null.
struct LocaleRecord
{
    LCID identifier;
    std::wstring_view name;
    std::wstring_view abbreviation;
    std::wstring_view nativeLanguage;
    std::wstring_view decimalSymbol;
    std::wstring_view timeSeparator;
};

// Each gives null where there is no such locale.

const LocaleRecord* FindIdentifier(LCID locale);

/// By its name, or that of its language alone, in any case.
const LocaleRecord* FindName(std::wstring_view name);

/// By its language and region: DEA.
const LocaleRecord* FindAbbreviation(std::wstring_view abbreviation);

/// By a value of the environment such as de_AT.UTF-8@euro.
const LocaleRecord* FindEnvironmentLocale(std::string_view value);

/// The name that the C library has for a locale.
std::string RuntimeName(const LocaleRecord& locale);

}

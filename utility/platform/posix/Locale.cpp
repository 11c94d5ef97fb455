#include "utility/platform/Locale.h"

#include "utility/platform/Error.h"

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace utility::platform
{

namespace
{

struct LocaleRecord
{
    LCID identifier;
    std::wstring_view name;
    std::wstring_view abbreviation;
    std::wstring_view nativeLanguage;
    std::wstring_view decimalSymbol;
};

constexpr LocaleRecord locales[] = {
#define UTILITY_LOCALE(identifier, name, abbreviation, nativeLanguage, decimalSymbol)                                  \
    {identifier, L"" name, L"" abbreviation, L"" nativeLanguage, L"" decimalSymbol},
#include "utility/platform/posix/locale/Locales.inc"
#undef UTILITY_LOCALE
};

constexpr LCID unitedStates = 0x0409;

template <class Predicate>
const LocaleRecord* FindLocale(Predicate predicate)
{
    const auto* const found = std::ranges::find_if(locales, predicate);
    return found == std::end(locales) ? nullptr : found;
}

const LocaleRecord* FindIdentifier(LCID locale)
{
    return FindLocale([&](const LocaleRecord& each) { return each.identifier == locale; });
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

const LocaleRecord* FindName(std::wstring_view name)
{
    return FindLocale([&](const LocaleRecord& each)
                      { return EqualIgnoringCase(each.name, name) || EqualIgnoringCase(LanguageOf(each.name), name); });
}

/// The locale that a value such as de_AT.UTF-8@euro names, null if it names none.
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

/// The name that the C library has for a locale.
std::string RuntimeName(const LocaleRecord& locale)
{
    const std::wstring_view language = LanguageOf(locale.name);
    const std::wstring_view region = RegionOf(locale.name);
    const std::wstring name = std::wstring(language).append(L"_").append(region).append(L".UTF-8");
    std::string narrow(name.size(), '\0');
    std::ranges::transform(name, narrow.begin(), [](wchar_t c) { return static_cast<char>(c); });
    return narrow;
}

thread_local std::optional<LCID> threadLocale;

class PosixLocale final : public LocaleService
{
public:
    int DecimalSymbol(LCID locale, wchar_t* buffer, int size) override
    {
        return Deliver(FindIdentifier(locale), &LocaleRecord::decimalSymbol, buffer, size);
    }

    int Name(LCID locale, wchar_t* buffer, int size) override
    {
        return Deliver(FindIdentifier(locale), &LocaleRecord::name, buffer, size);
    }

    int NativeLanguageName(LCID locale, wchar_t* buffer, int size) override
    {
        return Deliver(FindIdentifier(locale), &LocaleRecord::nativeLanguage, buffer, size);
    }

    int NativeLanguageName(const wchar_t* name, wchar_t* buffer, int size) override
    {
        return Deliver(FindName(name), &LocaleRecord::nativeLanguage, buffer, size);
    }

    int LanguageAbbreviation(LCID locale, wchar_t* buffer, int size) override
    {
        return Deliver(FindIdentifier(locale), &LocaleRecord::abbreviation, buffer, size);
    }

    LCID UserDefault() override
    {
        for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        {
            const char* const value = std::getenv(variable);
            if (value == nullptr || *value == '\0')
                continue;
            const LocaleRecord* const found = FindEnvironmentLocale(value);
            return found != nullptr ? found->identifier : unitedStates;
        }
        return unitedStates;
    }

    LCID ThreadLocale() override { return threadLocale ? *threadLocale : UserDefault(); }

    bool SetThreadLocale(LCID locale) override
    {
        if (FindIdentifier(locale) == nullptr)
        {
            SetLastError(ERROR_INVALID_PARAMETER);
            return false;
        }
        threadLocale = locale;
        return true;
    }

    bool SetRuntimeLocale(const wchar_t* abbreviation) override
    {
        if (*abbreviation == L'\0')
            return std::setlocale(LC_ALL, "") != nullptr;
        const LocaleRecord* const found =
            FindLocale([&](const LocaleRecord& each) { return each.abbreviation == abbreviation; });
        return found != nullptr && std::setlocale(LC_ALL, RuntimeName(*found).c_str()) != nullptr;
    }

private:
    static int Fail(DWORD reason)
    {
        SetLastError(reason);
        return 0;
    }

    static int Deliver(const LocaleRecord* record, std::wstring_view LocaleRecord::*field, wchar_t* buffer, int size)
    {
        if (record == nullptr)
            return Fail(ERROR_INVALID_PARAMETER);
        const std::wstring_view text = record->*field;
        const int length = static_cast<int>(text.size()) + 1;
        if (size == 0)
            return length;
        if (size < length)
            return Fail(ERROR_INSUFFICIENT_BUFFER);
        buffer[text.copy(buffer, text.size())] = L'\0';
        return length;
    }
};

}

ServiceSlot<LocaleService>& LocaleSlot() noexcept
{
    static PosixLocale system;
    static ServiceSlot<LocaleService> slot(system);
    return slot;
}

}

#include "utility/platform/Locale.h"

#include "utility/platform/SystemService.h"

#include <clocale>

namespace utility::platform
{

namespace
{

class WindowsLocale final : public LocaleService
{
public:
    int DecimalSymbol(LCID locale, wchar_t* buffer, int size) override
    {
        return ::GetLocaleInfoW(locale, LOCALE_SDECIMAL, buffer, size);
    }

    int TimeSeparator(LCID locale, wchar_t* buffer, int size) override
    {
        return ::GetLocaleInfoW(locale, LOCALE_STIME, buffer, size);
    }

    int Name(LCID locale, wchar_t* buffer, int size) override { return ::LCIDToLocaleName(locale, buffer, size, 0); }

    int NativeLanguageName(LCID locale, wchar_t* buffer, int size) override
    {
        return ::GetLocaleInfoW(locale, LOCALE_SNATIVELANGNAME, buffer, size);
    }

    int NativeLanguageName(const wchar_t* name, wchar_t* buffer, int size) override
    {
        return ::GetLocaleInfoEx(name, LOCALE_SNATIVELANGNAME, buffer, size);
    }

    int LanguageAbbreviation(LCID locale, wchar_t* buffer, int size) override
    {
        return ::GetLocaleInfoW(locale, LOCALE_SABBREVLANGNAME, buffer, size);
    }

    LCID UserDefault() override { return ::GetUserDefaultLCID(); }

    LCID ThreadLocale() override { return ::GetThreadLocale(); }

    bool SetThreadLocale(LCID locale) override { return ::SetThreadLocale(locale) != FALSE; }

    bool SetRuntimeLocale(const wchar_t* abbreviation) override
    {
        return ::_wsetlocale(LC_ALL, abbreviation) != nullptr;
    }
};

}

ServiceSlot<LocaleService>& LocaleSlot() noexcept { return SystemService<LocaleService, WindowsLocale>::Slot(); }

}

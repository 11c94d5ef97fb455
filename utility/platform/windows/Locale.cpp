#include "utility/platform/Locale.h"

namespace utility::platform
{

namespace
{

class WindowsLocale final : public LocaleService
{
public:
    int DecimalSymbol(DWORD locale, wchar_t* buffer, int size) override
    {
        return ::GetLocaleInfoW(locale, LOCALE_SDECIMAL, buffer, size);
    }
};

}

ServiceSlot<LocaleService>& LocaleSlot() noexcept
{
    static WindowsLocale system;
    static ServiceSlot<LocaleService> slot(system);
    return slot;
}

}

#include "utility/platform/Locale.h"

#include "utility/platform/Error.h"

#include <algorithm>
#include <iterator>

namespace utility::platform
{

namespace
{

struct LocaleRecord
{
    DWORD identifier;
    wchar_t decimalSymbol;
};

constexpr LocaleRecord locales[] = {
    {0x007F, L'.'}, // invariant
    {0x0404, L'.'}, // Chinese, Taiwan
    {0x0407, L','}, // German, Germany
    {0x0409, L'.'}, // English, United States
    {0x040A, L','}, // Spanish, Spain, traditional order
    {0x040C, L','}, // French, France
    {0x0410, L','}, // Italian, Italy
    {0x0411, L'.'}, // Japanese, Japan
    {0x0412, L'.'}, // Korean, Korea
    {0x0416, L','}, // Portuguese, Brazil
    {0x041F, L','}, // Turkish, Turkey
    {0x0804, L'.'}, // Chinese, China
    {0x0809, L'.'}, // English, United Kingdom
    {0x0C0A, L','}, // Spanish, Spain
};

class PosixLocale final : public LocaleService
{
public:
    int DecimalSymbol(DWORD locale, wchar_t* buffer, int size) override
    {
        constexpr int length = 2;
        const auto* const found = std::find_if(std::begin(locales), std::end(locales),
                                               [&](const LocaleRecord& each) { return each.identifier == locale; });
        if (found == std::end(locales))
            return Failure(ERROR_INVALID_PARAMETER);
        if (size == 0)
            return length;
        if (size < length)
            return Failure(ERROR_INSUFFICIENT_BUFFER);
        buffer[0] = found->decimalSymbol;
        buffer[1] = L'\0';
        return length;
    }

private:
    static int Failure(DWORD reason)
    {
        SetLastError(reason);
        return 0;
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

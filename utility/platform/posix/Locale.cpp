#include "utility/platform/Locale.h"

#include "utility/platform/Error.h"
#include "utility/platform/posix/locale/Locales.h"
#include "utility/platform/posix/threads/RuntimeMutex.h"
#include "utility/platform/SystemService.h"

#include <clocale>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>

namespace utility::platform
{

namespace
{

constexpr LCID unitedStates = 0x0409;

thread_local std::optional<LCID> threadLocale;

class PosixLocale final : public LocaleService
{
public:
    int DecimalSymbol(LCID locale, wchar_t* buffer, int size) override
    {
        return Deliver(posix::FindIdentifier(locale), &posix::LocaleRecord::decimalSymbol, buffer, size);
    }

    int TimeSeparator(LCID locale, wchar_t* buffer, int size) override
    {
        return Deliver(posix::FindIdentifier(locale), &posix::LocaleRecord::timeSeparator, buffer, size);
    }

    int Name(LCID locale, wchar_t* buffer, int size) override
    {
        return Deliver(posix::FindIdentifier(locale), &posix::LocaleRecord::name, buffer, size);
    }

    int NativeLanguageName(LCID locale, wchar_t* buffer, int size) override
    {
        return Deliver(posix::FindIdentifier(locale), &posix::LocaleRecord::nativeLanguage, buffer, size);
    }

    int NativeLanguageName(const wchar_t* name, wchar_t* buffer, int size) override
    {
        return Deliver(posix::FindName(name), &posix::LocaleRecord::nativeLanguage, buffer, size);
    }

    int LanguageAbbreviation(LCID locale, wchar_t* buffer, int size) override
    {
        return Deliver(posix::FindIdentifier(locale), &posix::LocaleRecord::abbreviation, buffer, size);
    }

    LCID UserDefault() override
    {
        for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
        {
            const char* const value = std::getenv(variable);
            if (value == nullptr || *value == '\0')
                continue;
            const posix::LocaleRecord* const found = posix::FindEnvironmentLocale(value);
            return found != nullptr ? found->identifier : unitedStates;
        }
        return unitedStates;
    }

    LCID ThreadLocale() override { return threadLocale ? *threadLocale : UserDefault(); }

    bool SetThreadLocale(LCID locale) override
    {
        if (posix::FindIdentifier(locale) == nullptr)
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
            return Choose("");
        const posix::LocaleRecord* const found = posix::FindAbbreviation(abbreviation);
        return found != nullptr && Choose(posix::RuntimeName(*found).c_str());
    }

    RuntimeLocale UseCLocale() override { return {L"", 0, ::uselocale(m_c)}; }

    void UseRuntimeLocale(const RuntimeLocale& earlier) override { ::uselocale(static_cast<locale_t>(earlier.own)); }

private:
    static bool Choose(const char* name)
    {
        const std::lock_guard lock(posix::RuntimeMutex());
        return std::setlocale(LC_ALL, name) != nullptr;
    }

    static int Fail(DWORD reason)
    {
        SetLastError(reason);
        return 0;
    }

    static int Deliver(const posix::LocaleRecord* record, std::wstring_view posix::LocaleRecord::*field,
                       wchar_t* buffer, int size)
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

    const locale_t m_c = ::newlocale(LC_ALL_MASK, "C", nullptr); // never gone: a thread may go by it
};

}

ServiceSlot<LocaleService>& LocaleSlot() noexcept { return SystemService<LocaleService, PosixLocale>::Slot(); }

}

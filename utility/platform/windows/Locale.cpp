#include "utility/platform/Locale.h"

#include "utility/platform/SystemService.h"

#include <clocale>
#include <mutex>
#include <string>

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

    RuntimeLocale UseCLocale() override
    {
        const int mode = ::_configthreadlocale(_ENABLE_PER_THREAD_LOCALE);
        if (mode == noLocalesOfThreads)
            return m_processLocale.UseC();
        RuntimeLocale earlier;
        earlier.mode = mode;
        try
        {
            earlier.name = ::_wsetlocale(LC_ALL, nullptr);
        }
        catch (...)
        {
            ::_configthreadlocale(mode);
            throw;
        }
        ::_wsetlocale(LC_ALL, L"C");
        return earlier;
    }

    void UseRuntimeLocale(const RuntimeLocale& earlier) override
    {
        if (earlier.mode == noLocalesOfThreads)
            return m_processLocale.Use(earlier.name);
        // In this order, so that no other thread is touched.
        ::_wsetlocale(LC_ALL, earlier.name.c_str());
        ::_configthreadlocale(earlier.mode);
    }

private:
    static constexpr int noLocalesOfThreads = -1;

    /// The locale of the whole process is "C" as long as any thread wants it.
    class ProcessLocale
    {
    public:
        RuntimeLocale UseC()
        {
            const std::lock_guard lock(m_mutex);
            if (m_users == 0)
                m_earlier = ::_wsetlocale(LC_ALL, nullptr);
            RuntimeLocale earlier{m_earlier, noLocalesOfThreads, nullptr};
            ++m_users;
            ::_wsetlocale(LC_ALL, L"C");
            return earlier;
        }

        void Use(const std::wstring& earlier)
        {
            const std::lock_guard lock(m_mutex);
            if (m_users > 0)
                --m_users;
            if (m_users == 0)
                ::_wsetlocale(LC_ALL, earlier.c_str());
        }

    private:
        std::mutex m_mutex;
        int m_users = 0;
        std::wstring m_earlier;
    };

    ProcessLocale m_processLocale;
};

}

ServiceSlot<LocaleService>& LocaleSlot() noexcept { return SystemService<LocaleService, WindowsLocale>::Slot(); }

}

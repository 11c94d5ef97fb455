#include "utility/platform/Locale.h"

#include "utility/platform/SystemService.h"

#include <clocale>
#include <mutex>
#include <set>
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
        if (earlier.mode <= noLocalesOfThreads)
            return m_processLocale.Use(earlier);
        // In this order, so that no other thread is touched.
        ::_wsetlocale(LC_ALL, earlier.name.c_str());
        ::_configthreadlocale(earlier.mode);
    }

private:
    // Modes of what was put aside where the C library has no locales of threads.
    static constexpr int noLocalesOfThreads = -1; // as the C library says so
    static constexpr int isWithinAnother = -2;    // by a thread that wanted "C" already

    /// The locale of the whole process is "C" as long as any thread wants it.
    class ProcessLocale
    {
    public:
        RuntimeLocale UseC()
        {
            const std::lock_guard lock(m_mutex);
            if (m_threads.empty())
                m_earlier = ::_wsetlocale(LC_ALL, nullptr);
            RuntimeLocale earlier{m_earlier, noLocalesOfThreads, nullptr};
            if (!m_threads.insert(::GetCurrentThreadId()).second)
                earlier.mode = isWithinAnother;
            ::_wsetlocale(LC_ALL, L"C");
            return earlier;
        }

        void Use(const RuntimeLocale& earlier)
        {
            const std::lock_guard lock(m_mutex);
            if (earlier.mode != isWithinAnother)
                m_threads.erase(::GetCurrentThreadId());
            if (m_threads.empty())
                ::_wsetlocale(LC_ALL, earlier.name.c_str());
        }

    private:
        std::mutex m_mutex;
        std::set<DWORD> m_threads; // that want "C"
        std::wstring m_earlier;
    };

    ProcessLocale m_processLocale;
};

}

ServiceSlot<LocaleService>& LocaleSlot() noexcept { return SystemService<LocaleService, WindowsLocale>::Slot(); }

}

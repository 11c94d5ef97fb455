#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/Locale.h"

namespace support
{

/// For its lifetime the locale service: the one there was, except where a test says otherwise.
class ForwardingLocale : public utility::platform::LocaleService
{
public:
    int DecimalSymbol(LCID locale, wchar_t* buffer, int size) override
    {
        return m_system.DecimalSymbol(locale, buffer, size);
    }
    int TimeSeparator(LCID locale, wchar_t* buffer, int size) override
    {
        return m_system.TimeSeparator(locale, buffer, size);
    }
    int Name(LCID locale, wchar_t* buffer, int size) override { return m_system.Name(locale, buffer, size); }
    int NativeLanguageName(LCID locale, wchar_t* buffer, int size) override
    {
        return m_system.NativeLanguageName(locale, buffer, size);
    }
    int NativeLanguageName(const wchar_t* name, wchar_t* buffer, int size) override
    {
        return m_system.NativeLanguageName(name, buffer, size);
    }
    int LanguageAbbreviation(LCID locale, wchar_t* buffer, int size) override
    {
        return m_system.LanguageAbbreviation(locale, buffer, size);
    }
    LCID UserDefault() override { return m_system.UserDefault(); }
    LCID ThreadLocale() override { return m_system.ThreadLocale(); }
    bool SetThreadLocale(LCID locale) override { return m_system.SetThreadLocale(locale); }
    bool SetRuntimeLocale(const wchar_t* abbreviation) override { return m_system.SetRuntimeLocale(abbreviation); }
    utility::platform::RuntimeLocale UseCLocale() override { return m_system.UseCLocale(); }
    void UseRuntimeLocale(const utility::platform::RuntimeLocale& earlier) override
    {
        m_system.UseRuntimeLocale(earlier);
    }

protected:
    utility::platform::LocaleService& m_system = utility::platform::Locale();

private:
    Substitute<utility::platform::LocaleService> m_scope{utility::platform::LocaleSlot(), *this};
};

}

#include "utility/settings/Lang.h"

#include "utility/platform/LoadOrder.h"
#include "utility/platform/Locale.h"
#include "utility/platform/Registry.h"
#include "utility/settings/RegistryString.h"

#include <boost/format.hpp>

#include <cwchar>
#include <iterator>

using utility::platform::Locale;
using utility::platform::LocaleService;
using utility::platform::Registry;

namespace
{

constexpr const wchar_t* choiceName = L"DisplayLanguage";

using Translations = std::array<std::pair<LCID, std::wstring>, 12>;

std::wstring ChoiceKey()
{
    return (boost::wformat(L"SOFTWARE\\%1%\\%2%\\%3%\\Options\\General") % RegistryString::m_szRegistryKey %
            L"TOLVERAN" % RegistryString::m_szRootSection)
        .str();
}

/// Asks the locale service for what may not be empty.
template <class Key>
int Ask(int (LocaleService::*question)(Key, wchar_t*, int), Key key, std::wstring& answer)
{
    wchar_t text[512] = L"";
    if ((Locale().*question)(key, text, static_cast<int>(std::size(text))) == 0 || *text == L'\0')
        return 0;
    answer = text;
    return 1;
}

}

namespace Lang
{

LCID GetLanguage()
{
    LCID language = Locale().UserDefault();
    HKEY key = nullptr;
    if (Registry().RegOpenKeyExW(HKEY_CURRENT_USER, ChoiceKey().c_str(), KEY_READ, key) == 0)
    {
        DWORD type = REG_NONE;
        DWORD choice = 0;
        DWORD size = sizeof(choice);
        if (Registry().RegQueryValueExW(key, choiceName, &type, &choice, &size) == 0 && type == REG_DWORD &&
            choice != 0)
            language = choice;
    }
    Registry().RegCloseKey(key);
    return language;
}

int SetLanguage(LCID lcid)
{
    HKEY key = nullptr;
    LSTATUS status = Registry().RegOpenKeyExW(HKEY_CURRENT_USER, ChoiceKey().c_str(), KEY_WRITE, key);
    if (status == 0)
        status = Registry().RegSetValueExW(key, choiceName, REG_DWORD, &lcid, sizeof(lcid));
    Registry().RegCloseKey(key);
    return status == 0 ? 1 : 0;
}

int IsWindowsDefaultLanguage(LCID lcid) { return lcid == Locale().UserDefault() ? 1 : 0; }

namespace
{

using namespace utility::platform;

constinit StaticPlace<Translations> translations;

void MakeTranslations()
{
    translations.Make(Translations{{
        {0x0000, L"Use Windows Display Language"},
        {0x0809, L"English"},
        {0x0804, L"Chinese Simplified"},
        {0x0404, L"Chinese Traditional"},
        {0x0407, L"German"},
        {0x0C0A, L"Spanish"},
        {0x040C, L"French"},
        {0x0410, L"Italian"},
        {0x0411, L"Japanese"},
        {0x0412, L"Korean"},
        {0x0416, L"Brazillian Portugese"}, // deliberately so spelt: hosts know it by this name
        {0x041F, L"Turkish"},
    }});
}

void DestroyTranslations() { translations.Destroy(); }

[[gnu::init_priority(languageTableIsMade)]] LoadStep translationsStep(languageTableIsMade, &MakeTranslations,
                                                                      &DestroyTranslations);

}

const Translations& GetAvailableTranslations() { return *translations; }

int GetLanguageCodes(const std::wstring& text, std::vector<std::wstring>& codes)
{
    constexpr std::size_t block = 5;
    if (text.size() % block != 1)
        return 0;
    codes.clear();
    codes.reserve(text.size() / block);
    for (std::size_t at = 0; at + block < text.size(); at += block)
        codes.push_back(text.substr(at, block - 1));
    return 1;
}

LCID GetNamedLCID(const std::wstring& code)
{
    return code.size() == 4 ? static_cast<LCID>(std::wcstoul(code.c_str(), nullptr, 16)) : 0;
}

int GetLanguageLocale(LCID lcid, std::wstring& locale)
{
    wchar_t name[85];
    if (Locale().Name(lcid, name, static_cast<int>(std::size(name))) == 0)
        return 0;
    locale = name;
    return 1;
}

int GetLanguageName(LCID lcid, std::wstring& name) { return Ask(&LocaleService::NativeLanguageName, lcid, name); }

int GetLanguageName(const std::wstring& locale, std::wstring& name)
{
    return Ask(&LocaleService::NativeLanguageName, locale.c_str(), name);
}

int GetLanguageAbbreviatedName(LCID lcid, std::wstring& name)
{
    return Ask(&LocaleService::LanguageAbbreviation, lcid, name);
}

}

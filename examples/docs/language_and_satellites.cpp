#include "utility/Utility.h"

#include <iostream>

void Show(const std::wstring& text) { std::cout << from_utf(text, 65001) << '\n'; }

int main()
{
    constexpr LCID german = 0x0407;
    std::wstring name, letters, locale;
    Lang::GetLanguageName(german, name);
    Lang::GetLanguageAbbreviatedName(german, letters);
    Lang::GetLanguageLocale(german, locale);
    Show(name + L", " + letters + L", " + locale);

    // The application makes the key of its options; until then no choice can be stored.
    const wchar_t* const key = L"SOFTWARE\\Selvane\\TOLVERAN\\2022.0\\Options\\General";
    CQLMAppSettings::CreateKey(HKEY_CURRENT_USER, key, KEY_READ);
    Lang::SetLanguage(german);

    // A choice counts where a module's resources are found from then on, as a rule at the
    // next start. Here the module is the library, the one with this function, and the
    // object takes over the reference to it.
    void* const function = reinterpret_cast<void*>(&InitialiseUtilityDLL);
    {
        const CResourceCounter library(GetModuleHandleExW(function, 0));
        Show(resource_string(library.GetResourceDLL(), 8314));
        Show(resource_string(library.GetDLL(), 8314));
    }
    Lang::SetLanguage(0); // back to the language of the system

    // A file for each language: the letters are asked for by %1%.
    std::cout << FormatLanguageDependentFilename(german, L"help%1%.txt") << '\n';
}

// The display language: which there are, which one is in effect, and how a user gets another one, from the next start
// on.
//
//     display_language          lists the translations and shows a message of the library
//     display_language 0407     chooses German; 0000 goes back to the system's language
#include "utility/Utility.h"

#include <iostream>
#include <string_view>

namespace
{

bool Choose(LCID language)
{
    // An application makes this key when it first stores its options.
    constexpr const wchar_t* options = L"SOFTWARE\\Selvane\\TOLVERAN\\2022.0\\Options\\General";
    CQLMAppSettings::CreateKey(HKEY_CURRENT_USER, options, KEY_READ);
    return Lang::SetLanguage(language) != 0;
}

void Show()
{
    for (const auto& [language, english] : Lang::GetAvailableTranslations())
    {
        std::wstring native;
        Lang::GetLanguageName(language, native);
        std::cout << (language == Lang::GetLanguage() ? "* " : "  ") << from_utf(english + L"  " + native, CP_UTF8)
                  << '\n';
    }
    std::cout << from_utf(LoadMessage(8300), CP_UTF8) << '\n';
}

}

int main(int argumentCount, char** arguments)
{
    InitialiseUtilityDLL();
    if (argumentCount > 1)
    {
        const std::string_view code = arguments[1];
        return Choose(Lang::GetNamedLCID(std::wstring(code.begin(), code.end()))) ? 0 : 1;
    }
    Show();
    return 0;
}

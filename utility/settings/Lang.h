#pragma once

// The language in which the application shows itself: the translations there are, the user's choice, and what is known
// of a language by its locale identifier.
//
//     const wchar_t* const key = L"SOFTWARE\\Selvane\\TOLVERAN\\2022.0\\Options\\General";
//     CQLMAppSettings::CreateKey(HKEY_CURRENT_USER, key, KEY_READ);
//     Lang::SetLanguage(1031); // German, from the next start on
//     std::wstring name;
//     Lang::GetLanguageName(Lang::GetLanguage(), name);
//     assert(name == L"Deutsch");
//
// A language is a Windows locale identifier on every system; 0 stands for no choice, which is the system's language.
// The choice is the value DisplayLanguage of the key SOFTWARE\Selvane\TOLVERAN\2022.0\Options\General in the user's
// hive. That key is for the application to make: until it is there, no choice can be stored. Nothing of it is kept in
// memory: what is asked for is read, and what is set takes effect where a CResourceCounter is made
// (settings/ResourceCounter.h), at the start of a process.
//
// Any thread may call. Nothing throws but for lack of memory. Functions that return an int return 1 for success and 0
// for failure, and then leave what they should have given as it was.
//
// On Linux the system's language is that of LC_ALL, LC_MESSAGES or LANG, and about a hundred locales are known.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <array>
#include <string>
#include <utility>
#include <vector>

namespace Lang
{

/// The user's choice, whatever number it is, or else the system's language.
UTILITY_API LCID GetLanguage();

/// Stores the choice, any number; 0 clears it. Fails while its key is not there.
UTILITY_API int SetLanguage(LCID lcid);

/// Whether this is the system's language.
UTILITY_API int IsWindowsDefaultLanguage(LCID lcid);

/// The translations that the application comes with, each with its name in English; the first is the choice of none.
UTILITY_API const std::array<std::pair<LCID, std::wstring>, 12>& GetAvailableTranslations();

/// Splits a list of codes of four characters, each with a separator behind it, and one character that ends the list.
/// What these are is not looked at. Fails if the length is not that of such a list.
UTILITY_API int GetLanguageCodes(const std::wstring& text, std::vector<std::wstring>& codes);

/// The locale identifier that four hexadecimal digits stand for; 0 for a text of another length or without digits.
UTILITY_API LCID GetNamedLCID(const std::wstring& code);

/// The name of a locale, such as de-DE.
UTILITY_API int GetLanguageLocale(LCID lcid, std::wstring& locale);

/// The name of a language in that language, by identifier or by the locale's name.
UTILITY_API int GetLanguageName(LCID lcid, std::wstring& name);
UTILITY_API int GetLanguageName(const std::wstring& locale, std::wstring& name);

/// The three letters that stand for a language and its region, such as DEU.
UTILITY_API int GetLanguageAbbreviatedName(LCID lcid, std::wstring& name);

}

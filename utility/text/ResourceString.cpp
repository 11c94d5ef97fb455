#include "utility/text/ResourceString.h"

#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/Modules.h"
#include "utility/platform/Text.h"

CResourceString::CResourceString(unsigned int id) { LoadString(id); }

CResourceString::CResourceString(HINSTANCE hModule, unsigned int id) { LoadString(hModule, id); }

std::wstring resource_string(unsigned int id) { return std::wstring(utility::framework::StringOfChain(id)); }

std::wstring resource_string(HINSTANCE hModule, unsigned int id)
{
    return std::wstring(utility::platform::Modules().StringOf(hModule, id));
}

std::string from_utf(const std::wstring& text, unsigned int codePage)
{
    return from_utf(text.data(), text.size(), codePage);
}

std::string from_utf(const wchar_t* text, std::uint64_t length, unsigned int codePage)
{
    return utility::platform::CodePageFromWide(codePage, {text, length});
}

#include "utility/settings/RegistryKeyNames.h"

#include <cwchar>

bool IsValidRegistryKeyName(const wchar_t* name)
{
    return name != nullptr && *name != L'\0' && std::wcschr(name, L'\\') == nullptr;
}

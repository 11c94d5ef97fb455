#include "utility/Utility.h"

#include <iostream>

void Show(const char* what, const std::wstring& text)
{
    std::cout << what << ": ";
    std::cout << from_utf(text, 65001) << '\n';
}

int main()
{
    CQLMAppSettings::SetProductName(L"Sample"); // ahead of the first instance()
    const CQLMAppSettings& settings = CQLMAppSettings::instance();
    const wchar_t* const key = L"Options\\General";

    settings.SetValue(key, L"Tolerance", 0.01);
    settings.SetValue(key, L"Passes", 3);
    settings.SetValue(key, L"Machine", L"Fräse 鉄");

    // The default says what type is wanted, and is given where there is no such value.
    Show("tolerance", to_wstring(settings.GetValue(key, L"Tolerance", 0.1), 2));
    Show("passes", std::to_wstring(settings.GetValue(key, L"Passes", 1)));
    Show("operator", settings.GetValue(key, L"Operator", L"nobody"));

    // Names are found in any case.
    Show("machine", settings.GetValue(L"options\\GENERAL", L"machine", L"none"));

    // Another type is another form: an int is no text, and no double.
    Show("passes as text", settings.GetValue(key, L"Passes", L"none"));
    Show("passes as a double", to_wstring(settings.GetValue(key, L"Passes", 0.5), 1));

    // With false the hive of the machine alone is asked.
    Show("for all users", std::to_wstring(settings.GetValue(key, L"Passes", 1, false)));

    CQLMAppSettings::DeleteKey(HKEY_CURRENT_USER, settings.AppSubKey());
    Show("passes, deleted", std::to_wstring(settings.GetValue(key, L"Passes", 1)));
}

#include "utility/Utility.h"

#include <iostream>

void Show(const std::wstring& text) { std::cout << from_utf(text, 65001) << '\n'; }

int main()
{
    CQLMAppSettings::SetProductName(L"Settings of a page"); // ahead of the first instance()
    const CQLMAppSettings& settings = CQLMAppSettings::instance();

    settings.SetValue(L"Options\\General", L"Tolerance", 0.01);
    settings.SetValue(L"Options\\General", L"Passes", 3);
    settings.SetValue(L"Options\\General", L"Machine", L"Fräse 鉄");

    // The default says what type is wanted, and is given where there is no such value.
    Show(to_wstring(settings.GetValue(L"Options\\General", L"Tolerance", 0.1), 2));
    Show(std::to_wstring(settings.GetValue(L"Options\\General", L"Passes", 1)));
    Show(settings.GetValue(L"options\\GENERAL", L"machine", L"none"));
    Show(settings.GetValue(L"Options\\General", L"Operator", L"nobody"));

    // Another type is another form: a number is no text, and 3 as an int is no double.
    Show(settings.GetValue(L"Options\\General", L"Passes", L"no text"));
    Show(to_wstring(settings.GetValue(L"Options\\General", L"Passes", 0.5), 1));

    // With false the hive of the machine alone is asked.
    Show(std::to_wstring(settings.GetValue(L"Options\\General", L"Passes", 1, false)));

    CQLMAppSettings::DeleteKey(HKEY_CURRENT_USER, settings.AppSubKey());
    Show(std::to_wstring(settings.GetValue(L"Options\\General", L"Passes", 1)));
}

#include "utility/Utility.h"

#include <iostream>

void Show(const std::wstring& text) { std::cout << from_utf(text, 65001) << '\n'; }

int main()
{
    // What utility_version_record() gave this program. Null would be the library behind
    // InitialiseUtilityDLL().
    CVersion version;
    if (!version.Initialise(nullptr))
        return 1;
    const DWORD number = version.GetFileVersionMS();
    Show(version.GetProductName());
    Show(std::to_wstring(number >> 16) + L'.' + std::to_wstring(number & 0xFFFF));

    InitialiseUtilityDLL(); // before message texts are expected
    Show(LoadMessage(8302, L'x'));
}

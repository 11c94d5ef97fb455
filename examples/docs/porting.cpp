#include "utility/Utility.h"

#include <cstdint>
#include <iostream>

int main()
{
    // The same everywhere: the directives of formats, what has 32 bits, the numbers of errors.
    CStringW text;
    text.Format(L"%s %ld", L"wide", std::int32_t{-1});
    std::cout << from_utf(text.GetString(), 65001) << ", a DWORD of " << sizeof(DWORD) << " bytes\n";
    try
    {
        const CTextInputOutputFile file(L"missing.igs");
    }
    catch (CFileException* failure)
    {
        std::cout << "error " << failure->m_lOsError << '\n';
        failure->Delete();
    }

    // Not the same: what the system has its own way of.
    std::cout << "wide characters of " << sizeof(wchar_t) << " bytes, longs of " << sizeof(long) << '\n';
    std::cout << "settings are in " << utility::platform::HiveFile(HKEY_CURRENT_USER).filename() << '\n';
    CreateFileIfNotPresent(L"part.igs");
    std::cout << "PART.IGS is " << (IsFileReadable(L"PART.IGS") ? "part.igs" : "another file") << '\n';
    _OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    GetVersionExZelo(version);
    std::cout << "a version of Windows is " << (version.dwMajorVersion > 0 ? "told" : "not told") << '\n';
}

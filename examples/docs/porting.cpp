#include "utility/Utility.h"

#include <cstdint>
#include <iostream>

int main()
{
    // The same everywhere: directives of formats, what has 32 bits, numbers of errors.
    CStringW text;
    text.Format(L"%s %ld", L"wide", std::int32_t{-1});
    std::cout << from_utf(text.GetString(), 65001) << '\n';
    std::cout << "DWORDs of " << sizeof(DWORD) << " bytes\n";
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
    std::cout << "wide characters of " << sizeof(wchar_t) << " bytes\n";
    std::cout << "longs of " << sizeof(long) << " bytes\n";
    const boost::filesystem::path hive = utility::platform::HiveFile(HKEY_CURRENT_USER);
    std::cout << "settings are in " << hive.filename() << '\n';
    CreateFileIfNotPresent(L"part.igs");
    const bool isSame = IsFileReadable(L"PART.IGS");
    std::cout << "PART.IGS is " << (isSame ? "part.igs" : "another file") << '\n';
    _OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    GetVersionExZelo(version);
    const bool isTold = version.dwMajorVersion > 0;
    std::cout << "a version of Windows is " << (isTold ? "told" : "not told") << '\n';
}

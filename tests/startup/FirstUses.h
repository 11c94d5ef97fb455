#pragma once

// What loads a library of the system when it is first used: for Plugged.cpp and Plugin.cpp, which do it at once.

#include "utility/Utility.h"

#include <cstdlib>
#include <string_view>

/// What the environment's FIRST_USE names, and whether it went well. An archive has the name `archive`.
inline bool UseFirst(const char* archive)
{
    const std::string_view use = std::getenv("FIRST_USE");
    if (use == "Settings")
        return CQLMAppSettings::instance().SetValue(L"Plugged", L"Number", 7);
    if (use == "Compression")
    {
        CZEngine engine;
        return engine.DeflateInit(6) == 0 && engine.DeflateEnd() == 0;
    }
    const bool isWritten = Zip::ZipFiles(archive, {"Counted.txt"});
    return isWritten || sizeof(wchar_t) == 2; // where the library for it is not everybody's
}

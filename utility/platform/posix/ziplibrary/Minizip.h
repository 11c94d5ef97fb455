#pragma once

#include "utility/platform/posix/modules/SystemLibrary.h"

#include <minizip/zip.h>

namespace utility::platform::posix
{

/// The functions of minizip, under their own names.
struct Minizip
{
    decltype(&::zipOpen2_64) zipOpen2_64 = nullptr;
    decltype(&::zipOpenNewFileInZip4_64) zipOpenNewFileInZip4_64 = nullptr;
    decltype(&::zipWriteInFileInZip) zipWriteInFileInZip = nullptr;
    decltype(&::zipCloseFileInZip) zipCloseFileInZip = nullptr;
    decltype(&::zipClose) zipClose = nullptr;

    bool FindIn(void* library)
    {
        return FindFunction(library, "zipOpen2_64", zipOpen2_64) &&
               FindFunction(library, "zipOpenNewFileInZip4_64", zipOpenNewFileInZip4_64) &&
               FindFunction(library, "zipWriteInFileInZip", zipWriteInFileInZip) &&
               FindFunction(library, "zipCloseFileInZip", zipCloseFileInZip) &&
               FindFunction(library, "zipClose", zipClose);
    }
};

}

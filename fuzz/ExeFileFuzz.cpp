// The headers of arbitrary bytes taken for an executable: what is said of them holds, and nothing outside is read.

#include "tests/support/FileOfBytes.h"
#include "utility/system/ExeFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const support::FileOfBytes files({reinterpret_cast<const char*>(data), size});
    const CPEExeFile file(L"any");
    const bool isNamed = file.GetExeType() > CExeFile::exeTypeDos;
    const bool hasHeader = file.GetErrorType() == CExeFile::errExeFileNone;
    const std::uint32_t fields =
        file.GetMachine() | file.GetNumberOfSections() | file.GetTimeDateStamp() | file.GetCharacteristics();
    if (isNamed && (!hasHeader || file.GetSecondaryHeaderOffset() + 2 > size))
        std::abort();
    if (file.IsValid() != (file.GetExeType() == CExeFile::exeTypePE) || (!file.IsValid() && fields != 0))
        std::abort();
    return 0;
}

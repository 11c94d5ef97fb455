#include "utility/files/BinaryFile.h"

#include <cstring>

CBinaryFile::CBinaryFile() = default;

CBinaryFile::~CBinaryFile() = default;

bool CBinaryFile::Open(const wchar_t* path) { return CMemoryMappedFile::Open(path, 0); }

bool CBinaryFile::Open(const std::wstring& path) { return CMemoryMappedFile::Open(path, 0); }

bool CBinaryFile::Open(const boost::filesystem::path& path) { return CMemoryMappedFile::Open(path, 0); }

CBinaryFile& CBinaryFile::operator<<(const char* text)
{
    WriteFile(text, std::strlen(text));
    return *this;
}

CBinaryFile& CBinaryFile::operator<<(float value)
{
    WriteFile(&value, sizeof(value));
    return *this;
}

CBinaryFile& CBinaryFile::operator<<(DWORD value)
{
    WriteFile(&value, sizeof(value));
    return *this;
}

CBinaryFile& CBinaryFile::operator<<(unsigned short value)
{
    WriteFile(&value, sizeof(value));
    return *this;
}

#pragma once

// A file written value by value, as the bytes that the values are made of.
//
//     CBinaryFile file;
//     file.Open(L"mesh.bin");
//     file << "MESH" << DWORD{3} << 1.5F;
//     file.Close(0);
//
// Each insertion is one write to the system: nothing is gathered. For a bulk of data WriteFile takes it at once. The
// close ends the file behind what was written, and does not report what it could not bring to the disk: where that
// counts, CommitAndClose does.
//
// What cannot be opened or written throws a CFileException (as a pointer, see framework/Exception.h) with the path. An
// object belongs to one thread at a time; copies are aliases of the same open file.

#include "utility/files/InputOutputFile.h"

class UTILITY_API CBinaryFile : public CInputOutputFile
{
public:
    /// Closed.
    CBinaryFile();
    /// An alias of the same open file, like every copy of a file object.
    CBinaryFile(const CBinaryFile&) = default;
    CBinaryFile& operator=(const CBinaryFile&) = default;
    ~CBinaryFile() override;

    /// Opens a file to write, created if absent, its bytes kept until they are written over or the close cuts them off.
    /// Always true.
    bool Open(const wchar_t* path);
    bool Open(const std::wstring& path);
    bool Open(const boost::filesystem::path& path);

    /// The characters without the null at their end: a reader has to know how many they are. Null is not allowed.
    CBinaryFile& operator<<(const char* text);
    /// 4 bytes.
    CBinaryFile& operator<<(float value);
    /// 4 bytes.
    CBinaryFile& operator<<(DWORD value);
    /// 2 bytes.
    CBinaryFile& operator<<(unsigned short value);
};

#pragma once

// The text of a VRML scene, written piece by piece, plain or compressed as gzip does.
//
//     CVRMLFile file;
//     file.Open(L"part.wrl.gz", true, 6);
//     file << "#VRML V2.0 utf8\n" << "Shape { geometry Sphere { radius 5 } }\n";
//     file.Close();
//
// A compressed file is one gzip member without name and time. A plain one deliberately ends in eight zero bytes behind
// its text, which a reader has to bear. An object is for one file. Only a closed file is whole: without a close it
// lacks its end. The close does not report what it could not compress or bring to the disk: where that counts,
// CommitAndClose does.
//
// What cannot be opened or written throws a CFileException (as a pointer, see framework/Exception.h) with the path. An
// object belongs to one thread at a time. The constructor loads zlib (see codec/ZEngine.h): where it cannot be had,
// that raises the exception 0xC06D007E on Windows; on Linux a compressed file is made without its text.

#include "utility/codec/ZEngine.h"
#include "utility/files/TextInputOutputFile.h"

#include <cstdint>
#include <memory>
#include <string>

class UTILITY_API CVRMLFile
{
public:
    /// Closed.
    CVRMLFile();
    CVRMLFile(const CVRMLFile&) = delete;
    CVRMLFile& operator=(const CVRMLFile&) = delete;
    /// Closes the file without its end, where Close was not called.
    ~CVRMLFile();

    /// Opens a file to write, created if absent, its bytes kept until they are written over or the close cuts them off.
    /// The level is zlib's: 1 to 9, 0 to store the text as it is, -1 for zlib's choice, which is 6. Always true.
    bool Open(const wchar_t* file, bool compress, int level);
    bool Open(const std::wstring& file, bool compress, int level);
    bool Open(const boost::filesystem::path& file, bool compress, int level);

    /// The characters without the null at their end. Null is not allowed. Only the low 32 bits of their count count.
    CVRMLFile& operator<<(const char* text);

    /// Writes bytes past the compression, which spoils a compressed file. Only the low 32 bits of `size` count.
    void Write(const void* data, std::uint64_t size);

    /// Has zlib compress with this `flush`, writes what comes of it and gives zlib's last result. Z_SYNC_FLUSH (2)
    /// brings all that was inserted into the file. Not for an object whose writing has failed.
    int DoDeflate(int flush);

    /// Ends the compression, writes the last eight bytes, ends the file there, and closes it. Always true.
    bool Close();

    /// Does what Close does, and throws CFileException for what Close ignores: zlib's failures (126 where there is
    /// none, 29 otherwise) and those on the way to the disk. The file is then open still, and cannot be mended. To be
    /// called where the file is to take the place of another: only after it that other may go.
    void CommitAndClose();

private:
    /// Gives zlib's last result: Z_STREAM_END if all is compressed, and for a plain file.
    UTILITY_LOCAL int WriteEnd();

    bool m_bCompressed;
    CTextInputOutputFile m_file;
    std::unique_ptr<CZEngine> m_engine;
    std::uint32_t m_nCRC;
};

#pragma once

// The base of every file object, with two modes. To read, a whole existing file is mapped into memory, and the readers
// work with plain pointers into it. To write, a file is opened without a mapping, and the data go out through
// WriteFile.
//
//     CMemoryMappedFile file;
//     if (file.Open(L"part.igs"))
//         Scan(static_cast<const char*>(file.GetBase()), file.GetFileSize());
//
// An object belongs to one thread at a time. The bytes of a view do not change, so any number of threads may read them
// while the object is open; every pointer into them dies when it closes.
//
// A copy of an object is an alias of the same open file: only one of the two may be closed while it is valid.
//
// The class has no virtual operations, though others derive from it: delete an object as what it was made.
//
// A file is named by wide text or by a path, whatever the locale. A text with a null character in it names none.
//
// What cannot be opened or written throws a CFileException (as a pointer, see framework/Exception.h) with the path.
// What can be opened but not mapped, which an empty file is too, gives false.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <string>

class UTILITY_API CMemoryMappedFile
{
public:
    /// Closed.
    CMemoryMappedFile();
    /// Open to read; test IsValid afterwards.
    explicit CMemoryMappedFile(const wchar_t* path);
    explicit CMemoryMappedFile(const std::wstring& path);
    explicit CMemoryMappedFile(const boost::filesystem::path& path);
    /// Open to write.
    CMemoryMappedFile(const wchar_t* path, DWORD size);
    CMemoryMappedFile(const std::wstring& path, DWORD size);
    CMemoryMappedFile(const boost::filesystem::path& path, DWORD size);
    /// An alias of the same open file: only one of the two may be closed while it is valid.
    CMemoryMappedFile(const CMemoryMappedFile& other);
    CMemoryMappedFile& operator=(const CMemoryMappedFile& other);
    /// Does what Close(0) does, if the object is open.
    ~CMemoryMappedFile();

    /// Maps an existing file. An object that is open already loses what it held: close it first. Throws
    /// CFileException if the file cannot be opened; false if it cannot be mapped. Closed in both cases.
    bool Open(const wchar_t* path);
    bool Open(const std::wstring& path);
    bool Open(const boost::filesystem::path& path);

    /// Opens a file to write, created if absent, its bytes kept until the close. A `size` other than 0 is made its
    /// length in bytes at once. The file position is at the start. Throws CFileException; otherwise true.
    bool Open(const wchar_t* path, DWORD size);
    bool Open(const std::wstring& path, DWORD size);
    bool Open(const boost::filesystem::path& path, DWORD size);

    /// Ends a file that was written after `finalSize` bytes, or where the file position is if that is 0; then closes.
    /// Only the closing of the file counts for the result. True if nothing is open.
    bool Close(std::int64_t finalSize);

    /// Ends a file that was written where the file position is, brings it to the disk and closes it. What Close ignores
    /// on that way throws CFileException here, and the object then stays open. To be called where a file is to take the
    /// place of another: only after it that other may go.
    void CommitAndClose();

    /// The first byte of the view; null when closed, and when writing.
    void* GetBase();
    const void* GetBase() const;

    /// The length of the view in bytes; 0 when closed, and when writing.
    std::uint64_t GetFileSize() const;

    /// Whether the object is open, to read or to write.
    bool IsValid() const;

    /// The file that was opened last, as it was named.
    const boost::filesystem::path& path() const;

    /// Whether a pointer is to a byte of the view. The end is not.
    bool IsValidPtr(const void* pointer) const;

    /// What the system knows of the file; false when closed.
    bool GetFileInformation(_BY_HANDLE_FILE_INFORMATION* information) const;

    /// Writes at the file position. Only the low 32 bits of `size` count, and a write that the system cuts short is
    /// not noticed. Throws CFileException.
    bool WriteFile(const void* data, std::uint64_t size) const;

    /// The low half of the file position; 0xFFFFFFFF on failure.
    DWORD GetFilePointer() const;

    /// Moves the file position by `distance` bytes from the start (FILE_BEGIN), the position (FILE_CURRENT) or the end
    /// (FILE_END), and gives the low half of the new one; 0xFFFFFFFF on failure.
    DWORD SetFilePointer(std::int32_t distance, DWORD method);

protected:
    /// These close from the inside out, do not flush, and give true where there is nothing to do.
    bool CloseFileView();
    bool CloseFileMapping();
    bool CloseFile();

    /// The handle, which stays the object's; INVALID_HANDLE_VALUE when closed.
    void* GetFile() const;

    /// Throws CFileException, as a pointer, for an error number of Windows.
    [[noreturn]] void ThrowFileException(DWORD error, const wchar_t* path) const;

private:
    /// Throws for the call that has just failed.
    [[noreturn]] UTILITY_LOCAL void ThrowFailureOn(const boost::filesystem::path& path) const;
    UTILITY_LOCAL bool MapWholeFile();

    HANDLE m_hFile;
    HANDLE m_hMapping;
    void* m_pBase;
    std::uint64_t m_nSize;
    bool m_bValid;
    bool m_bWritable;
    boost::filesystem::path m_path;
};

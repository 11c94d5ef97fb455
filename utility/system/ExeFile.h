#pragma once

// What kind of executable a file is, by its headers: an old DOS program, a portable executable (PE), or what was
// between them.
//
//     const CPEExeFile module(L"app.exe");
//     if (module.IsValid())
//         Show(module.GetTimeDateStamp()); // when it was built
//
// The file is mapped and its bytes may be anything: nothing outside it is read. A signature that is not all there is
// none, and a field of a header that the file cuts off is 0.
//
// What cannot be opened throws a CFileException, like every mapped file (see files/MemoryMappedFile.h); what cannot be
// mapped, which an empty file is too, is no executable. An object belongs to one thread at a time. A copy is an alias
// of the same open file, like every copy of a file object.

#include "utility/files/MemoryMappedFile.h"

#include <cstdint>

class UTILITY_API CExeFile : public CMemoryMappedFile
{
public:
    /// Whether it is an executable at all.
    enum errExeFile : std::int32_t
    {
        errExeFileNone = 0,    ///< the file has a DOS header
        errExeFileInvalid = 2, ///< it is shorter than one, or does not begin with its signature
    };

    /// What kind of executable it is.
    enum ExeType : std::int32_t
    {
        exeTypeUnknown = 0, ///< none of those below
        exeTypeDos = 1,     ///< a DOS header alone
        exeTypeNE = 2,      ///< 16-bit Windows or OS/2
        exeTypeLE = 3,      ///< OS/2, device drivers of Windows
        exeTypeXE = 4,      ///< the signature is "XE", deliberately, and not that of any common format
        exeTypePE = 5,      ///< portable executable
    };

    /// Opens a file to read, and looks at its headers.
    explicit CExeFile(const wchar_t* path);
    explicit CExeFile(const std::wstring& path);
    explicit CExeFile(const boost::filesystem::path& path);
    /// An alias of the same open file.
    CExeFile(const CExeFile& other);
    CExeFile& operator=(const CExeFile& other);
    ~CExeFile();

    /// What was found when the file was opened.
    errExeFile GetErrorType() const;

    /// Where the DOS header says that the other header begins; all ones if it says nothing, or a place behind the end.
    /// What lies in front of the file, which is a negative place, is deliberately given as it stands.
    DWORD GetSecondaryHeaderOffset() const;

    /// What was found when the file was opened.
    ExeType GetExeType() const;

private:
    UTILITY_LOCAL void Classify();

    errExeFile m_eError;
    DWORD m_nSecondaryHeaderOffset;
    ExeType m_eExeType;
};

/// The file header of a portable executable.
class UTILITY_API CPEExeFile : public CExeFile
{
public:
    /// Opens a file to read, and looks for its header.
    explicit CPEExeFile(const wchar_t* path);
    explicit CPEExeFile(const std::wstring& path);
    explicit CPEExeFile(const boost::filesystem::path& path);
    /// An alias of the same open file.
    CPEExeFile(const CPEExeFile& other);
    CPEExeFile& operator=(const CPEExeFile& other);
    ~CPEExeFile();

    /// A field of the file header: 0 if there is none, if the file ends in the field or ahead of it, and when the
    /// object is closed.
    std::uint16_t GetMachine() const;
    std::uint16_t GetNumberOfSections() const;
    DWORD GetTimeDateStamp() const;   ///< seconds since 1970, unless the linker was told to put something else there
    DWORD GetCharacteristics() const; ///< of 16 bits

    /// Whether the file was a portable executable when it was opened.
    bool IsValid() const;

private:
    UTILITY_LOCAL const void* FindFileHeader() const;
    template <class Field>
    UTILITY_LOCAL Field FieldAt(std::size_t offset) const;

    const void* m_pFileHeader; ///< in the mapping
};

#pragma once

// The version record of a module file: a numeric block, and texts by name in the language of its first translation.
//
//     CVersion version;
//     if (version.Initialise(L"app.exe") && version.GetFileVersionMS() == 0x00010002) // 1.2
//         Show(version.GetProductName());
//
// An object belongs to one thread at a time: the getters of texts use a buffer of the object. Nothing
// throws but Initialise, for lack of memory.
//
// On Linux the record of a Windows module is read from its resources, and that of a Linux program or library from the
// section where utility_version_record() of the CMake package puts it.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

class UTILITY_API CVersion
{
public:
    /// Without a record, until Initialise.
    CVersion();
    CVersion(const CVersion&) = delete;
    /// Copies each field, the record's owner included: both objects then hold one record, and each frees it. Only one
    /// of the two may be used from then on, and only one be destroyed.
    CVersion& operator=(const CVersion&);
    /// Gives back the record, and with it all texts.
    ~CVersion();

    /// Reads the record of a file, in place of what the object held; null stands for the current module, or the program
    /// where there is none. False for a file that is missing or has no record: nothing but Initialise may be called
    /// then.
    bool Initialise(const wchar_t* fileName);

    /// The first translation: the language in the low word, the code page in the high one. 0 if there is none.
    DWORD GetTranslation();

    /// A text of the first translation, by its name in the record; null if there is none. It lives until the next
    /// Initialise or the object's end.
    const wchar_t* GetCompanyName();
    const wchar_t* GetProductName();
    const wchar_t* GetProductVersion();
    const wchar_t* GetLegalCopyright();
    const wchar_t* GetComments();
    const wchar_t* GetFileDescription();
    const wchar_t* GetFileVersion();
    const wchar_t* GetInternalName();
    const wchar_t* GetLegalTrademarks();
    const wchar_t* GetOriginalFileName();
    const wchar_t* GetPrivateBuild();
    const wchar_t* GetSpecialBuild();

    /// A field of the numeric block, only after an Initialise that returned true. Version 1.2.3.4 has 0x00010002 in its
    /// most significant and 0x00030004 in its least significant half.
    DWORD GetFileVersionMS() const;
    DWORD GetFileVersionLS() const;
    DWORD GetProductVersionMS() const;
    DWORD GetProductVersionLS() const;
    DWORD GetFileFlagsMask() const;
    DWORD GetFileFlags() const;
    DWORD GetFileOS() const;
    DWORD GetFileType() const;
    DWORD GetFileSubtype() const;
    DWORD GetFileDateMS() const;
    DWORD GetFileDateLS() const;

private:
    UTILITY_LOCAL const wchar_t* GetValue(const wchar_t* name);
    UTILITY_LOCAL bool GetFixedFileInfo(VS_FIXEDFILEINFO** info) const;
    UTILITY_LOCAL void FreeBlock();

    UTILITY_LOCAL static const wchar_t* const m_pszRootBlock;
    UTILITY_LOCAL static const wchar_t* const m_pszTranslation;
    UTILITY_LOCAL static const wchar_t* const m_pszStringFileInfoFmt;
    UTILITY_LOCAL static const wchar_t* const m_pszCompanyName;
    UTILITY_LOCAL static const wchar_t* const m_pszProductName;
    UTILITY_LOCAL static const wchar_t* const m_pszProductVersion;
    UTILITY_LOCAL static const wchar_t* const m_pszLegalCopyright;
    UTILITY_LOCAL static const wchar_t* const m_pszComments;
    UTILITY_LOCAL static const wchar_t* const m_pszFileDescription;
    UTILITY_LOCAL static const wchar_t* const m_pszFileVersion;
    UTILITY_LOCAL static const wchar_t* const m_pszInternalName;
    UTILITY_LOCAL static const wchar_t* const m_pszLegalTrademarks;
    UTILITY_LOCAL static const wchar_t* const m_pszOriginalFileName;
    UTILITY_LOCAL static const wchar_t* const m_pszPrivateBuild;
    UTILITY_LOCAL static const wchar_t* const m_pszSpecialBuild;

    int m_nPrefixLength;
    unsigned int m_nTranslationLength;
    wchar_t m_szPrefix[512]; ///< the path of the translation's texts; a name is behind it during a query
    void* m_pData;
    HANDLE m_hData;
    VS_FIXEDFILEINFO* m_pFixedInfo;
    bool m_bValid;
};

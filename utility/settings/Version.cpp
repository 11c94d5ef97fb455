#include "utility/settings/Version.h"

#include "utility/framework/internal/ResourceModules.h"
#include "utility/platform/Modules.h"
#include "utility/platform/MovableMemory.h"
#include "utility/platform/VersionInfo.h"

#include <cstring>
#include <cwchar>
#include <iterator>
#include <string>

using utility::platform::MovableMemory;
using utility::platform::VersionInfo;

const wchar_t* const CVersion::m_pszRootBlock = L"\\";
const wchar_t* const CVersion::m_pszTranslation = L"\\VarFileInfo\\Translation";
const wchar_t* const CVersion::m_pszStringFileInfoFmt = L"\\StringFileInfo\\%04x%04x\\";
const wchar_t* const CVersion::m_pszCompanyName = L"CompanyName";
const wchar_t* const CVersion::m_pszProductName = L"ProductName";
const wchar_t* const CVersion::m_pszProductVersion = L"ProductVersion";
const wchar_t* const CVersion::m_pszLegalCopyright = L"LegalCopyright";
const wchar_t* const CVersion::m_pszComments = L"Comments";
const wchar_t* const CVersion::m_pszFileDescription = L"FileDescription";
const wchar_t* const CVersion::m_pszFileVersion = L"FileVersion";
const wchar_t* const CVersion::m_pszInternalName = L"InternalName";
const wchar_t* const CVersion::m_pszLegalTrademarks = L"LegalTrademarks";
const wchar_t* const CVersion::m_pszOriginalFileName = L"OriginalFilename";
const wchar_t* const CVersion::m_pszPrivateBuild = L"PrivateBuild";
const wchar_t* const CVersion::m_pszSpecialBuild = L"SpecialBuild";

CVersion::CVersion()
    : m_nPrefixLength(0),
      m_nTranslationLength(0),
      m_szPrefix{},
      m_pData(nullptr),
      m_hData(nullptr),
      m_pFixedInfo(nullptr),
      m_bValid(false)
{
}

// Deliberately shares the record, so that both objects own it: that is for the caller to mind.
CVersion& CVersion::operator=(const CVersion&) = default;

CVersion::~CVersion()
{
    if (m_hData != nullptr)
        FreeBlock();
}

bool CVersion::Initialise(const wchar_t* fileName)
{
    // Deliberately neither clears the pointer into the block that is freed here, nor m_bValid: where the object was
    // valid and the new block cannot be locked or read, it stays held until the next Initialise or the object's end.
    // Callers go by the result.
    if (m_hData != nullptr)
        FreeBlock();
    std::wstring currentModule;
    if (fileName == nullptr)
    {
        currentModule = utility::platform::Modules().FileName(utility::framework::CurrentModuleState().currentInstance);
        if (currentModule.empty())
            return false;
        fileName = currentModule.c_str();
    }
    const DWORD size = VersionInfo().GetFileVersionInfoSizeW(fileName);
    if (size == 0)
        return false;
    m_hData = MovableMemory().GlobalAlloc(size);
    if (m_hData == nullptr)
        return false;
    m_pData = MovableMemory().GlobalLock(m_hData);
    bool isRead = false;
    if (m_pData != nullptr && VersionInfo().GetFileVersionInfoW(fileName, size, m_pData))
    {
        const DWORD translation = GetTranslation();
        m_nPrefixLength = std::swprintf(m_szPrefix, std::size(m_szPrefix), m_pszStringFileInfoFmt,
                                        static_cast<unsigned int>(translation & 0xFFFF),
                                        static_cast<unsigned int>(translation >> 16));
        isRead = m_bValid = GetFixedFileInfo(&m_pFixedInfo);
    }
    if (!m_bValid)
    {
        FreeBlock();
        m_pData = nullptr;
    }
    return isRead;
}

DWORD CVersion::GetTranslation()
{
    void* found = nullptr;
    DWORD translation = 0;
    if (VersionInfo().VerQueryValueW(m_pData, m_pszTranslation, found, m_nTranslationLength))
        std::memcpy(&translation, found, sizeof(translation));
    return translation;
}

const wchar_t* CVersion::GetCompanyName() { return GetValue(m_pszCompanyName); }
const wchar_t* CVersion::GetProductName() { return GetValue(m_pszProductName); }
const wchar_t* CVersion::GetProductVersion() { return GetValue(m_pszProductVersion); }
const wchar_t* CVersion::GetLegalCopyright() { return GetValue(m_pszLegalCopyright); }
const wchar_t* CVersion::GetComments() { return GetValue(m_pszComments); }
const wchar_t* CVersion::GetFileDescription() { return GetValue(m_pszFileDescription); }
const wchar_t* CVersion::GetFileVersion() { return GetValue(m_pszFileVersion); }
const wchar_t* CVersion::GetInternalName() { return GetValue(m_pszInternalName); }
const wchar_t* CVersion::GetLegalTrademarks() { return GetValue(m_pszLegalTrademarks); }
const wchar_t* CVersion::GetOriginalFileName() { return GetValue(m_pszOriginalFileName); }
const wchar_t* CVersion::GetPrivateBuild() { return GetValue(m_pszPrivateBuild); }
const wchar_t* CVersion::GetSpecialBuild() { return GetValue(m_pszSpecialBuild); }

DWORD CVersion::GetFileVersionMS() const { return m_pFixedInfo->dwFileVersionMS; }
DWORD CVersion::GetFileVersionLS() const { return m_pFixedInfo->dwFileVersionLS; }
DWORD CVersion::GetProductVersionMS() const { return m_pFixedInfo->dwProductVersionMS; }
DWORD CVersion::GetProductVersionLS() const { return m_pFixedInfo->dwProductVersionLS; }
DWORD CVersion::GetFileFlagsMask() const { return m_pFixedInfo->dwFileFlagsMask; }
DWORD CVersion::GetFileFlags() const { return m_pFixedInfo->dwFileFlags; }
DWORD CVersion::GetFileOS() const { return m_pFixedInfo->dwFileOS; }
DWORD CVersion::GetFileType() const { return m_pFixedInfo->dwFileType; }
DWORD CVersion::GetFileSubtype() const { return m_pFixedInfo->dwFileSubtype; }
DWORD CVersion::GetFileDateMS() const { return m_pFixedInfo->dwFileDateMS; }
DWORD CVersion::GetFileDateLS() const { return m_pFixedInfo->dwFileDateLS; }

const wchar_t* CVersion::GetValue(const wchar_t* name)
{
    if (m_pData == nullptr || name == nullptr)
        return nullptr;
    void* value = nullptr;
    UINT length = 0;
    std::wcscat(m_szPrefix, name);
    const bool isFound = VersionInfo().VerQueryValueW(m_pData, m_szPrefix, value, length);
    m_szPrefix[m_nPrefixLength] = L'\0';
    return isFound ? static_cast<const wchar_t*>(value) : nullptr;
}

bool CVersion::GetFixedFileInfo(VS_FIXEDFILEINFO** info) const
{
    void* found = nullptr;
    UINT length = 0;
    const bool isFound = VersionInfo().VerQueryValueW(m_pData, m_pszRootBlock, found, length);
    *info = static_cast<VS_FIXEDFILEINFO*>(found);
    return isFound;
}

void CVersion::FreeBlock()
{
    MovableMemory().GlobalUnlock(m_hData);
    MovableMemory().GlobalFree(m_hData);
    m_hData = nullptr;
}

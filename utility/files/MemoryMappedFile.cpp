#include "utility/files/MemoryMappedFile.h"

#include "utility/framework/FileException.h"
#include "utility/platform/Error.h"
#include "utility/platform/Files.h"
#include "utility/platform/Paths.h"

#include <utility>

using utility::platform::Files;

CMemoryMappedFile::CMemoryMappedFile()
    : m_hFile(INVALID_HANDLE_VALUE),
      m_hMapping(INVALID_HANDLE_VALUE),
      m_pBase(nullptr),
      m_nSize(0),
      m_bValid(false),
      m_bWritable(false)
{
}

CMemoryMappedFile::CMemoryMappedFile(const wchar_t* path) : CMemoryMappedFile() { Open(path); }

CMemoryMappedFile::CMemoryMappedFile(const std::wstring& path) : CMemoryMappedFile() { Open(path); }

CMemoryMappedFile::CMemoryMappedFile(const boost::filesystem::path& path) : CMemoryMappedFile() { Open(path); }

CMemoryMappedFile::CMemoryMappedFile(const wchar_t* path, DWORD size) : CMemoryMappedFile() { Open(path, size); }

CMemoryMappedFile::CMemoryMappedFile(const std::wstring& path, DWORD size) : CMemoryMappedFile() { Open(path, size); }

CMemoryMappedFile::CMemoryMappedFile(const boost::filesystem::path& path, DWORD size) : CMemoryMappedFile()
{
    Open(path, size);
}

// Copies deliberately alias the handles: they are neither duplicated nor counted, and assignment closes nothing.
CMemoryMappedFile::CMemoryMappedFile(const CMemoryMappedFile& other) = default;
CMemoryMappedFile& CMemoryMappedFile::operator=(const CMemoryMappedFile& other) = default;

CMemoryMappedFile::~CMemoryMappedFile() { Close(0); }

bool CMemoryMappedFile::Open(const wchar_t* path) { return Open(utility::platform::PathFromWide(path)); }

bool CMemoryMappedFile::Open(const std::wstring& path) { return Open(utility::platform::PathFromWide(path)); }

bool CMemoryMappedFile::Open(const boost::filesystem::path& path)
{
    m_hFile = Files().OpenForReading(path);
    if (m_hFile == INVALID_HANDLE_VALUE)
        ThrowFailureOn(path);
    if (MapWholeFile())
    {
        m_path = path;
        return true;
    }
    const DWORD reason = utility::platform::LastError();
    CloseFile();
    utility::platform::SetLastError(reason);
    return false;
}

bool CMemoryMappedFile::Open(const wchar_t* path, DWORD size)
{
    return Open(utility::platform::PathFromWide(path), size);
}

bool CMemoryMappedFile::Open(const std::wstring& path, DWORD size)
{
    return Open(utility::platform::PathFromWide(path), size);
}

bool CMemoryMappedFile::Open(const boost::filesystem::path& path, DWORD size)
{
    m_hFile = Files().OpenForWriting(path);
    if (m_hFile == INVALID_HANDLE_VALUE)
        ThrowFailureOn(path);
    if (size != 0)
    {
        Files().Seek(m_hFile, static_cast<std::int32_t>(size), nullptr, FILE_BEGIN);
        Files().TruncateHere(m_hFile);
        Files().Seek(m_hFile, 0, nullptr, FILE_BEGIN);
    }
    m_bValid = true;
    m_bWritable = true;
    m_path = path;
    return true;
}

bool CMemoryMappedFile::Close(std::int64_t finalSize)
{
    if (!m_bValid)
        return true;
    if (m_bWritable)
    {
        // The flush must see all data before the end of the file is moved.
        if (m_hMapping != INVALID_HANDLE_VALUE)
            Files().FlushView(m_pBase);
        if (finalSize != 0)
        {
            auto high = static_cast<std::int32_t>(finalSize >> 32);
            Files().Seek(m_hFile, static_cast<std::int32_t>(finalSize), &high, FILE_BEGIN);
        }
        Files().TruncateHere(m_hFile);
        Files().FlushToDisk(m_hFile);
    }
    // An object that was open already when it failed to open anew lost its file: the rest deliberately stays as it is.
    if (m_hFile == INVALID_HANDLE_VALUE)
        return true;
    return CloseFile();
}

void CMemoryMappedFile::CommitAndClose()
{
    if (!Files().TruncateHere(m_hFile) || !Files().FlushToDisk(m_hFile) || !CloseFile())
        ThrowFailureOn(m_path);
}

void* CMemoryMappedFile::GetBase() { return m_pBase; }

const void* CMemoryMappedFile::GetBase() const { return m_pBase; }

std::uint64_t CMemoryMappedFile::GetFileSize() const { return m_nSize; }

bool CMemoryMappedFile::IsValid() const { return m_bValid; }

const boost::filesystem::path& CMemoryMappedFile::path() const { return m_path; }

bool CMemoryMappedFile::IsValidPtr(const void* pointer) const
{
    const auto address = reinterpret_cast<std::uintptr_t>(pointer);
    const auto base = reinterpret_cast<std::uintptr_t>(m_pBase);
    return base <= address && address < base + m_nSize;
}

bool CMemoryMappedFile::GetFileInformation(_BY_HANDLE_FILE_INFORMATION* information) const
{
    return m_bValid && Files().Information(m_hFile, *information);
}

bool CMemoryMappedFile::WriteFile(const void* data, std::uint64_t size) const
{
    DWORD written = 0;
    if (Files().Write(m_hFile, data, static_cast<DWORD>(size), written))
        return true;
    ThrowFailureOn(m_path);
}

DWORD CMemoryMappedFile::GetFilePointer() const { return Files().Seek(m_hFile, 0, nullptr, FILE_CURRENT); }

DWORD CMemoryMappedFile::SetFilePointer(std::int32_t distance, DWORD method)
{
    return Files().Seek(m_hFile, distance, nullptr, method);
}

bool CMemoryMappedFile::CloseFileView()
{
    void* const base = std::exchange(m_pBase, nullptr);
    return base == nullptr || Files().UnmapView(base);
}

bool CMemoryMappedFile::CloseFileMapping()
{
    CloseFileView();
    const HANDLE mapping = std::exchange(m_hMapping, INVALID_HANDLE_VALUE);
    return mapping == INVALID_HANDLE_VALUE || Files().Close(mapping);
}

bool CMemoryMappedFile::CloseFile()
{
    CloseFileMapping();
    m_bValid = false;
    m_bWritable = false;
    m_nSize = 0;
    const HANDLE file = std::exchange(m_hFile, INVALID_HANDLE_VALUE);
    return file == INVALID_HANDLE_VALUE || Files().Close(file);
}

void* CMemoryMappedFile::GetFile() const { return m_hFile; }

void CMemoryMappedFile::ThrowFileException(DWORD error, const wchar_t* path) const
{
    CFileException::ThrowOsError(static_cast<std::int32_t>(error), path);
}

void CMemoryMappedFile::ThrowFailureOn(const boost::filesystem::path& path) const
{
    const DWORD reason = utility::platform::LastError();
    ThrowFileException(reason, utility::platform::WideFromPath(path).c_str());
}

bool CMemoryMappedFile::MapWholeFile()
{
    if (!Files().Length(m_hFile, m_nSize))
        return false;
    const HANDLE mapping = Files().MapReadOnly(m_hFile);
    m_hMapping = mapping == nullptr ? INVALID_HANDLE_VALUE : mapping;
    if (mapping == nullptr)
        return false;
    m_pBase = Files().ViewAll(m_hMapping, m_nSize);
    m_bValid = m_pBase != nullptr;
    return m_bValid;
}

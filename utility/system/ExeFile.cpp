#include "utility/system/ExeFile.h"

#include "utility/platform/formats/Bytes.h"

using utility::platform::formats::Bytes;
using utility::platform::formats::RecordAt;

namespace
{

constexpr std::uint16_t dosSignature = 0x5A4D;
constexpr std::uint16_t leSignature = 0x454C;
constexpr std::uint16_t neSignature = 0x454E;
constexpr std::uint16_t xeSignature = 0x4558;
constexpr std::uint32_t peSignature = 0x00004550;

// The DOS header. One whose relocations begin inside it leaves no room for the offset of another header.
constexpr std::size_t dosHeaderSize = 64;
constexpr std::size_t relocationsAt = 24;
constexpr std::size_t secondaryHeaderAt = 60;

// The file header of a portable executable, behind the signature.
constexpr std::size_t machineAt = 0;
constexpr std::size_t sectionsAt = 2;
constexpr std::size_t timeAt = 4;
constexpr std::size_t characteristicsAt = 18;

constexpr DWORD noOffset = 0xFFFFFFFF;

/// The type of the header at an offset. An offset that was negative is beyond any file.
CExeFile::ExeType TypeAt(Bytes file, std::uint64_t offset)
{
    switch (RecordAt<std::uint16_t>(file, offset))
    {
    case leSignature:
        return CExeFile::exeTypeLE;
    case neSignature:
        return CExeFile::exeTypeNE;
    case xeSignature:
        return CExeFile::exeTypeXE;
    default:
        return RecordAt<std::uint32_t>(file, offset) == peSignature ? CExeFile::exeTypePE : CExeFile::exeTypeUnknown;
    }
}

}

CExeFile::CExeFile(const wchar_t* path) : CMemoryMappedFile(path) { Classify(); }

CExeFile::CExeFile(const std::wstring& path) : CMemoryMappedFile(path) { Classify(); }

CExeFile::CExeFile(const boost::filesystem::path& path) : CMemoryMappedFile(path) { Classify(); }

CExeFile::CExeFile(const CExeFile& other) = default;
CExeFile& CExeFile::operator=(const CExeFile& other) = default;
CExeFile::~CExeFile() = default;

CExeFile::errExeFile CExeFile::GetErrorType() const { return m_eError; }

DWORD CExeFile::GetSecondaryHeaderOffset() const { return m_nSecondaryHeaderOffset; }

CExeFile::ExeType CExeFile::GetExeType() const { return m_eExeType; }

void CExeFile::Classify()
{
    m_eError = errExeFileInvalid;
    m_nSecondaryHeaderOffset = noOffset;
    m_eExeType = exeTypeUnknown;
    const Bytes file(static_cast<const std::byte*>(GetBase()), GetFileSize());
    if (file.size() < dosHeaderSize || RecordAt<std::uint16_t>(file, 0) != dosSignature)
        return;
    m_eError = errExeFileNone;
    if (RecordAt<std::uint16_t>(file, relocationsAt) < dosHeaderSize)
    {
        m_eExeType = exeTypeDos;
        return;
    }
    // Compared as signed numbers, deliberately: a negative offset is kept.
    const auto offset = RecordAt<std::int32_t>(file, secondaryHeaderAt);
    if (offset > static_cast<std::int64_t>(file.size()))
        return;
    m_nSecondaryHeaderOffset = static_cast<DWORD>(offset);
    m_eExeType = TypeAt(file, static_cast<std::uint64_t>(offset));
}

CPEExeFile::CPEExeFile(const wchar_t* path) : CExeFile(path), m_pFileHeader(FindFileHeader()) {}

CPEExeFile::CPEExeFile(const std::wstring& path) : CExeFile(path), m_pFileHeader(FindFileHeader()) {}

CPEExeFile::CPEExeFile(const boost::filesystem::path& path) : CExeFile(path), m_pFileHeader(FindFileHeader()) {}

CPEExeFile::CPEExeFile(const CPEExeFile& other) = default;
CPEExeFile& CPEExeFile::operator=(const CPEExeFile& other) = default;
CPEExeFile::~CPEExeFile() = default;

std::uint16_t CPEExeFile::GetMachine() const { return FieldAt<std::uint16_t>(machineAt); }

std::uint16_t CPEExeFile::GetNumberOfSections() const { return FieldAt<std::uint16_t>(sectionsAt); }

DWORD CPEExeFile::GetTimeDateStamp() const { return FieldAt<std::uint32_t>(timeAt); }

DWORD CPEExeFile::GetCharacteristics() const { return FieldAt<std::uint16_t>(characteristicsAt); }

bool CPEExeFile::IsValid() const { return m_pFileHeader != nullptr; }

const void* CPEExeFile::FindFileHeader() const
{
    if (GetExeType() != exeTypePE)
        return nullptr;
    return static_cast<const std::byte*>(GetBase()) + GetSecondaryHeaderOffset() + sizeof(peSignature);
}

template <class Field>
Field CPEExeFile::FieldAt(std::size_t offset) const
{
    const Bytes header(static_cast<const std::byte*>(m_pFileHeader), offset + sizeof(Field));
    return IsValid() && IsValidPtr(&header.back()) ? RecordAt<Field>(header, offset) : Field{0};
}

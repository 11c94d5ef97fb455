#include "utility/codec/VRMLFile.h"

#include "utility/framework/FileException.h"
#include "utility/platform/ErrorCodes.h"
#include "utility/platform/Paths.h"
#include "utility/platform/Types.h"
#include "utility/platform/Zlib.h"

#include <cstring>
#define ZLIB_CONST // it does not change what it compresses
#include <zlib.h>

CVRMLFile::CVRMLFile()
    : m_bCompressed(false),
      m_engine(std::make_unique<CZEngine>()),
      m_nCRC(utility::platform::Zlib().Checksum(0, nullptr, 0))
{
}

CVRMLFile::~CVRMLFile()
{
    // For a file that was not closed. A stream that has ended already refuses it.
    if (m_bCompressed)
        m_engine->DeflateEnd();
}

bool CVRMLFile::Open(const wchar_t* file, bool compress, int level)
{
    return Open(utility::platform::PathFromWide(file), compress, level);
}

bool CVRMLFile::Open(const std::wstring& file, bool compress, int level)
{
    return Open(utility::platform::PathFromWide(file), compress, level);
}

bool CVRMLFile::Open(const boost::filesystem::path& file, bool compress, int level)
{
    m_bCompressed = compress;
    const bool isOpen = m_file.Open(file, 0);
    if (!compress)
        return isOpen;
    z_stream& stream = *m_engine->GetZStream();
    stream.zalloc = nullptr;
    stream.zfree = nullptr;
    stream.opaque = nullptr;
    stream.next_out = nullptr;
    stream.avail_out = 0;
    constexpr int windowBitsWithoutHeader = -15;
    constexpr int memoryLevel = 8;
    m_engine->DeflateInit2(level, Z_DEFLATED, windowBitsWithoutHeader, memoryLevel, Z_DEFAULT_STRATEGY);
    // Deliberately the same whatever the level and the system: no flags, no time, and NTFS as the file system.
    constexpr unsigned char header[] = {0x1F, 0x8B, Z_DEFLATED, 0, 0, 0, 0, 0, 0, 0x0B};
    m_file.WriteFile(header, sizeof(header));
    return isOpen;
}

CVRMLFile& CVRMLFile::operator<<(const char* text)
{
    const std::size_t length = std::strlen(text);
    if (m_bCompressed)
    {
        z_stream& stream = *m_engine->GetZStream();
        stream.next_in = reinterpret_cast<const Bytef*>(text);
        stream.avail_in = static_cast<uInt>(length);
        DoDeflate(Z_NO_FLUSH);
        stream.avail_in = 0; // also where zlib has failed: the text is not ours any more
    }
    else
        Write(text, length);
    return *this;
}

void CVRMLFile::Write(const void* data, std::uint64_t size) { m_file.WriteFile(data, size); }

int CVRMLFile::DoDeflate(int flush)
{
    z_stream& stream = *m_engine->GetZStream();
    if (stream.avail_in != 0)
        m_nCRC = utility::platform::Zlib().Checksum(m_nCRC, stream.next_in, stream.avail_in);
    int result = Z_OK;
    do
    {
        unsigned char compressed[1024];
        stream.next_out = compressed;
        stream.avail_out = sizeof(compressed);
        result = m_engine->Deflate(flush);
        // Also what is nothing: that tells whether the file is open.
        m_file.WriteFile(compressed, sizeof(compressed) - stream.avail_out);
    } while (result == Z_OK && stream.avail_out == 0);
    return result;
}

bool CVRMLFile::Close()
{
    WriteEnd();
    m_file.Close(0);
    return true;
}

void CVRMLFile::CommitAndClose()
{
    const int result = WriteEnd();
    if (result != Z_STREAM_END)
    {
        const DWORD reason = result == Z_VERSION_ERROR ? ERROR_MOD_NOT_FOUND : ERROR_WRITE_FAULT;
        CFileException::ThrowOsError(static_cast<std::int32_t>(reason),
                                     utility::platform::WideFromPath(m_file.path()).c_str());
    }
    m_file.CommitAndClose();
}

int CVRMLFile::WriteEnd()
{
    z_stream& stream = *m_engine->GetZStream();
    int result = Z_STREAM_END;
    if (m_bCompressed)
    {
        stream.next_in = nullptr;
        stream.avail_in = 0;
        result = DoDeflate(Z_FINISH);
        m_engine->DeflateEnd();
    }
    // Deliberately behind a plain text too, where both are 0.
    const DWORD end[] = {m_nCRC, static_cast<DWORD>(stream.total_in)};
    m_file.WriteFile(&end[0], sizeof(end[0]));
    m_file.WriteFile(&end[1], sizeof(end[1]));
    return result;
}

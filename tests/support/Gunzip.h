#pragma once

#include <boost/dll/shared_library.hpp>

#include <optional>
#include <string>
#include <zlib.h>

namespace support
{

/// The text of a gzip file as zlib itself reads it, without the library; none unless the file is one member, whole and
/// with nothing behind it.
inline std::optional<std::string> Gunzip(const std::string& file)
{
#ifdef _WIN32
    static const boost::dll::shared_library zlib("zlib1.dll", boost::dll::load_mode::search_system_folders);
#else
    static const boost::dll::shared_library zlib("libz.so.1", boost::dll::load_mode::search_system_folders);
#endif
    std::string bytes = file;
    z_stream stream{};
    stream.next_in = reinterpret_cast<Bytef*>(bytes.data());
    stream.avail_in = static_cast<uInt>(bytes.size());
    constexpr int gzipAlone = 15 + 16;
    zlib.get<decltype(::inflateInit2_)>("inflateInit2_")(&stream, gzipAlone, ZLIB_VERSION, sizeof(stream));
    std::string text;
    int result = Z_OK;
    while (result == Z_OK)
    {
        char part[4096];
        stream.next_out = reinterpret_cast<Bytef*>(part);
        stream.avail_out = sizeof(part);
        result = zlib.get<decltype(::inflate)>("inflate")(&stream, Z_NO_FLUSH);
        text.append(part, sizeof(part) - stream.avail_out);
    }
    zlib.get<decltype(::inflateEnd)>("inflateEnd")(&stream);
    if (result != Z_STREAM_END || stream.avail_in != 0)
        return std::nullopt;
    return text;
}

}

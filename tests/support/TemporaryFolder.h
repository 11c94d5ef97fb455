#pragma once

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace support
{

/// A folder of its own for each test, gone with it.
class TemporaryFolder
{
public:
    TemporaryFolder()
        : m_path(boost::filesystem::temp_directory_path() / boost::filesystem::unique_path("utility-%%%%%%%%%%%%"))
    {
        boost::filesystem::create_directory(m_path);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder()
    {
        boost::system::error_code ignored;
        boost::filesystem::remove_all(m_path, ignored);
    }

    const boost::filesystem::path& Path() const { return m_path; }
    boost::filesystem::path operator/(const char* name) const { return m_path / name; }

    /// Makes a file with these bytes and gives its path.
    boost::filesystem::path File(const char* name, const std::string& bytes) const
    {
        std::ofstream(PlainName(m_path / name), std::ios::binary) << bytes;
        return m_path / name;
    }

    /// Writes into a file, or far behind its end: what is between is a hole where the file system knows holes.
    static void WriteAt(const boost::filesystem::path& path, std::uint64_t position, const std::string& bytes)
    {
        std::fstream stream(PlainName(path), std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(static_cast<std::streamoff>(position)) << bytes;
    }

    static std::string BytesOf(const boost::filesystem::path& path)
    {
        std::ifstream stream(PlainName(path), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// Also from another file system, which that of Boost refuses on newer kernels.
    static void Copy(const boost::filesystem::path& from, const boost::filesystem::path& to)
    {
        std::filesystem::copy_file(from.native(), to.native());
    }

private:
    static std::string PlainName(const boost::filesystem::path& path) { return path.string(); }

    boost::filesystem::path m_path;
};

}

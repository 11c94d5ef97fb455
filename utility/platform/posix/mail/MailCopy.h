#pragma once

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <string>

namespace utility::platform::posix
{

/// A copy of an attachment for a program that reads it later, in a folder of its own among the temporary files, which
/// only the user may enter. It goes with this object unless it is kept.
class MailCopy
{
public:
    MailCopy() = default;
    MailCopy(const MailCopy&) = delete;
    MailCopy& operator=(const MailCopy&) = delete;
    ~MailCopy();

    /// Copies a regular file under this name, in which a slash becomes an underscore; an empty name is the file's own.
    /// Gives how a mail ends by that: mailSucceeded, or why there is no copy.
    std::uint32_t Make(const boost::filesystem::path& file, std::string name);

    const boost::filesystem::path& Path() const { return m_path; }

    /// Leaves the copy to whoever has taken it.
    void Keep() { m_isKept = true; }

    /// Removes what was kept by this user, in this program or another one, more than a week ago.
    static void RemoveOld();

private:
    boost::filesystem::path m_folder;
    boost::filesystem::path m_path;
    bool m_isKept = false;
};

}

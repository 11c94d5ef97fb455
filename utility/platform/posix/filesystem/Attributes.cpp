#include "utility/platform/posix/filesystem/Attributes.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <sys/types.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <vector>

namespace utility::platform::posix
{

namespace
{

constexpr const char* accessList = "system.posix_acl_access";

/// The bytes of a call that fills a buffer and tells the size needed when it is given none; nothing on failure.
template <class Call>
std::optional<std::string> Filled(Call&& call)
{
    ssize_t size = call(nullptr, 0);
    std::string bytes(static_cast<std::size_t>(std::max<ssize_t>(size, 0)), '\0');
    if (size > 0)
        size = call(bytes.data(), bytes.size());
    if (size < 0)
        return std::nullopt;
    bytes.resize(static_cast<std::size_t>(size));
    return bytes;
}

/// Names that each end with a null.
std::vector<std::string> Split(std::string_view names)
{
    std::vector<std::string> result;
    for (std::size_t end = 0; (end = names.find('\0')) != names.npos; names.remove_prefix(end + 1))
        result.emplace_back(names.substr(0, end));
    return result;
}

/// Whether an attribute is about the bytes of a file, which are others now.
bool IsAboutBytes(std::string_view name) { return name == "security.ima" || name == "security.evm"; }

void CopyExtendedAttributes(const std::string& from, int to)
{
    const auto list = [&](char* text, std::size_t size) { return ::listxattr(from.c_str(), text, size); };
    const auto names = Split(Filled(list).value_or(""));
    for (const std::string& name : names)
    {
        const auto wanted =
            Filled([&](char* bytes, std::size_t size) { return ::getxattr(from.c_str(), name.c_str(), bytes, size); });
        const auto current =
            Filled([&](char* bytes, std::size_t size) { return ::fgetxattr(to, name.c_str(), bytes, size); });
        if (wanted && wanted != current && !IsAboutBytes(name))
            ::fsetxattr(to, name.c_str(), wanted->data(), wanted->size(), 0);
    }
    // A new file has the list that its folder gives, if the folder does so.
    if (std::ranges::find(names, accessList) == names.end() && ::fgetxattr(to, accessList, nullptr, 0) > 0)
        ::fremovexattr(to, accessList);
}

}

void CopyAttributes(const std::string& from, const struct stat& status, int to)
{
    struct stat current;
    if (::fstat(to, &current) != 0)
        return;
    constexpr mode_t permissions = 07777;
    mode_t mode = status.st_mode & permissions;
    const bool isOwnerOther = current.st_uid != status.st_uid;
    const bool isGroupOther = current.st_gid != status.st_gid;
    if ((isOwnerOther || isGroupOther) && ::fchown(to, status.st_uid, status.st_gid) != 0)
    {
        mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
        const auto unchanged = static_cast<uid_t>(-1);
        if (isGroupOther && ::fchown(to, unchanged, status.st_gid) != 0)
            mode &= ~static_cast<mode_t>(S_IRWXG) | ((mode & S_IRWXO) << 3);
    }
    CopyExtendedAttributes(from, to);
    // Comes last: a change of the owner or of the access list is one of the permissions too.
    if (::fstat(to, &current) != 0 || (current.st_mode & permissions) != mode)
        ::fchmod(to, mode);
}

}

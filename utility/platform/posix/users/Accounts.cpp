#include "utility/platform/posix/users/Accounts.h"

#include <algorithm>
#include <cerrno>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace utility::platform::posix
{

namespace
{

/// A record of the system's that `find` writes with its texts, for which it is given as much room as it takes.
template <class Record, class Find>
Record* Found(Record& record, std::vector<char>& texts, Find find)
{
    Record* found = nullptr;
    texts.resize(1024);
    while (find(&record, texts.data(), texts.size(), &found) == ERANGE)
        texts.resize(2 * texts.size());
    return found;
}

template <class Find>
std::optional<Account> AccountBy(Find find)
{
    passwd record;
    std::vector<char> texts;
    if (Found(record, texts, find) == nullptr)
        return std::nullopt;
    return Account{record.pw_name, record.pw_dir, record.pw_gecos != nullptr ? record.pw_gecos : ""};
}

}

std::optional<Account> AccountOf(uid_t user)
{
    return AccountBy([&](auto... record) { return ::getpwuid_r(user, record...); });
}

std::optional<Account> AccountOf(const char* name)
{
    return AccountBy([&](auto... record) { return ::getpwnam_r(name, record...); });
}

bool HasGroup(const char* name)
{
    group record;
    std::vector<char> texts;
    if (Found(record, texts, [&](auto... to) { return ::getgrnam_r(name, to...); }) == nullptr)
        return false;
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(::getgroups(0, nullptr), 0)));
    groups.resize(static_cast<std::size_t>(std::max(::getgroups(static_cast<int>(groups.size()), groups.data()), 0)));
    return ::getegid() == record.gr_gid || std::ranges::find(groups, record.gr_gid) != groups.end();
}

}

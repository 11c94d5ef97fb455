#pragma once

#include <optional>
#include <string>
#include <sys/types.h>

namespace utility::platform::posix
{

/// What the system has about a user.
struct Account
{
    std::string name;
    std::string home;
    std::string description; ///< the full name, then more behind commas
};

std::optional<Account> AccountOf(uid_t user);
std::optional<Account> AccountOf(const char* name);

/// Whether the process is in the group with this name, now.
bool HasGroup(const char* name);

}

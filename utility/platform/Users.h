#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <string>

namespace utility::platform
{

/// Accounts of users. Any thread may call. What is not known is false, and leaves the text as it was. Linux knows the
/// accounts of this machine, and those that it is told of by its own services, but no servers.
class UserService
{
public:
    virtual ~UserService() = default;

    /// Asks for the name of the domain's controller. Gives the system's status, and the name with a status of 0, to be
    /// released; with any other the name is null.
    virtual DWORD DomainController(const wchar_t*& name) = 0;
    virtual void Release(const wchar_t* name) = 0;

    /// The full name of an account on a server, null being this machine. On Linux it is what the account's description
    /// has ahead of its first comma.
    virtual bool FullName(const wchar_t* server, const wchar_t* user, std::wstring& name) = 0;

    /// The server that the user has logged on at.
    virtual bool LogonServer(std::wstring& server) = 0;

    /// The name of the account that the calling thread acts as.
    virtual bool Name(std::wstring& name) = 0;

    /// Whether the process has the rights of an administrator: on Windows, whether the administrators are among its
    /// groups, be they denied or not; on Linux, whether it acts as the superuser, or has one of the groups sudo and
    /// wheel.
    virtual bool IsAdministrator() = 0;
};

ServiceSlot<UserService>& UsersSlot() noexcept;
inline UserService& Users() noexcept { return UsersSlot().Get(); }

}

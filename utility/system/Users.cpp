#include "utility/system/Users.h"

#include "utility/platform/Users.h"

using utility::platform::Users;

bool GetDCServerName(std::wstring& name)
{
    constexpr DWORD noController = 2453;
    const wchar_t* found = nullptr;
    const DWORD status = Users().DomainController(found);
    if (status != 0 && status != noController)
        return false;
    // Without a controller it is null, whose copy deliberately faults.
    name = found;
    Users().Release(found);
    return true;
}

std::wstring GetUserFullName()
{
    std::wstring fullName;
    GetUserFullName(fullName);
    return fullName;
}

bool GetUserFullName(std::wstring& fullName)
{
    std::wstring user;
    return Users().Name(user) && GetUserFullName(user.c_str(), fullName);
}

bool GetUserFullName(const wchar_t* user, std::wstring& fullName)
{
    if (Users().FullName(nullptr, user, fullName))
        return true;
    std::wstring server;
    return GetUserLogonServer(server) && GetUserFullName(server.c_str(), user, fullName);
}

bool GetUserFullName(const wchar_t* server, const wchar_t* user, std::wstring& fullName)
{
    return Users().FullName(server, user, fullName);
}

bool GetUserLogonServer(std::wstring& server) { return Users().LogonServer(server); }

bool UserHasAdministrativeRights() { return Users().IsAdministrator(); }

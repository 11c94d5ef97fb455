#include "utility/platform/Users.h"

#include "utility/platform/SystemService.h"

#include <algorithm>
#include <lm.h>
#include <memory>
#include <span>

namespace utility::platform
{

namespace
{

/// What the network's operations give is released by another of them.
struct NetRelease
{
    void operator()(void* buffer) const { ::NetApiBufferFree(buffer); }
};

template <class Record>
using NetRecord = std::unique_ptr<Record, NetRelease>;

struct SidRelease
{
    void operator()(void* sid) const { ::FreeSid(sid); }
};

class WindowsUsers final : public UserService
{
public:
    DWORD DomainController(const wchar_t*& name) override
    {
        BYTE* buffer = nullptr;
        const DWORD status = ::NetGetDCName(nullptr, nullptr, &buffer);
        name = reinterpret_cast<const wchar_t*>(buffer);
        return status;
    }

    void Release(const wchar_t* name) override { ::NetApiBufferFree(const_cast<wchar_t*>(name)); }

    bool FullName(const wchar_t* server, const wchar_t* user, std::wstring& name) override
    {
        BYTE* buffer = nullptr;
        if (::NetUserGetInfo(server, user, 2, &buffer) != NERR_Success)
            return false;
        const NetRecord<USER_INFO_2> record(reinterpret_cast<USER_INFO_2*>(buffer));
        name = record->usri2_full_name;
        return true;
    }

    bool LogonServer(std::wstring& server) override
    {
        BYTE* buffer = nullptr;
        if (::NetWkstaUserGetInfo(nullptr, 1, &buffer) != NERR_Success)
            return false;
        const NetRecord<WKSTA_USER_INFO_1> record(reinterpret_cast<WKSTA_USER_INFO_1*>(buffer));
        server = record->wkui1_logon_server;
        return true;
    }

    bool Name(std::wstring& name) override
    {
        wchar_t text[257]; // the longest, with its null
        DWORD size = 257;
        if (::GetUserNameW(text, &size) == FALSE)
            return false;
        name = text;
        return true;
    }

    bool IsAdministrator() override
    {
        HANDLE token = nullptr;
        if (::OpenProcessToken(::GetCurrentProcess(), READ_CONTROL | TOKEN_QUERY, &token) == FALSE)
            return false;
        // More groups than it has room for are deliberately a failure.
        alignas(TOKEN_GROUPS) BYTE buffer[1024];
        DWORD length = 0;
        const bool isTold = ::GetTokenInformation(token, TokenGroups, buffer, sizeof(buffer), &length) != FALSE;
        ::CloseHandle(token);
        if (!isTold)
            return false;
        SID_IDENTIFIER_AUTHORITY system = {SECURITY_NT_AUTHORITY};
        PSID sid = nullptr;
        if (::AllocateAndInitializeSid(&system, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0,
                                       0, &sid) == FALSE)
            return false;
        const std::unique_ptr<void, SidRelease> administrators(sid);
        const auto& groups = *reinterpret_cast<const TOKEN_GROUPS*>(buffer);
        // What a group is marked as is deliberately not looked at: one that is denied counts.
        return std::ranges::any_of(std::span(groups.Groups, groups.GroupCount), [&](const SID_AND_ATTRIBUTES& group)
                                   { return ::EqualSid(group.Sid, sid) != FALSE; });
    }
};

}

ServiceSlot<UserService>& UsersSlot() noexcept { return SystemService<UserService, WindowsUsers>::Slot(); }

}

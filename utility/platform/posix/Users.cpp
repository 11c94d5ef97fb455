#include "utility/platform/Users.h"

#include "utility/platform/ErrorCodes.h"
#include "utility/platform/formats/Utf8.h"
#include "utility/platform/posix/users/Accounts.h"
#include "utility/platform/SystemService.h"

#include <unistd.h>

namespace utility::platform
{

namespace
{

class PosixUsers final : public UserService
{
public:
    DWORD DomainController(const wchar_t*& name) override
    {
        name = nullptr;
        return ERROR_NOT_SUPPORTED;
    }

    void Release(const wchar_t* /*name*/) override {}

    bool FullName(const wchar_t* server, const wchar_t* user, std::wstring& name) override
    {
        if (server != nullptr || user == nullptr)
            return false;
        const auto account = posix::AccountOf(formats::Utf8FromWide(user).c_str());
        if (!account)
            return false;
        name = formats::WideFromUtf8(account->description.substr(0, account->description.find(',')));
        return true;
    }

    bool LogonServer(std::wstring& /*server*/) override { return false; }

    bool Name(std::wstring& name) override
    {
        const auto account = posix::AccountOf(::geteuid());
        if (account)
            name = formats::WideFromUtf8(account->name);
        return account.has_value();
    }

    bool IsAdministrator() override { return ::geteuid() == 0 || posix::HasGroup("sudo") || posix::HasGroup("wheel"); }
};

}

ServiceSlot<UserService>& UsersSlot() noexcept { return SystemService<UserService, PosixUsers>::Slot(); }

}

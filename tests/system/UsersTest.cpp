#include "utility/system/Users.h"

#include "tests/support/Substitute.h"
#include "utility/platform/Users.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace
{

/// A network of a test's own, which keeps the questions.
class ScriptedUsers : public utility::platform::UserService
{
public:
    DWORD DomainController(const wchar_t*& name) override
    {
        name = controllerStatus == 0 ? controller.c_str() : nullptr;
        return controllerStatus;
    }
    void Release(const wchar_t* name) override { calls.push_back(name == controller.c_str() ? L"release" : L"?"); }
    bool FullName(const wchar_t* server, const wchar_t* user, std::wstring& name) override
    {
        const std::wstring at = server == nullptr ? L"this machine" : server;
        calls.push_back(at + L": " + user);
        if (at != home)
            return false;
        name = L"Ann Miller";
        return true;
    }
    bool LogonServer(std::wstring& server) override
    {
        calls.emplace_back(L"logon server");
        if (hasLogonServer)
            server = L"CAMSERVER";
        return hasLogonServer;
    }
    bool Name(std::wstring& name) override
    {
        if (hasName)
            name = L"ann";
        return hasName;
    }
    bool IsAdministrator() override { return isAdministrator; }

    DWORD controllerStatus = 0;
    std::wstring controller = L"\\\\CONTROLLER";
    std::wstring home = L"this machine";
    bool hasLogonServer = true;
    bool hasName = true;
    bool isAdministrator = false;
    std::vector<std::wstring> calls;

private:
    support::Substitute<utility::platform::UserService> m_scope{utility::platform::UsersSlot(), *this};
};

using Calls = std::vector<std::wstring>;

}

TEST(GetDCServerNameTest, NameIsCopiedAndReleased)
{
    ScriptedUsers users;
    std::wstring name;
    EXPECT_TRUE(GetDCServerName(name));
    EXPECT_EQ(name, L"\\\\CONTROLLER");
    EXPECT_EQ(users.calls, Calls{L"release"});
}

TEST(GetDCServerNameTest, AnyOtherStatusIsFalse)
{
    ScriptedUsers users;
    for (const DWORD status : {5u, 50u, 2452u, 2454u, 0xFFFFFFFFu})
    {
        users.controllerStatus = status;
        std::wstring name = L"before";
        EXPECT_FALSE(GetDCServerName(name)) << status;
        EXPECT_EQ(name, L"before");
    }
    EXPECT_EQ(users.calls, Calls{});
}

TEST(GetUserFullNameTest, IsThatOfTheUserOfThisMachine)
{
    ScriptedUsers users;
    std::wstring name;
    EXPECT_TRUE(GetUserFullName(name));
    EXPECT_EQ(name, L"Ann Miller");
    EXPECT_EQ(GetUserFullName(), L"Ann Miller");
    EXPECT_EQ(users.calls, (Calls{L"this machine: ann", L"this machine: ann"}));
}

TEST(GetUserFullNameTest, UserWhoIsNotOnThisMachineIsLookedForOnTheLogonServer)
{
    ScriptedUsers users;
    users.home = L"CAMSERVER";
    std::wstring name;
    EXPECT_TRUE(GetUserFullName(L"bob", name));
    EXPECT_EQ(name, L"Ann Miller");
    EXPECT_EQ(users.calls, (Calls{L"this machine: bob", L"logon server", L"CAMSERVER: bob"}));
}

TEST(GetUserFullNameTest, WithoutALogonServerThereIsNone)
{
    ScriptedUsers users;
    users.home = L"";
    users.hasLogonServer = false;
    std::wstring name = L"before";
    EXPECT_FALSE(GetUserFullName(L"bob", name));
    EXPECT_FALSE(GetUserFullName(name));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(GetUserFullName(), L"");
    EXPECT_EQ(users.calls[1], L"logon server");
}

TEST(GetUserFullNameTest, ResultOfTheLogonServerIsTheResult)
{
    ScriptedUsers users;
    users.home = L"elsewhere";
    std::wstring name;
    EXPECT_FALSE(GetUserFullName(L"bob", name));
    EXPECT_EQ(users.calls.back(), L"CAMSERVER: bob");
}

TEST(GetUserFullNameTest, ServerThatIsNamedIsTheOnlyOneAsked)
{
    ScriptedUsers users;
    std::wstring name;
    EXPECT_FALSE(GetUserFullName(L"OTHER", L"bob", name));
    EXPECT_EQ(users.calls, Calls{L"OTHER: bob"});
    EXPECT_TRUE(GetUserFullName(nullptr, L"bob", name));
    EXPECT_EQ(name, L"Ann Miller");
}

TEST(GetUserFullNameTest, UserWithoutANameHasNone)
{
    ScriptedUsers users;
    users.hasName = false;
    std::wstring name;
    EXPECT_FALSE(GetUserFullName(name));
    EXPECT_EQ(GetUserFullName(), L"");
    EXPECT_EQ(users.calls, Calls{});
}

TEST(GetUserLogonServerTest, IsTheSystems)
{
    ScriptedUsers users;
    std::wstring server;
    EXPECT_TRUE(GetUserLogonServer(server));
    EXPECT_EQ(server, L"CAMSERVER");
    users.hasLogonServer = false;
    EXPECT_FALSE(GetUserLogonServer(server));
}

TEST(UserHasAdministrativeRightsTest, IsTheSystems)
{
    ScriptedUsers users;
    EXPECT_FALSE(UserHasAdministrativeRights());
    users.isAdministrator = true;
    EXPECT_TRUE(UserHasAdministrativeRights());
}

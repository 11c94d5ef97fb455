#include "utility/platform/Users.h"

#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/Types.h"
#include "utility/system/Users.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <lm.h>
#include <string>
#include <vector>

using support::ImportedCall;
using utility::platform::Users;

extern "C" decltype(&::AllocateAndInitializeSid) __imp_AllocateAndInitializeSid;
extern "C" decltype(&::FreeSid) __imp_FreeSid;
extern "C" decltype(&::GetTokenInformation) __imp_GetTokenInformation;
extern "C" decltype(&::GetUserNameW) __imp_GetUserNameW;
extern "C" decltype(&::NetApiBufferFree) __imp_NetApiBufferFree;
extern "C" decltype(&::NetGetDCName) __imp_NetGetDCName;
extern "C" decltype(&::NetUserGetInfo) __imp_NetUserGetInfo;
extern "C" decltype(&::NetWkstaUserGetInfo) __imp_NetWkstaUserGetInfo;
extern "C" decltype(&::OpenProcessToken) __imp_OpenProcessToken;

namespace
{

/// What the network is asked, and what it has not got back.
struct
{
    std::vector<std::wstring> questions;
    int buffers;
    std::wstring home; ///< the server that knows the user
    NET_API_STATUS logonStatus;
} network;

std::wstring TextOr(const wchar_t* text, const wchar_t* none) { return text == nullptr ? none : text; }

template <class Record>
NET_API_STATUS Give(const Record& record, LPBYTE* buffer)
{
    ++network.buffers;
    *buffer = reinterpret_cast<LPBYTE>(new Record(record));
    return NERR_Success;
}

class WindowsUsersTest : public testing::Test
{
protected:
    WindowsUsersTest() { network = {}; }

private:
    const ImportedCall<decltype(__imp_NetUserGetInfo)> m_user{
        __imp_NetUserGetInfo,
        [](LPCWSTR server, LPCWSTR user, DWORD level, LPBYTE* buffer) -> NET_API_STATUS
        {
            network.questions.push_back(TextOr(server, L"this machine") + L": " + user + L" " + std::to_wstring(level));
            static wchar_t name[] = L"Ann Miller";
            USER_INFO_2 record = {};
            record.usri2_full_name = name;
            return TextOr(server, L"this machine") == network.home ? Give(record, buffer) : NERR_UserNotFound;
        }};
    const ImportedCall<decltype(__imp_NetWkstaUserGetInfo)> m_logon{
        __imp_NetWkstaUserGetInfo,
        [](LPWSTR reserved, DWORD level, LPBYTE* buffer) -> NET_API_STATUS
        {
            network.questions.push_back(TextOr(reserved, L"logon") + L" " + std::to_wstring(level));
            static wchar_t server[] = L"CAMSERVER";
            WKSTA_USER_INFO_1 record = {};
            record.wkui1_logon_server = server;
            return network.logonStatus == 0 ? Give(record, buffer) : network.logonStatus;
        }};
    const ImportedCall<decltype(__imp_NetApiBufferFree)> m_release{__imp_NetApiBufferFree,
                                                                   [](LPVOID buffer) -> NET_API_STATUS
                                                                   {
                                                                       --network.buffers;
                                                                       ::operator delete(buffer);
                                                                       return NERR_Success;
                                                                   }};
};

using Questions = std::vector<std::wstring>;

/// The groups of the process, as a test has them.
struct
{
    DWORD access;
    TOKEN_INFORMATION_CLASS kind;
    DWORD room;
    std::vector<SID_AND_ATTRIBUTES> groups;
    int identifiers;
} token;

BOOL WINAPI TellGroups(HANDLE, TOKEN_INFORMATION_CLASS kind, LPVOID buffer, DWORD size, PDWORD length)
{
    token.kind = kind;
    token.room = size;
    *length = static_cast<DWORD>(offsetof(TOKEN_GROUPS, Groups) + token.groups.size() * sizeof(SID_AND_ATTRIBUTES));
    if (*length > size)
        return FALSE;
    auto& groups = *static_cast<TOKEN_GROUPS*>(buffer);
    groups.GroupCount = static_cast<DWORD>(token.groups.size());
    std::copy(token.groups.begin(), token.groups.end(), groups.Groups);
    return TRUE;
}

struct OwnSid
{
    OwnSid(DWORD first, DWORD second)
    {
        SID_IDENTIFIER_AUTHORITY authority = {{0, 0, 0, 0, 0, 5}};
        ::InitializeSid(bytes, &authority, 2);
        *::GetSidSubAuthority(bytes, 0) = first;
        *::GetSidSubAuthority(bytes, 1) = second;
    }
    alignas(SID) BYTE bytes[32];
};

LONG WINAPI EndByFault(EXCEPTION_POINTERS* exception)
{
    std::_Exit(exception->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION ? 3 : 4);
}

[[noreturn]] void AskForAController()
{
    const ImportedCall call(__imp_NetGetDCName,
                            [](LPCWSTR, LPCWSTR, LPBYTE* buffer) -> NET_API_STATUS
                            {
                                *buffer = nullptr;
                                return 2453;
                            });
    ::SetUnhandledExceptionFilter(&EndByFault);
    std::wstring name;
    GetDCServerName(name);
    std::_Exit(5);
}

}

TEST_F(WindowsUsersTest, FullNameIsAskedOfThisMachineAtLevel2AndReleased)
{
    network.home = L"this machine";
    std::wstring name;
    EXPECT_TRUE(GetUserFullName(L"ann", name));
    EXPECT_EQ(name, L"Ann Miller");
    EXPECT_EQ(network.questions, Questions{L"this machine: ann 2"});
    EXPECT_EQ(network.buffers, 0);
}

TEST_F(WindowsUsersTest, UserWhoIsNotOnThisMachineIsLookedForOnTheLogonServer)
{
    network.home = L"CAMSERVER";
    std::wstring name;
    EXPECT_TRUE(GetUserFullName(L"bob", name));
    EXPECT_EQ(name, L"Ann Miller");
    EXPECT_EQ(network.questions, (Questions{L"this machine: bob 2", L"logon 1", L"CAMSERVER: bob 2"}));
    EXPECT_EQ(network.buffers, 0);
}

TEST_F(WindowsUsersTest, WithoutALogonServerThereIsNoName)
{
    network.logonStatus = 2138;
    std::wstring name = L"before";
    EXPECT_FALSE(GetUserFullName(L"bob", name));
    EXPECT_FALSE(GetUserLogonServer(name));
    EXPECT_EQ(name, L"before");
    EXPECT_EQ(network.buffers, 0);
}

TEST_F(WindowsUsersTest, UserOfTheThreadIsAskedForWithRoomFor257Characters)
{
    network.home = L"this machine";
    static DWORD room;
    const auto tell = [](LPWSTR name, LPDWORD size) -> BOOL
    {
        room = *size;
        std::wstring(256, L'u').copy(name, 256);
        name[256] = L'\0';
        return TRUE;
    };
    const ImportedCall call(__imp_GetUserNameW, tell);
    EXPECT_EQ(GetUserFullName(), L"Ann Miller");
    EXPECT_EQ(room, 257u);
    EXPECT_EQ(network.questions, Questions{L"this machine: " + std::wstring(256, L'u') + L" 2"});
}

TEST_F(WindowsUsersTest, UserOfTheThreadWhoHasNoNameHasNoFullName)
{
    const ImportedCall call(__imp_GetUserNameW, [](LPWSTR, LPDWORD) -> BOOL { return FALSE; });
    std::wstring name;
    EXPECT_FALSE(GetUserFullName(name));
    EXPECT_EQ(network.questions, Questions{});
}

TEST(WindowsUserTest, SystemIsAskedAndAnswersOneWayOrTheOther)
{
    std::wstring user;
    EXPECT_TRUE(Users().Name(user));
    EXPECT_NE(user, L"");
    std::wstring name = L"before";
    EXPECT_FALSE(GetUserFullName(L"no such user", name));
    EXPECT_EQ(name, L"before");
}

TEST(WindowsControllerTest, MachineWithoutOneDeliberatelyFaults)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(AskForAController(), testing::ExitedWithCode(3), "");
}

TEST(WindowsControllerTest, NameIsCopiedAndReleased)
{
    static const void* released;
    static bool hasNoServer;
    static wchar_t controller[] = L"\\\\CONTROLLER";
    const ImportedCall ask(__imp_NetGetDCName,
                           [](LPCWSTR server, LPCWSTR domain, LPBYTE* buffer) -> NET_API_STATUS
                           {
                               hasNoServer = server == nullptr && domain == nullptr;
                               *buffer = reinterpret_cast<LPBYTE>(controller);
                               return NERR_Success;
                           });
    const ImportedCall release(__imp_NetApiBufferFree,
                               [](LPVOID buffer) -> NET_API_STATUS
                               {
                                   released = buffer;
                                   return NERR_Success;
                               });
    std::wstring name;
    EXPECT_TRUE(GetDCServerName(name));
    EXPECT_EQ(name, L"\\\\CONTROLLER");
    EXPECT_TRUE(hasNoServer);
    EXPECT_EQ(released, controller);
}

TEST(WindowsAdministratorTest, IsWhoHasTheGroupWhateverItIsMarkedAs)
{
    OwnSid users(32, 545);
    OwnSid administrators(32, 544);
    token = {};
    token.groups = {{users.bytes, SE_GROUP_ENABLED}, {administrators.bytes, SE_GROUP_USE_FOR_DENY_ONLY}};
    const ImportedCall call(__imp_GetTokenInformation, &TellGroups);
    EXPECT_TRUE(UserHasAdministrativeRights());
    EXPECT_EQ(token.kind, 2);
    EXPECT_EQ(token.room, 1024u);
    token.groups[1] = token.groups[0];
    EXPECT_FALSE(UserHasAdministrativeRights());
    token.groups.clear();
    EXPECT_FALSE(UserHasAdministrativeRights());
}

TEST(WindowsAdministratorTest, MoreGroupsThanThereIsRoomForAreDeliberatelyNone)
{
    OwnSid administrators(32, 544);
    token = {};
    token.groups.assign(63, {administrators.bytes, 0});
    const ImportedCall call(__imp_GetTokenInformation, &TellGroups);
    EXPECT_TRUE(UserHasAdministrativeRights());
    token.groups.assign(64, {administrators.bytes, 0});
    EXPECT_FALSE(UserHasAdministrativeRights());
}

TEST(WindowsAdministratorTest, TokenThatCannotBeReadIsNone)
{
    static DWORD access;
    const ImportedCall call(__imp_OpenProcessToken,
                            [](HANDLE, DWORD with, PHANDLE) -> BOOL
                            {
                                access = with;
                                return FALSE;
                            });
    EXPECT_FALSE(UserHasAdministrativeRights());
    EXPECT_EQ(access, 0x20008u);
}

TEST(WindowsAdministratorTest, IdentifierIsReleased)
{
    static int made;
    made = 0;
    static const auto make = __imp_AllocateAndInitializeSid;
    static const auto release = __imp_FreeSid;
    const auto allocate = [](PSID_IDENTIFIER_AUTHORITY authority, BYTE count, DWORD a, DWORD b, DWORD c, DWORD d,
                             DWORD e, DWORD f, DWORD g, DWORD h, PSID* sid) -> BOOL
    {
        EXPECT_EQ(authority->Value[5], 5);
        EXPECT_EQ(count, 2);
        EXPECT_EQ(a, 32u);
        EXPECT_EQ(b, 544u);
        ++made;
        return make(authority, count, a, b, c, d, e, f, g, h, sid);
    };
    const ImportedCall makeCall(__imp_AllocateAndInitializeSid, allocate);
    const ImportedCall releaseCall(__imp_FreeSid,
                                   [](PSID sid) -> PVOID
                                   {
                                       --made;
                                       return release(sid);
                                   });
    static_cast<void>(UserHasAdministrativeRights());
    EXPECT_EQ(made, 0);
}

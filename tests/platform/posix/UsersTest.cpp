#include "utility/platform/Users.h"

#include "tests/support/posix/Child.h"
#include "utility/platform/formats/Utf8.h"
#include "utility/system/Machine.h"
#include "utility/system/Users.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <functional>
#include <grp.h>
#include <sched.h>
#include <string>
#include <unistd.h>
#include <vector>

using utility::platform::Users;

namespace
{

/// Calls work(fields) for each account of the machine's own list: name, password, user, group, description, ...
void ForEachAccount(const std::function<void(const std::vector<std::string>&)>& work)
{
    std::ifstream accounts("/etc/passwd");
    for (std::string line; std::getline(accounts, line);)
    {
        std::vector<std::string> fields(1);
        for (const char c : line)
        {
            if (c == ':')
                fields.emplace_back();
            else
                fields.back() += c;
        }
        if (fields.size() == 7 && !fields[0].empty())
            work(fields);
    }
}

constexpr int lacksTheRight = 99;

/// What a process with this user and these groups gets; skips where the test may not become one.
int CodeAs(uid_t user, const std::vector<gid_t>& groups, const std::function<int()>& work)
{
    support::Child child(
        [&]
        {
            if (::setgroups(groups.size(), groups.data()) != 0 || ::setgid(54321) != 0 || ::setuid(user) != 0)
                return lacksTheRight;
            return work();
        });
    return child.ExitCode();
}

}

TEST(PosixUsersTest, FullNameIsTheDescriptionUpToItsFirstComma)
{
    int accounts = 0;
    ForEachAccount(
        [&](const std::vector<std::string>& fields)
        {
            ++accounts;
            const std::wstring user = utility::platform::formats::WideFromUtf8(fields[0]);
            std::wstring name = L"before";
            EXPECT_TRUE(GetUserFullName(user.c_str(), name)) << fields[0];
            EXPECT_EQ(utility::platform::formats::Utf8FromWide(name), fields[4].substr(0, fields[4].find(',')));
        });
    EXPECT_GT(accounts, 0);
}

TEST(PosixUsersTest, UserOfTheThreadIsWhoItActsAs)
{
    ForEachAccount(
        [](const std::vector<std::string>& fields)
        {
            if (fields[2] != std::to_string(::geteuid()))
                return;
            std::wstring name;
            EXPECT_TRUE(Users().Name(name));
            EXPECT_EQ(utility::platform::formats::Utf8FromWide(name), fields[0]);
        });
}

TEST(PosixUsersTest, UserWhoIsNotThereHasNoName)
{
    std::wstring name = L"before";
    EXPECT_FALSE(GetUserFullName(L"no such user", name));
    EXPECT_FALSE(GetUserFullName(L"", name));
    EXPECT_FALSE(Users().FullName(nullptr, nullptr, name));
    EXPECT_EQ(name, L"before");
}

TEST(PosixUsersTest, AccountWithoutAnEntryHasNoName)
{
    const auto ask = []
    {
        std::wstring name = L"before";
        return !Users().Name(name) && name == L"before" && GetUserFullName().empty() ? 0 : 1;
    };
    const int code = CodeAs(54321, {}, ask);
    if (code == lacksTheRight)
        GTEST_SKIP() << "The user lacks the right to be another one";
    EXPECT_EQ(code, 0);
}

TEST(PosixUsersTest, ServersAreNotKnown)
{
    std::wstring name = L"before";
    EXPECT_FALSE(GetUserFullName(L"SERVER", L"root", name));
    EXPECT_FALSE(GetUserLogonServer(name));
    EXPECT_FALSE(GetDCServerName(name));
    EXPECT_EQ(name, L"before");
}

TEST(PosixUsersTest, SuperuserIsAnAdministratorAndAnotherIsByAGroup)
{
    const auto ask = [] { return UserHasAdministrativeRights() ? 1 : 0; };
    const int code = CodeAs(54321, {}, ask);
    if (code == lacksTheRight)
        GTEST_SKIP() << "The user lacks the right to be another one";
    EXPECT_EQ(code, 0);
    EXPECT_EQ(CodeAs(0, {}, ask), 1);
    int groups = 0;
    for (const char* const name : {"sudo", "wheel", "users"})
    {
        if (const group* const found = ::getgrnam(name))
        {
            const bool isAdministrators = std::string(name) != "users";
            groups += isAdministrators ? 1 : 0;
            EXPECT_EQ(CodeAs(54321, {4321, found->gr_gid}, ask), isAdministrators ? 1 : 0) << name;
        }
    }
    if (groups == 0)
        GTEST_SKIP() << "The machine lacks a group of administrators";
}

TEST(PosixUsersTest, MachineWithoutAControllerDeliberatelyFaults)
{
    struct NoController : utility::platform::UserService
    {
        DWORD DomainController(const wchar_t*& name) override
        {
            name = nullptr;
            return 2453;
        }
        void Release(const wchar_t*) override {}
        bool FullName(const wchar_t*, const wchar_t*, std::wstring&) override { return false; }
        bool LogonServer(std::wstring&) override { return false; }
        bool Name(std::wstring&) override { return false; }
        bool IsAdministrator() override { return false; }
    };
    support::Child child(
        []
        {
            NoController users;
            utility::platform::UsersSlot().Exchange(users);
            ::signal(SIGSEGV, SIG_DFL);
            std::wstring name;
            return GetDCServerName(name) ? 1 : 0;
        });
    EXPECT_EQ(child.Signal(), SIGSEGV);
}

TEST(PosixMachineTest, ProcessorsAreThoseThatAreOnlineAndNotThisProcessAlone)
{
    const DWORD online = GetNumberOfProcessors();
    EXPECT_EQ(online, static_cast<DWORD>(::sysconf(_SC_NPROCESSORS_ONLN)));
    support::Child child(
        []
        {
            cpu_set_t one;
            CPU_ZERO(&one);
            CPU_SET(static_cast<std::size_t>(std::max(::sched_getcpu(), 0)), &one);
            ::sched_setaffinity(0, sizeof(one), &one);
            return static_cast<int>(GetNumberOfProcessors() & 0x7F);
        });
    EXPECT_EQ(child.ExitCode(), static_cast<int>(online & 0x7F));
}

TEST(PosixMachineTest, VersionOfWindowsIsNotPretended)
{
    _OSVERSIONINFOEXW info = {};
    info.dwMajorVersion = 77;
    EXPECT_EQ(GetVersionExZelo(info), 0);
    EXPECT_EQ(info.dwMajorVersion, 77u);
    EXPECT_EQ(info.dwOSVersionInfoSize, 0u);
}

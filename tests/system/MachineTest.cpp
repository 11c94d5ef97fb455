#include "utility/system/Machine.h"

#include "tests/support/Substitute.h"
#include "utility/platform/Libraries.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

namespace
{

int versionStatus;

int TellSystem(_OSVERSIONINFOEXW* info)
{
    EXPECT_EQ(info->dwOSVersionInfoSize, 284u);
    info->dwMajorVersion = 10;
    info->dwBuildNumber = 19041;
    return versionStatus;
}

/// The module that tells the version, or none.
class ScriptedSystem : public utility::platform::LibraryService
{
public:
    HINSTANCE Load(const boost::filesystem::path&) override { return nullptr; }
    HINSTANCE Loaded(const wchar_t* name) override
    {
        calls.emplace_back(std::wstring(name) == L"ntdll" ? "ntdll" : "?");
        return isThere ? reinterpret_cast<HINSTANCE>(0x1000) : nullptr;
    }
    Function Find(HINSTANCE, const char* name) override
    {
        calls.emplace_back(name);
        return reinterpret_cast<Function>(&TellSystem);
    }
    void Free(HINSTANCE) override { calls.emplace_back("free"); }
    HINSTANCE ModuleAt(void*, DWORD) override { return nullptr; }

    bool isThere = true;
    std::vector<std::string> calls;

private:
    support::Substitute<utility::platform::LibraryService> m_scope{utility::platform::LibrariesSlot(), *this};
};

}

TEST(GetNumberOfProcessorsTest, IsOneAtLeast) { EXPECT_GE(GetNumberOfProcessors(), 1u); }

TEST(GetVersionExZeloTest, ResultIsTheStatusOfTheCallWhichIsZeroOnSuccess)
{
    ScriptedSystem system;
    _OSVERSIONINFOEXW info = {};
    versionStatus = 0;
    EXPECT_EQ(GetVersionExZelo(info), 0);
    EXPECT_EQ(info.dwMajorVersion, 10u);
    EXPECT_EQ(info.dwBuildNumber, 19041u);
    versionStatus = -1073741811;
    EXPECT_EQ(GetVersionExZelo(info), -1073741811);
    EXPECT_EQ(system.calls,
              (std::vector<std::string>{"ntdll", "RtlGetVersion", "free", "ntdll", "RtlGetVersion", "free"}));
}

TEST(GetVersionExZeloTest, MissingModuleIsDeliberatelyZeroTooAndTheRecordUntouched)
{
    ScriptedSystem system;
    system.isThere = false;
    _OSVERSIONINFOEXW info;
    std::memset(&info, 0x5C, sizeof(info));
    EXPECT_EQ(GetVersionExZelo(info), 0);
    EXPECT_EQ(info.dwOSVersionInfoSize, 0x5C5C5C5Cu);
    EXPECT_EQ(info.dwMajorVersion, 0x5C5C5C5Cu);
    EXPECT_EQ(system.calls, std::vector<std::string>{"ntdll"});
}

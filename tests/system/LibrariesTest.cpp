#include "utility/system/Libraries.h"

#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/Substitute.h"
#include "utility/platform/Libraries.h"
#include "utility/platform/Modules.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using boost::filesystem::path;
using utility::platform::Modules;

namespace
{

constexpr auto notThere = static_cast<HRESULT>(0x80004005);

DWORD majorToTell;
DWORD minorToTell;
HRESULT statusToTell;

/// What a library that tells its version exports.
HRESULT TellVersion(DWORD* record)
{
    EXPECT_EQ(record[0], 20u);
    for (int i = 1; i < 5; ++i)
        EXPECT_EQ(record[i], 0u);
    record[1] = majorToTell;
    record[2] = minorToTell;
    return statusToTell;
}

/// Libraries of a test's own, which keeps the calls.
class ScriptedLibraries : public utility::platform::LibraryService
{
public:
    ScriptedLibraries()
    {
        majorToTell = 4;
        minorToTell = 71;
        statusToTell = 0;
    }

    HINSTANCE Load(const path& file) override
    {
        calls.push_back("load " + file.filename().string());
        folder = file.parent_path();
        return loads ? m_library : nullptr;
    }
    HINSTANCE Loaded(const wchar_t*) override { return nullptr; }
    Function Find(HINSTANCE, const char* name) override
    {
        calls.push_back(std::string("find ") + name);
        return finds ? reinterpret_cast<Function>(&TellVersion) : nullptr;
    }
    void Free(HINSTANCE library) override
    {
        EXPECT_EQ(library, m_library);
        calls.emplace_back("free");
    }
    HINSTANCE ModuleAt(void* address, DWORD flags) override
    {
        askedAddress = address;
        askedFlags = flags;
        return m_library;
    }

    bool loads = true;
    bool finds = true;
    path folder;
    void* askedAddress = nullptr;
    DWORD askedFlags = 0;
    std::vector<std::string> calls;

private:
    const HINSTANCE m_library = reinterpret_cast<HINSTANCE>(0x1000);
    support::Substitute<utility::platform::LibraryService> m_scope{utility::platform::LibrariesSlot(), *this};
};

using LibraryCalls = std::vector<std::string>;

}

TEST(GetDLLVersionTest, IsWhatTheLibraryTells)
{
    ScriptedLibraries libraries;
    DWORD major = 1;
    DWORD minor = 2;
    statusToTell = 7;
    EXPECT_EQ(GetDLLVersion("tools.dll", major, minor), 7);
    EXPECT_EQ(major, 4u);
    EXPECT_EQ(minor, 71u);
    EXPECT_EQ(libraries.calls, (LibraryCalls{"load tools.dll", "find DllGetVersion", "free"}));
}

TEST(GetDLLVersionTest, LibraryThatIsNotThereIsAFailure)
{
    ScriptedLibraries libraries;
    libraries.loads = false;
    DWORD major = 1;
    DWORD minor = 2;
    EXPECT_EQ(GetDLLVersion("tools.dll", major, minor), notThere);
    EXPECT_EQ(major, 1u);
    EXPECT_EQ(minor, 2u);
    EXPECT_EQ(libraries.calls, LibraryCalls{"load tools.dll"});
}

TEST(GetDLLVersionTest, LibraryWithoutTheFunctionIsAFailureAndIsReleased)
{
    ScriptedLibraries libraries;
    libraries.finds = false;
    DWORD major = 1;
    DWORD minor = 2;
    EXPECT_EQ(GetDLLVersion("tools.dll", major, minor), notThere);
    EXPECT_EQ(major, 1u);
    EXPECT_EQ(libraries.calls, (LibraryCalls{"load tools.dll", "find DllGetVersion", "free"}));
}

TEST(GetDLLVersionTest, NegativeStatusStoresNothing)
{
    ScriptedLibraries libraries;
    DWORD major = 1;
    DWORD minor = 2;
    statusToTell = static_cast<HRESULT>(0x80070057);
    EXPECT_EQ(GetDLLVersion("tools.dll", major, minor), statusToTell);
    EXPECT_EQ(major, 1u);
    EXPECT_EQ(minor, 2u);
    EXPECT_EQ(libraries.calls.back(), "free");
}

TEST(GetDLLVersionTest, RealLibraryIsLoadedAskedAndReleased)
{
    DWORD major = 0;
    DWORD minor = 0;
    EXPECT_EQ(GetDLLVersion(UTILITY_VERSION_LIBRARY, major, minor), 1);
    EXPECT_EQ(major, 4u);
    EXPECT_EQ(minor, 71u);
    EXPECT_EQ(GetDLLVersion("no such library", major, minor), notThere);
    EXPECT_EQ(GetDLLVersion("", major, minor), notThere);
}

TEST(GetBrowserVersionTest, IsThatOfItsLibraryInTheSystemsFolder)
{
    ScriptedLibraries libraries;
    struct : support::ForwardingFileSystem
    {
        path SystemFolder() override { return "system"; }
    } files;
    DWORD major = 0;
    DWORD minor = 0;
    EXPECT_EQ(GetBrowserVersion(major, minor), 0);
    EXPECT_EQ(major, 4u);
    EXPECT_EQ(minor, 71u);
    EXPECT_EQ(libraries.calls[0], "load shdocvw.dll");
    EXPECT_EQ(libraries.folder, "system");
}

TEST(CheckBrowserVersionTest, TakesVersion4_71AndLater)
{
    const ScriptedLibraries libraries;
    const struct
    {
        DWORD major;
        DWORD minor;
        bool isTaken;
    } versions[] = {{4, 71, true},  {4, 72, true},  {5, 0, true},   {6, 70, true},
                    {4, 70, false}, {3, 99, false}, {0, 71, false}, {4, 0, false}};
    for (const auto& each : versions)
    {
        majorToTell = each.major;
        minorToTell = each.minor;
        EXPECT_EQ(CheckBrowserVersion(), each.isTaken) << each.major << '.' << each.minor;
    }
}

TEST(CheckBrowserVersionTest, BrowserThatFailsIsNotTaken)
{
    ScriptedLibraries libraries;
    statusToTell = -1;
    EXPECT_FALSE(CheckBrowserVersion());
    statusToTell = 1;
    EXPECT_TRUE(CheckBrowserVersion());
    libraries.loads = false;
    EXPECT_FALSE(CheckBrowserVersion());
}

TEST(IsDLLAvailableTest, LibraryIsReleasedAgain)
{
    ScriptedLibraries libraries;
    EXPECT_TRUE(IsDLLAvailable("tools.dll"));
    EXPECT_EQ(libraries.calls, (LibraryCalls{"load tools.dll", "free"}));
    libraries.loads = false;
    EXPECT_FALSE(IsDLLAvailable("tools.dll"));
    EXPECT_EQ(libraries.calls.back(), "load tools.dll");
}

TEST(IsDLLAvailableTest, RealLibraryIs)
{
    EXPECT_TRUE(IsDLLAvailable(UTILITY_VERSION_LIBRARY));
    EXPECT_FALSE(IsDLLAvailable("no such library"));
    EXPECT_FALSE(IsDLLAvailable(""));
    const std::string cut = std::string(UTILITY_VERSION_LIBRARY) + '\0' + "rest";
    EXPECT_FALSE(IsDLLAvailable(path(cut.begin(), cut.end())));
}

TEST(GetModuleHandleExWTest, FlagsAreThoseGivenPlusFour)
{
    ScriptedLibraries libraries;
    char place;
    EXPECT_NE(GetModuleHandleExW(&place, 2), nullptr);
    EXPECT_EQ(libraries.askedAddress, &place);
    EXPECT_EQ(libraries.askedFlags, 6u);
    // Deliberately a sum: a flag that is given already is carried.
    EXPECT_NE(GetModuleHandleExW(&place, 4), nullptr);
    EXPECT_EQ(libraries.askedFlags, 8u);
}

TEST(GetModuleHandleExWTest, IsTheModuleThatHoldsTheAddress)
{
    static char inThisProgram;
    const HINSTANCE program = Modules().ModuleAt(&inThisProgram);
    for (const DWORD flags : {0u, 1u, 2u})
        EXPECT_EQ(GetModuleHandleExW(&inThisProgram, flags), program) << flags;
    EXPECT_EQ(GetModuleHandleExW(nullptr, 2), program);
}

TEST(GetModuleHandleExWTest, AddressOfNoneIsNull)
{
    const auto inHeap = std::make_unique<char>();
    EXPECT_EQ(GetModuleHandleExW(inHeap.get(), 2), nullptr);
    EXPECT_EQ(GetModuleHandleExW(reinterpret_cast<void*>(16), 0), nullptr);
}

TEST(GetModuleHandleExWTest, OtherFlagsAreNull)
{
    static char inThisProgram;
    for (const DWORD flags : {3u, 4u, 64u})
        EXPECT_EQ(GetModuleHandleExW(&inThisProgram, flags), nullptr) << flags;
}

#include "utility/guards/ResourcePtr.h"

#include "tests/support/ForwardingRegistry.h"
#include "tests/support/ScratchHives.h"
#include "tests/support/Substitute.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Error.h"
#include "utility/platform/Files.h"
#include "utility/platform/Handles.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using utility::platform::Files;

namespace
{

/// By which operation a handle of this type is released.
template <class T>
constexpr const char* operation = "DeleteObject";
template <>
constexpr const char* operation<HKEY> = "RegCloseKey";
template <>
constexpr const char* operation<HANDLE> = "CloseHandle";
template <>
constexpr const char* operation<HWINSTA> = "CloseWindowStation";

/// What was released, and how.
using Releases = std::vector<std::pair<std::string, void*>>;

class RecordingHandles : public utility::platform::HandleService
{
public:
    explicit RecordingHandles(Releases& releases) : m_releases(releases) {}

    bool CloseHandle(HANDLE handle) override { return Record("CloseHandle", handle); }
    bool CloseWindowStation(HWINSTA station) override { return Record("CloseWindowStation", station); }
    bool DeleteObject(void* graphicObject) override { return Record("DeleteObject", graphicObject); }

private:
    bool Record(const char* name, void* handle)
    {
        m_releases.emplace_back(name, handle);
        return true;
    }

    Releases& m_releases;
    support::Substitute<utility::platform::HandleService> m_scope{utility::platform::HandlesSlot(), *this};
};

class RecordingRegistry : public support::ForwardingRegistry
{
public:
    explicit RecordingRegistry(Releases& releases) : m_releases(releases) {}

    LSTATUS RegCloseKey(HKEY key) override
    {
        m_releases.emplace_back("RegCloseKey", key);
        return ERROR_SUCCESS;
    }

private:
    Releases& m_releases;
};

template <class T>
class ResourcePtrTest : public testing::Test
{
protected:
    static T Handle(std::intptr_t number) { return reinterpret_cast<T>(number); }
    static Releases Released(std::intptr_t number) { return {{operation<T>, reinterpret_cast<void*>(number)}}; }

    Releases releases;

private:
    RecordingHandles m_handles{releases};
    RecordingRegistry m_registry{releases};
};

using HandleTypes = testing::Types<HKEY, HANDLE, HWINSTA, HBITMAP, HBRUSH, HFONT, HPALETTE, HPEN, HRGN>;
TYPED_TEST_SUITE(ResourcePtrTest, HandleTypes);

}

TYPED_TEST(ResourcePtrTest, ItsEndReleasesTheHandle)
{
    {
        const resource_ptr<TypeParam> owner(this->Handle(40));
        EXPECT_EQ(owner.get(), this->Handle(40));
        EXPECT_EQ(this->releases, Releases());
    }
    EXPECT_EQ(this->releases, this->Released(40));
}

TYPED_TEST(ResourcePtrTest, NullHandleReleasesNothing)
{
    {
        const resource_ptr<TypeParam> empty;
        const resource_ptr<TypeParam> null(TypeParam{});
        EXPECT_FALSE(empty);
        EXPECT_EQ(null, nullptr);
    }
    release_resource_ptr(TypeParam{});
    EXPECT_EQ(this->releases, Releases());
}

TYPED_TEST(ResourcePtrTest, MovesAndIsNotCopied)
{
    static_assert(!std::is_copy_constructible_v<resource_ptr<TypeParam>>);
    static_assert(!std::is_copy_assignable_v<resource_ptr<TypeParam>>);
    {
        resource_ptr<TypeParam> first(this->Handle(40));
        resource_ptr<TypeParam> second(std::move(first));
        EXPECT_EQ(first, nullptr); // NOLINT(bugprone-use-after-move): what this is about
        EXPECT_EQ(second.get(), this->Handle(40));
        EXPECT_EQ(this->releases, Releases());
        resource_ptr<TypeParam> third(this->Handle(44));
        third = std::move(second);
        EXPECT_EQ(this->releases, this->Released(44));
        this->releases.clear();
    }
    EXPECT_EQ(this->releases, this->Released(40));
}

TYPED_TEST(ResourcePtrTest, ResetReleasesWhatWasHeldAndReleaseDoesNot)
{
    resource_ptr<TypeParam> owner(this->Handle(40));
    owner.reset(this->Handle(44));
    EXPECT_EQ(this->releases, this->Released(40));
    EXPECT_EQ(owner.release(), this->Handle(44));
    EXPECT_EQ(owner, nullptr);
    owner.reset();
    EXPECT_EQ(this->releases, this->Released(40));
}

TYPED_TEST(ResourcePtrTest, HoldsTheHandleAlone) { EXPECT_EQ(sizeof(resource_ptr<TypeParam>), sizeof(TypeParam)); }

TEST(ResourcePtrOfFileTest, FileIsClosed)
{
    const support::TemporaryFolder folder;
    const boost::filesystem::path path = folder / "file";
    {
        const resource_ptr<HANDLE> file(Files().OpenForWriting(path));
        ASSERT_NE(file.get(), INVALID_HANDLE_VALUE);
        // Nobody else may open it as long as it is open.
        EXPECT_EQ(Files().OpenForReading(path), INVALID_HANDLE_VALUE);
        EXPECT_EQ(utility::platform::LastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
    }
    const resource_ptr<HANDLE> again(Files().OpenForReading(path));
    EXPECT_NE(again.get(), INVALID_HANDLE_VALUE);
}

TEST(ResourcePtrOfKeyTest, KeyIsClosed)
{
    support::ScratchHives hives;
    HKEY key = nullptr;
    ASSERT_EQ(hives.RegCreateKeyExW(HKEY_CURRENT_USER, L"Closed", KEY_READ, key), 0);
    DWORD size = 0;
    {
        const resource_ptr<HKEY> owner(key);
        EXPECT_EQ(hives.RegQueryValueExW(key, L"absent", nullptr, nullptr, &size),
                  static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND));
    }
    EXPECT_EQ(hives.RegQueryValueExW(key, L"absent", nullptr, nullptr, &size),
              static_cast<LSTATUS>(ERROR_INVALID_HANDLE));
}

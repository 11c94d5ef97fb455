#include "utility/platform/VersionInfo.h"

#include "tests/support/ForwardingFiles.h"
#include "tests/support/Substitute.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VersionRecords.h"
#include "utility/platform/Error.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <span>
#include <thread>
#include <vector>

using utility::platform::LastError;
using utility::platform::VersionInfo;

namespace
{

const wchar_t* const version = L"" UTILITY_TEST_MODULES "/WholeVersion.dll";
const wchar_t* const noVersion = L"" UTILITY_TEST_MODULES "/NoVersion.dll";
const wchar_t* const missing = L"" UTILITY_TEST_MODULES "/missing.dll";

}

TEST(PosixVersionInfoTest, FileWithoutARecordSaysWhy)
{
    std::byte block[1000];
    EXPECT_EQ(VersionInfo().GetFileVersionInfoSizeW(noVersion), 0u);
    EXPECT_EQ(LastError(), 1813u);
    EXPECT_FALSE(VersionInfo().GetFileVersionInfoW(noVersion, sizeof(block), block));
    EXPECT_EQ(LastError(), 1813u);
    EXPECT_EQ(VersionInfo().GetFileVersionInfoSizeW(missing), 0u);
    EXPECT_EQ(LastError(), 2u);
}

TEST(PosixVersionInfoTest, RecordThatHasGrownMeanwhileIsNotRead)
{
    const DWORD size = VersionInfo().GetFileVersionInfoSizeW(version);
    ASSERT_GT(size, 0u);
    const auto block = std::make_unique<std::byte[]>(size - 1);
    EXPECT_FALSE(VersionInfo().GetFileVersionInfoW(version, size - 1, block.get()));
    EXPECT_EQ(LastError(), 122u);
}

namespace
{

/// Files that are all one module, with a record whose length another thread changes all the time, as an upgrade in
/// place does.
class ChangingModule : public support::ForwardingFiles
{
public:
    ChangingModule() : m_bytes(support::TemporaryFolder::BytesOf(UTILITY_TEST_MODULES "/WholeVersion.dll"))
    {
        const std::string record = support::BytesOf(support::RecordOfTexts({support::StoredText(u"Name", u"value")}));
        const std::size_t at = m_bytes.find(support::StoredBytes(u"VS_VERSION_INFO")) - 6;
        std::uint16_t longer = 0;
        std::memcpy(&longer, &m_bytes[at], sizeof(longer));
        EXPECT_GT(longer, record.size());
        m_bytes.replace(at, record.size(), record);
        sizeOfShorter = utility::platform::formats::VersionBlockSize(std::as_bytes(std::span(record)));
        m_changes = std::thread(
            [this, longer, at, shorter = static_cast<std::uint16_t>(record.size())]
            {
                const std::atomic_ref length(*reinterpret_cast<std::uint16_t*>(&m_bytes[at]));
                while (!m_ends)
                    length = length == shorter ? longer : shorter;
            });
    }
    ~ChangingModule() override
    {
        m_ends = true;
        m_changes.join();
    }

    HANDLE OpenForReading(const boost::filesystem::path&) override { return &m_bytes; }
    bool Length(HANDLE, std::uint64_t& length) override { return (length = m_bytes.size()) != 0; }
    HANDLE MapReadOnly(HANDLE) override { return &m_bytes; }
    void* ViewAll(HANDLE, std::uint64_t) override { return m_bytes.data(); }
    bool UnmapView(const void*) override { return true; }
    bool Close(HANDLE) override { return true; }

    DWORD sizeOfShorter = 0; ///< of the block

private:
    std::string m_bytes;
    std::atomic<bool> m_ends = false;
    std::thread m_changes;
};

}

TEST(PosixVersionInfoTest, RecordThatChangesWhileItIsReadIsWrittenToItsRoomOnly)
{
    constexpr std::byte untouched{0xA5};
    ChangingModule module;
    const DWORD size = module.sizeOfShorter;
    const support::Substitute<utility::platform::FileService> scope(utility::platform::FilesSlot(), module);
    std::vector<std::byte> block(4000, untouched);
    int read = 0;
    for (int turn = 0; turn < 300000 || read == 0 || read == turn; ++turn)
    {
        read += VersionInfo().GetFileVersionInfoW(version, size, block.data()) ? 1 : 0;
        ASSERT_EQ(block[size], untouched) << turn;
    }
}

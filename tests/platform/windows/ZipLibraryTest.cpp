#include "utility/platform/ZipLibrary.h"

#include "tests/modules/StandInZip.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/windows/ImportedCall.h"
#include "utility/codec/Zip.h"
#include "utility/platform/Paths.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

extern "C" decltype(&::LoadLibraryW) __imp_LoadLibraryW;
extern "C" decltype(&::GetProcAddress) __imp_GetProcAddress;

namespace
{

using boost::filesystem::path;

/// With a library that stands in for the one that the system is asked for.
class WindowsZipLibraryTest : public ::testing::Test
{
protected:
    WindowsZipLibraryTest()
    {
        asked = {};
        *m_records = {};
    }

    static HMODULE WINAPI LoadStandIn(LPCWSTR name)
    {
        asked = name;
        return ::LoadLibraryExW(path(UTILITY_STAND_IN_ZIP).c_str(), nullptr, 0);
    }

    static StandInZipRecords* RecordsOf(HMODULE library)
    {
        using Function = StandInZipRecords*();
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(library, "StandInZip")))();
    }

    /// The bytes of a record in which these numbers stand at their offsets, and nothing else.
    static std::vector<unsigned char> Record(std::size_t size,
                                             const std::vector<std::pair<std::size_t, std::uint64_t>>& numbers)
    {
        std::vector<unsigned char> bytes(size + sizeof(std::uint64_t));
        for (const auto& [offset, number] : numbers)
            std::memcpy(bytes.data() + offset, &number, sizeof(number));
        bytes.resize(size);
        return bytes;
    }

    /// The number of eight bytes at an offset.
    static std::uint64_t At(const unsigned char* bytes, std::size_t offset)
    {
        std::uint64_t number = 0;
        std::memcpy(&number, bytes + offset, sizeof(number));
        return number;
    }

    static inline std::wstring asked;
    StandInZipRecords* const m_records = RecordsOf(LoadStandIn(L""));
    const support::ImportedCall<decltype(&::LoadLibraryW)> m_load{__imp_LoadLibraryW, &LoadStandIn};
    const support::TemporaryFolder m_folder;
    const path m_archive = m_folder / "a.zip";
};

}

TEST_F(WindowsZipLibraryTest, RecordsAreThoseOfTheLibraryByteForByte)
{
    asked.clear();
    ASSERT_TRUE(Zip::ZipFiles(m_archive, {"b", "c"}));
    EXPECT_EQ(asked, L"zip32z64.dll");

    const auto& callbacks = m_records->callbacks;
    const std::vector<unsigned char> given(callbacks, std::end(callbacks));
    EXPECT_EQ(given, Record(48, {{0, At(callbacks, 0)}, {8, At(callbacks, 8)}, {16, At(callbacks, 8)}}));
    EXPECT_NE(At(callbacks, 0), 0u);
    EXPECT_EQ(m_records->output, 19);
    EXPECT_EQ(m_records->answers[0], 1);
    EXPECT_EQ(m_records->answers[1], 1);

    const auto& command = m_records->command;
    std::uint64_t count = 3;
    std::memcpy(reinterpret_cast<char*>(&count) + 4, command + 4, 4); // of no meaning
    EXPECT_EQ(std::vector<unsigned char>(command, std::end(command)),
              Record(32, {{0, count}, {8, At(command, 8)}, {16, At(command, 16)}}));
    EXPECT_EQ(m_records->archive, m_archive.string());
    EXPECT_EQ(m_records->entries, (std::vector<std::string>{"-UN=UTF8", "b", "c"}));

    const auto& options = m_records->options;
    EXPECT_EQ(std::vector<unsigned char>(options, std::end(options)),
              Record(200, {{8, At(options, 8)}, {48, 1}, {64, 1}, {76, 1}, {192, 0x39}}));
    EXPECT_EQ(m_records->folder, m_folder.Path().string());
}

TEST_F(WindowsZipLibraryTest, NamesOutsideTheCodePageOfTheSystemGoThrough)
{
    const path archive = m_folder.Path() / L"Ж 鉄.zip";
    ASSERT_TRUE(Zip::ZipFiles(archive, {path(L"Prüf Ω 😀.nc")}));
    EXPECT_TRUE(m_records->archive.ends_with("\xD0\x96 \xE9\x89\x84.zip"));
    EXPECT_EQ(m_records->entries.at(1), "Pr\xC3\xBC"
                                        "f \xCE\xA9 \xF0\x9F\x98\x80.nc");
    EXPECT_TRUE(boost::filesystem::exists(archive));
}

TEST_F(WindowsZipLibraryTest, ResultsAreThoseOfTheLibrary)
{
    m_records->archiveResult = 12;
    EXPECT_FALSE(Zip::ZipFiles(m_archive, {"b"}));
    m_records->archiveResult = 0;
    EXPECT_TRUE(Zip::ZipFiles(m_archive, {"b"}));
    m_records->initResult = 0;
    m_records->entries.clear();
    EXPECT_FALSE(Zip::ZipFiles(m_archive, {"b"}));
    EXPECT_TRUE(m_records->entries.empty());
}

TEST_F(WindowsZipLibraryTest, IsNotLoadedWithoutFiles)
{
    asked.clear();
    EXPECT_FALSE(Zip::ZipFiles(m_archive, {}));
    EXPECT_EQ(asked, L"");
}

TEST_F(WindowsZipLibraryTest, WhereThereIsNoneNothingIsWrittenAndItIsLookedForAnew)
{
    {
        const support::ImportedCall call(__imp_LoadLibraryW, [](LPCWSTR) -> HMODULE { return nullptr; });
        EXPECT_FALSE(Zip::ZipFiles(m_archive, {"b"}));
    }
    EXPECT_TRUE(Zip::ZipFiles(m_archive, {"b"}));
}

TEST_F(WindowsZipLibraryTest, OneThatLacksAnOperationIsNone)
{
    static decltype(&::GetProcAddress) system;
    static std::string_view missing;
    system = __imp_GetProcAddress;
    const support::ImportedCall call(__imp_GetProcAddress,
                                     [](HMODULE module, LPCSTR name) -> FARPROC
                                     { return name == missing ? nullptr : system(module, name); });
    for (const char* name : {"ZpInit", "ZpArchive"})
    {
        missing = name;
        EXPECT_FALSE(Zip::ZipFiles(m_archive, {"b"})) << name;
    }
}

#include "utility/platform/formats/ElfFile.h"

#include "tests/support/GuardedText.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VersionRecords.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>

namespace formats = utility::platform::formats;

namespace
{

constexpr std::size_t headerSize = 64;
constexpr std::size_t placeOfSections = 40;

/// A small file with a section of a version record, by its bytes.
class ElfFileTest : public ::testing::Test
{
protected:
    static std::string SectionOf(std::string_view file, std::string_view name = ".utility.version")
    {
        const formats::Bytes section = formats::ElfSection(std::as_bytes(std::span(file)), name);
        return {reinterpret_cast<const char*>(section.data()), section.size()};
    }

    static std::string SectionOfGuarded(const std::string& file)
    {
        const support::GuardedText guarded(file, support::GuardedText::Touches::pageBehind);
        return SectionOf({guarded.First(), file.size()});
    }

    template <class Value>
    std::string FileWith(std::size_t at, Value value) const
    {
        std::string file = m_file;
        std::memcpy(&file.at(at + sizeof(value) - 1) - (sizeof(value) - 1), &value, sizeof(value));
        return file;
    }

    const std::string m_file = support::TemporaryFolder::BytesOf(UTILITY_CORPUS "/ResourceFileFuzz/versioned.elf");
};

}

TEST_F(ElfFileTest, SectionIsFoundByItsName)
{
    EXPECT_EQ(SectionOf(m_file), support::TemporaryFolder::BytesOf(UTILITY_CORPUS "/VersionRecordFuzz/texts.bin"));
    for (const char* other : {".utility.versio", "utility.version", ".utility.version.", ""})
        EXPECT_EQ(SectionOf(m_file, other), "") << other;
}

TEST_F(ElfFileTest, SectionOfOtherThanProgramDataIsNone) { EXPECT_EQ(SectionOf(m_file, ".shstrtab"), ""); }

TEST_F(ElfFileTest, VersionRecordIsThatOfItsSection)
{
    const formats::Bytes record = formats::FindVersionRecord(std::as_bytes(std::span(m_file)));
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(record.data()), record.size()), SectionOf(m_file));
}

TEST_F(ElfFileTest, OtherKindsOfFilesHaveNoSection)
{
    ASSERT_NE(SectionOf(m_file), "");
    EXPECT_EQ(SectionOf(FileWith(0, 'E')), "");
    EXPECT_EQ(SectionOf(FileWith(3, 'G')), "");
    EXPECT_EQ(SectionOf(FileWith(4, char{1})), "") << "32 bits";
    EXPECT_EQ(SectionOf(FileWith(5, char{2})), "") << "big-endian";
}

TEST_F(ElfFileTest, CutAtEveryByteItHasTheSectionOrNone)
{
    const std::string whole = SectionOf(m_file);
    for (std::size_t size = 0; size < m_file.size(); ++size)
    {
        const std::string section = SectionOfGuarded(m_file.substr(0, size));
        ASSERT_TRUE(section.empty() || section == whole) << size;
    }
}

TEST_F(ElfFileTest, WildValuesInTheHeadersAreHarmless)
{
    std::uint64_t sectionsAt = 0;
    std::memcpy(&sectionsAt, &m_file.at(placeOfSections), sizeof(sectionsAt));
    for (std::size_t at = 0; at + 2 <= m_file.size(); at += 2)
    {
        if (at >= headerSize && at < sectionsAt)
            continue;
        for (const auto value : std::to_array<std::uint16_t>({0, 1, 0x7FFF, 0xFFFF}))
        {
            const std::string section = SectionOfGuarded(FileWith(at, value));
            ASSERT_LE(section.size(), m_file.size()) << at << ": " << value;
            support::LookUpEverything(section);
        }
    }
}

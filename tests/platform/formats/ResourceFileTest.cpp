#include "utility/platform/formats/ResourceFile.h"

#include "tests/support/GuardedText.h"
#include "tests/support/ResourceLookups.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

namespace formats = utility::platform::formats;

namespace
{

formats::Bytes BytesOf(std::string_view text) { return std::as_bytes(std::span(text)); }

std::string TextOf(formats::Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

const std::string& Sample()
{
    static const std::string sample = support::TemporaryFolder::BytesOf(UTILITY_TEST_MODULES "/Resources.dll");
    return sample;
}

template <class Value>
Value ValueAt(const std::string& file, std::size_t offset)
{
    Value value;
    std::memcpy(&value, &file.at(offset + sizeof(value) - 1) - (sizeof(value) - 1), sizeof(value));
    return value;
}

template <class Value>
void Put(std::string& file, std::size_t offset, Value value)
{
    std::memcpy(&file.at(offset + sizeof(value) - 1) - (sizeof(value) - 1), &value, sizeof(value));
}

// Where the parts of the sample are.
std::size_t HeaderAt() { return ValueAt<std::uint32_t>(Sample(), 0x3C); }
std::size_t OptionalHeaderAt() { return HeaderAt() + 24; }
std::size_t SectionsAt() { return OptionalHeaderAt() + ValueAt<std::uint16_t>(Sample(), HeaderAt() + 20); }
std::size_t SectionsEnd() { return SectionsAt() + 40u * ValueAt<std::uint16_t>(Sample(), HeaderAt() + 6); }
std::size_t ResourceSectionAt() { return Sample().find(std::string(".rsrc\0\0\0", 8)); }
std::size_t TreeAt() { return ValueAt<std::uint32_t>(Sample(), ResourceSectionAt() + 20); }
std::size_t TreeSize() { return ValueAt<std::uint32_t>(Sample(), ResourceSectionAt() + 8); }

/// The sample as a module of 32 bits: its header has 16 bytes less ahead of the table of directories.
std::string SampleOf32Bits()
{
    std::string file = Sample();
    Put<std::uint16_t>(file, OptionalHeaderAt(), 0x10B);
    Put<std::uint16_t>(file, HeaderAt() + 20, static_cast<std::uint16_t>(SectionsAt() - OptionalHeaderAt() - 16));
    file.insert(SectionsEnd(), 16, '\0');
    file.erase(OptionalHeaderAt() + 32, 16);
    return file;
}

/// Checks that a damaged sample answers each look-up, and reads nothing outside its bytes.
std::vector<std::wstring> GuardedLookups(const std::string& file)
{
    const support::GuardedText guarded(file, support::GuardedText::Touches::pageBehind);
    return support::ResourceLookups(BytesOf({guarded.First(), file.size()}));
}

}

struct KnownString
{
    UINT id;
    std::wstring text;
};

class ResourceStringTable : public ::testing::TestWithParam<KnownString>
{
};

TEST_P(ResourceStringTable, IsRead)
{
    EXPECT_EQ(formats::ResourceFile(BytesOf(Sample())).String(GetParam().id), GetParam().text);
    EXPECT_EQ(formats::ResourceFile(BytesOf(SampleOf32Bits())).String(GetParam().id), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    Strings, ResourceStringTable,
    ::testing::Values(KnownString{0, L"first of the first block"}, KnownString{1, L""}, // absent in a block that exists
                      KnownString{15, L"last of the first block"},                      // not the German one
                      KnownString{16, L"first of the second block"}, KnownString{17, L"a high surrogate \xD800 alone"},
                      KnownString{32, L"nur deutsch"}, // the only language
                      KnownString{8299, L""},          // absent, with its block
                      KnownString{8300, L"Gr\u00F6\u00DFe \u2192 \U0001F600"}, KnownString{65535, L"last of all"},
                      KnownString{65536, L""}, // the low half is that of string 0
                      KnownString{0xFFFFFFFF, L""}),
    [](const auto& each) { return "Number" + std::to_string(each.param.id); });

TEST(ResourceFileTest, BitmapsAreFoundByNumberAndByNameInAnyCase)
{
    const formats::ResourceFile resources(BytesOf(Sample()));
    EXPECT_EQ(TextOf(resources.Bitmap(7u)), std::string("\x28\0\0\0\1\0\0\0\1\0\0\0pixels", 18));
    for (const wchar_t* name : {L"LOGO", L"Logo", L"logo"})
        EXPECT_EQ(TextOf(resources.Bitmap(name)), std::string("\x28\0\0\0\2\0\0\0", 8)) << name;
}

TEST(ResourceFileTest, AnyResourceIsFoundByTypeAndName)
{
    const formats::ResourceFile resources(BytesOf(Sample()));
    EXPECT_EQ(TextOf(resources.Find(10u, L"ANYTHING")), "abc");
    EXPECT_EQ(TextOf(resources.Find(L"kind", 300u)), "xyz");
}

TEST(ResourceFileTest, AbsentResourceIsEmpty)
{
    const formats::ResourceFile resources(BytesOf(Sample()));
    EXPECT_TRUE(resources.Bitmap(8u).empty());
    EXPECT_TRUE(resources.Bitmap(L"LOGOS").empty());
    EXPECT_TRUE(resources.Bitmap(L"").empty());
    EXPECT_TRUE(resources.Find(11u, 1u).empty());
    EXPECT_TRUE(resources.Find(L"KINDS", 300u).empty());
    EXPECT_TRUE(resources.Find(10u, 0u).empty());
    // A number beyond 16 bits is none, also where it looks like what is stored for a name.
    const auto storedName = static_cast<UINT>(Sample().find(std::string("\4\0L\0O\0G\0O\0", 10)) - TreeAt());
    EXPECT_TRUE(resources.Bitmap(0x80000000 | storedName).empty());
}

TEST(ResourceFileTest, VersionRecordIsWhole)
{
    const formats::Bytes record = formats::ResourceFile(BytesOf(Sample())).Version();
    ASSERT_GE(record.size(), 92u);
    EXPECT_EQ(formats::RecordAt<std::uint16_t>(record, 0), record.size());
    EXPECT_EQ(formats::RecordAt<std::uint32_t>(record, 40), 0xFEEF04BDu);
}

TEST(ResourceFileTest, BytesThatAreNoModuleHaveNoResources)
{
    std::string otherMachine = Sample();
    Put<std::uint16_t>(otherMachine, OptionalHeaderAt(), 0x107);
    std::string noSignature = Sample();
    Put<std::uint32_t>(noSignature, HeaderAt(), 0);
    std::string noMagic = Sample();
    Put<std::uint16_t>(noMagic, 0, 0);
    std::string fewDirectories = Sample();
    Put<std::uint32_t>(fewDirectories, OptionalHeaderAt() + 108, 2);
    std::string emptyDirectory = Sample();
    Put<std::uint32_t>(emptyDirectory, OptionalHeaderAt() + 112 + 2 * 8 + 4, 0);
    std::string manySections = Sample();
    Put<std::uint16_t>(manySections, HeaderAt() + 6, 97);
    manySections.resize(100000);
    for (const std::string& file : {std::string(), std::string("MZ"), std::string(1000, 'M'), std::string(1000, '\xFF'),
                                    otherMachine, noSignature, noMagic, fewDirectories, emptyDirectory, manySections})
    {
        const formats::ResourceFile resources(BytesOf(file));
        EXPECT_FALSE(resources.HasResources());
        EXPECT_EQ(resources.String(0), L"");
        EXPECT_TRUE(resources.Version().empty());
    }
    EXPECT_TRUE(formats::ResourceFile(BytesOf(Sample())).HasResources());
}

TEST(DamagedResourceFileTest, CutAtEveryByteItHasAllResourcesOrNone)
{
    const auto whole = support::ResourceLookups(BytesOf(Sample()));
    const auto none = support::ResourceLookups({});
    ASSERT_NE(whole, none);
    const std::size_t end = TreeAt() + ValueAt<std::uint32_t>(Sample(), ResourceSectionAt() + 16);
    for (std::size_t size = 0; size < Sample().size(); ++size)
        ASSERT_EQ(GuardedLookups(Sample().substr(0, size)), size < end ? none : whole) << size;
}

TEST(DamagedResourceFileTest, SectionCutAtEveryByteGivesResourcesThatAreWhole)
{
    const auto whole = support::ResourceLookups(BytesOf(Sample()));
    for (std::uint32_t size = 0; size < TreeSize(); ++size)
    {
        std::string file = Sample();
        Put(file, ResourceSectionAt() + 16, size);
        const auto found = GuardedLookups(file);
        for (std::size_t i = 0; i < whole.size(); ++i)
            ASSERT_TRUE(found[i].empty() || found[i] == whole[i]) << size << ' ' << i;
    }
}

TEST(DamagedResourceFileTest, CirclesOfDirectoriesAreNotFollowed)
{
    const auto none = support::ResourceLookups({});
    std::string file = Sample();
    // Each type leads to the root, and so does each entry of it.
    const std::size_t types = ValueAt<std::uint16_t>(file, TreeAt() + 12) + ValueAt<std::uint16_t>(file, TreeAt() + 14);
    for (std::size_t i = 0; i < types; ++i)
        Put<std::uint32_t>(file, TreeAt() + 16 + i * 8 + 4, 0x80000000);
    EXPECT_EQ(GuardedLookups(file), none);
}

TEST(DamagedResourceFileTest, WildValuesAnywhereInTheTreeAreHarmless)
{
    for (std::size_t at = TreeAt(); at + 4 <= TreeAt() + TreeSize(); at += 4)
    {
        for (const std::uint32_t value : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0x80000004u, 0xFFFFFFF0u, 0xFFFFFFFFu,
                                          0x80000000u + static_cast<std::uint32_t>(TreeSize()) - 1})
        {
            std::string file = Sample();
            Put(file, at, value);
            for (const std::wstring& answer : GuardedLookups(file))
                ASSERT_LE(answer.size(), file.size()) << at << ": " << value;
        }
    }
}

TEST(DamagedResourceFileTest, WildValuesAnywhereInTheHeadersAreHarmless)
{
    for (std::size_t at = 0; at + 4 <= SectionsEnd(); at += 2)
    {
        for (const std::uint32_t value : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFF0u, 0xFFFFFFFFu,
                                          static_cast<std::uint32_t>(Sample().size()) - 1})
        {
            std::string file = Sample();
            Put(file, at, value);
            for (const std::wstring& answer : GuardedLookups(file))
                ASSERT_LE(answer.size(), file.size()) << at << ": " << value;
        }
    }
}

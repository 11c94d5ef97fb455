#include "utility/platform/formats/VersionRecord.h"

#include "tests/support/GuardedText.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VersionRecords.h"

#include <gtest/gtest.h>

#include <array>

namespace formats = utility::platform::formats;
using support::BytesOf;
using support::RecordNode;
using support::RecordOfTexts;
using support::StoredText;
using support::VersionBlock;

namespace
{

const wchar_t* const namePath = L"\\StringFileInfo\\040904b0\\Name";
const wchar_t* const otherPath = L"\\StringFileInfo\\040904b0\\Other";
const wchar_t* const translationPath = L"\\VarFileInfo\\Translation";

std::string SampleRecord()
{
    return BytesOf(RecordOfTexts({StoredText(u"Name", u"value"), StoredText(u"Other", u"another")}));
}

void LookUpGuarded(const std::string& record)
{
    const support::GuardedText guarded(record, support::GuardedText::Touches::pageBehind);
    support::LookUpEverything({guarded.First(), record.size()});
}

template <class Value>
std::string With(std::string bytes, std::size_t at, Value value)
{
    std::memcpy(&bytes.at(at + sizeof(value) - 1) - (sizeof(value) - 1), &value, sizeof(value));
    return bytes;
}

}

TEST(VersionRecordTest, ValuesAreFoundByTheirPath)
{
    const VersionBlock block(SampleRecord());
    EXPECT_EQ(block.Text(namePath), L"value");
    EXPECT_EQ(block.Text(otherPath), L"another");
    EXPECT_EQ(block.Find(translationPath), std::string_view("\x09\x04\xB0\x04", 4));
    ASSERT_TRUE(block.Find(L"\\"));
    EXPECT_EQ(block.Find(L"\\")->size(), 52u);
}

TEST(VersionRecordTest, CaseOfKeysIsIgnored)
{
    EXPECT_EQ(VersionBlock(SampleRecord()).Text(L"\\STRINGFILEINFO\\040904B0\\nAME"), L"value");
}

TEST(VersionRecordTest, AbsentKeysAreNotFound)
{
    const VersionBlock block(SampleRecord());
    for (const wchar_t* path : {L"\\Name", L"\\StringFileInfo\\Name", L"\\StringFileInfo\\040904b1\\Name",
                                L"\\StringFileInfo\\040904b0\\Nam", L"\\StringFileInfo\\040904b0\\Names",
                                L"\\StringFileInfo\\040904b0\\Name\\Name", L"\\VarFileInfo\\Translations"})
        EXPECT_FALSE(block.Find(path)) << path;
}

TEST(VersionRecordTest, LengthsAreThoseThatAreStored)
{
    const VersionBlock block(SampleRecord());
    EXPECT_EQ(block.Find(namePath)->size(), 6u); // characters, with the null
    EXPECT_EQ(block.Find(translationPath)->size(), 4u);
    EXPECT_EQ(block.Find(L"\\StringFileInfo")->size(), 0u);
}

struct StoredAs
{
    const char* name;
    RecordNode node;
    std::wstring text;
};

class OddTextTest : public ::testing::TestWithParam<StoredAs>
{
};

TEST_P(OddTextTest, IsReadUpToItsNull)
{
    const auto record = BytesOf(RecordOfTexts({GetParam().node, StoredText(u"Other", u"another")}));
    EXPECT_EQ(VersionBlock(record).Text(namePath), GetParam().text);
    EXPECT_EQ(VersionBlock(record).Text(otherPath), L"another");
    LookUpGuarded(record);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, OddTextTest,
    ::testing::Values(StoredAs{"Pair", StoredText(u"Name", u"a\U0001F600b"), L"a\U0001F600b"},
                      StoredAs{"LoneSurrogates", StoredText(u"Name", u"\xDC00 \xD800"), L"\xDC00 \xD800"},
                      StoredAs{"EmbeddedNull", StoredText(u"Name", std::u16string(u"a\0b", 3)), L"a"},
                      StoredAs{"EmptyWithANull", StoredText(u"Name", u""), L""},
                      StoredAs{"EmptyWithoutANull", {u"Name", true, "", {}, {}, {}}, L""},
                      StoredAs{"LengthInBytes",
                               {u"Name", false, support::StoredBytes(std::u16string_view(u"abc\0", 4)), {}, {}, {}},
                               L"abc"},
                      StoredAs{"LengthTooLong",
                               {u"Name", true, support::StoredBytes(std::u16string_view(u"abc\0", 4)), {}, {}, 0xFFFF},
                               L"abc"},
                      StoredAs{"OddSize", {u"Name", false, std::string("a\0b\0\0\0c", 7), {}, {}, {}}, L"ab"}),
    [](const auto& each) { return each.param.name; });

TEST(VersionRecordTest, TextWithoutANullAtTheEndOfTheRecordEndsWithIt)
{
    const RecordNode text{u"Name", true, support::StoredBytes(u"abc"), {}, {}, {}};
    const RecordNode translation{u"040904b0", true, "", {text}, {}, {}};
    const auto record = BytesOf(support::VersionRecord({{u"StringFileInfo", true, "", {translation}, {}, {}}}));
    EXPECT_EQ(VersionBlock(record).Text(namePath), L"abc");
    LookUpGuarded(record);
}

TEST(VersionRecordTest, FirstOfTwoNodesWithAKeyIsTaken)
{
    const auto record = BytesOf(RecordOfTexts({StoredText(u"Name", u"first"), StoredText(u"Name", u"second")}));
    EXPECT_EQ(VersionBlock(record).Text(namePath), L"first");
}

TEST(VersionRecordTest, NodeLongerThanItsParentEndsWithIt)
{
    RecordNode name = StoredText(u"Name", u"value");
    name.length = std::uint16_t{0xFFFF};
    const VersionBlock block(BytesOf(RecordOfTexts({name, StoredText(u"Other", u"another")})));
    EXPECT_EQ(block.Text(namePath), L"value");
    EXPECT_EQ(block.Text(otherPath), L"(none)");
    EXPECT_TRUE(block.Find(translationPath));
}

TEST(VersionRecordTest, NodeThatIsTooShortForItsKeyEndsTheSearch)
{
    for (std::uint16_t length = 0; length < 16; ++length)
    {
        RecordNode name = StoredText(u"Name", u"value");
        name.length = length;
        const VersionBlock block(BytesOf(RecordOfTexts({name, StoredText(u"Other", u"another")})));
        EXPECT_EQ(block.Text(namePath), L"(none)") << length;
        EXPECT_EQ(block.Text(otherPath), L"(none)") << length;
        EXPECT_TRUE(block.Find(translationPath)) << length;
    }
}

TEST(VersionRecordTest, ShortTranslationIsWhatThereIsOfIt)
{
    const RecordNode translations{u"Translation", false, "\x09\x04", {}, {}, {}};
    const auto record = BytesOf(support::VersionRecord({{u"VarFileInfo", true, "", {translations}, {}, {}}}));
    EXPECT_EQ(VersionBlock(record).Find(translationPath), "\x09\x04");
}

TEST(VersionRecordTest, BytesBehindTheRecordDoNotCount)
{
    const VersionBlock block(SampleRecord() + std::string(100, 'x'));
    EXPECT_EQ(block.Text(otherPath), L"another");
}

TEST(VersionRecordTest, WhatDoesNotBeginWithFixedInformationIsNoRecord)
{
    RecordNode shortInformation = support::VersionRecord({});
    shortInformation.value.resize(51);
    RecordNode otherSignature = support::VersionRecord({});
    otherSignature.value[0] = 0;
    RecordNode none = support::VersionRecord({});
    none.value.clear();
    for (const std::string& record : {std::string(), std::string(100, '\0'), std::string(100, '\xFF'),
                                      BytesOf(shortInformation), BytesOf(otherSignature), BytesOf(none)})
        EXPECT_TRUE(VersionBlock(record).IsEmpty());
    EXPECT_FALSE(VersionBlock(BytesOf(support::VersionRecord({}))).IsEmpty());
}

TEST(DamagedVersionRecordTest, CutAtEveryByteItIsNoRecord)
{
    const std::string whole = SampleRecord();
    for (std::size_t size = 0; size < whole.size(); ++size)
    {
        const support::GuardedText guarded(whole.substr(0, size), support::GuardedText::Touches::pageBehind);
        ASSERT_TRUE(VersionBlock({guarded.First(), size}).IsEmpty()) << size;
    }
}

TEST(DamagedVersionRecordTest, WildValuesAnywhereAreHarmless)
{
    const std::string whole = SampleRecord();
    for (std::size_t at = 0; at + 2 <= whole.size(); at += 2)
    {
        for (const std::uint16_t value : {std::uint16_t{0}, std::uint16_t{1}, std::uint16_t{3}, std::uint16_t{0x7FFF},
                                          std::uint16_t{0xD83D}, std::uint16_t{0xFFFF}, static_cast<std::uint16_t>(at)})
        {
            const std::string record = With(whole, at, value);
            LookUpGuarded(record);
            ASSERT_LE(VersionBlock(record).Text(namePath).size(), whole.size()) << at << ": " << value;
        }
    }
}

TEST(DamagedVersionRecordTest, LongestRecordOfNodesWithoutLengthTakesNoTime)
{
    std::string record = SampleRecord();
    record.resize(0xFFFF);
    record = With(record, 0, std::uint16_t{0xFFFF});
    LookUpGuarded(record);
    EXPECT_EQ(VersionBlock(record).Text(namePath), L"value");
}

#include "utility/system/PerfLib.h"

#include "tests/support/ForwardingHeap.h"
#include "tests/support/GuardedText.h"
#include "tests/support/ScratchHives.h"
#include "utility/platform/formats/Utf16.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using support::GuardedText;
using Titles = std::map<std::wstring, int>;
using Help = std::map<int, std::wstring>;

static_assert(!std::is_polymorphic_v<CPerfLib>);
static_assert(std::is_nothrow_move_constructible_v<CPerfLib> && std::is_nothrow_move_assignable_v<CPerfLib>);

namespace
{

constexpr unsigned short english = 9;
constexpr DWORD readAndWriteTables = KEY_READ | KEY_WRITE;

/// The bytes of a table, whose texts each end with a null here.
std::string Stored(std::wstring_view texts)
{
    const std::u16string stored = utility::platform::formats::Utf16FromWide(texts);
    return {reinterpret_cast<const char*>(stored.data()), stored.size() * sizeof(char16_t)};
}

template <std::size_t size>
std::string StoredLiteral(const wchar_t (&texts)[size])
{
    return Stored(std::wstring_view(texts, size - 1));
}

/// Has tables of its own, and nobody else's.
class PerfLibTest : public testing::Test
{
protected:
    void Store(const wchar_t* valueName, const std::string& bytes, const wchar_t* language = L"009",
               DWORD type = REG_MULTI_SZ)
    {
        const std::wstring path =
            std::wstring(L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Perflib\\") + language;
        HKEY key = nullptr;
        ASSERT_EQ(m_hives.RegCreateKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), readAndWriteTables, key), 0);
        EXPECT_EQ(m_hives.RegSetValueExW(key, valueName, type, bytes.data(), static_cast<DWORD>(bytes.size())), 0);
        m_hives.RegCloseKey(key);
    }

    Titles TitlesOf(const std::string& bytes)
    {
        Store(L"Counter", bytes);
        Titles titles;
        EXPECT_TRUE(m_english.GetPerformanceDataCounterTitles(titles));
        return titles;
    }

    int NumberOf(const std::wstring& text)
    {
        const Titles titles = TitlesOf(Stored(text + std::wstring(L"\0x\0", 3)));
        return titles.empty() ? -12345 : titles.at(L"x");
    }

    support::ScratchHives m_hives;
    CPerfLib m_english{english, false, false};
};

TEST_F(PerfLibTest, TitlesAreNumbersOfNamesAndHelpIsTextsOfNumbers)
{
    Store(L"Counter",
          StoredLiteral(L"1\0001847\0002\0System\0004\0Memory\0006\0% Processor Time\000238\0Processor\0\0"));
    Store(L"Help", StoredLiteral(L"3\0The System performance object …\000239\0The Processor performance object\0\0"));
    CPerfLib names(english, true, true);
    EXPECT_EQ(names.GetTitleIndex(L"Processor"), 238u);
    EXPECT_EQ(names.GetTitleIndex(L"% Processor Time"), 6u);
    Titles titles;
    EXPECT_TRUE(names.GetPerformanceDataCounterTitles(titles));
    EXPECT_EQ(titles,
              (Titles{{L"1847", 1}, {L"System", 2}, {L"Memory", 4}, {L"% Processor Time", 6}, {L"Processor", 238}}));
    Help help;
    EXPECT_TRUE(names.GetPerformanceDataCounterHelp(help));
    EXPECT_EQ(help, (Help{{3, L"The System performance object …"}, {239, L"The Processor performance object"}}));
}

TEST_F(PerfLibTest, NameIsKnownExactlyAsItIsWrittenOnly)
{
    Store(L"Counter", StoredLiteral(L"238\0Processor\0\0"));
    const CPerfLib names(english, true, false);
    EXPECT_EQ(names.GetTitleIndex(L"Processor"), 238u);
    for (const wchar_t* const other :
         {L"processor", L"Processo", L"Processor ", L"", static_cast<const wchar_t*>(nullptr)})
        EXPECT_EQ(names.GetTitleIndex(other), 0u);
}

TEST_F(PerfLibTest, TitlesThatWereNotLoadedAreNotKnown)
{
    Store(L"Counter", StoredLiteral(L"238\0Processor\0\0"));
    EXPECT_EQ(CPerfLib(english, false, true).GetTitleIndex(L"Processor"), 0u);
    EXPECT_EQ(CPerfLib(english, true, false).GetTitleIndex(L"Processor"), 238u);
}

TEST_F(PerfLibTest, LanguageWithoutAKeyHasEmptyTables)
{
    Store(L"Counter", StoredLiteral(L"238\0Processor\0\0"));
    CPerfLib german(7, true, true);
    EXPECT_EQ(german.GetTitleIndex(L"Processor"), 0u);
    Titles titles{{L"Kept", 1}};
    Help help{{1, L"Kept"}};
    EXPECT_FALSE(german.GetPerformanceDataCounterTitles(titles));
    EXPECT_FALSE(german.GetPerformanceDataCounterHelp(help));
    EXPECT_EQ(titles, (Titles{{L"Kept", 1}}));
    EXPECT_EQ(help, (Help{{1, L"Kept"}}));
}

TEST_F(PerfLibTest, KeyIsTheLanguageInThreeHexadecimalPlacesOrMore)
{
    const struct
    {
        unsigned short language;
        const wchar_t* key;
    } cases[] = {{0, L"000"}, {0x9, L"009"}, {0x1B, L"01b"}, {0x409, L"409"}, {0xFC0A, L"fc0a"}};
    for (const auto& each : cases)
    {
        const CPerfLib absent(each.language, true, false);
        EXPECT_EQ(absent.GetTitleIndex(L"Here"), 0u) << each.key;
        Store(L"Counter", StoredLiteral(L"5\0Here\0\0"), each.key);
        EXPECT_EQ(CPerfLib(each.language, true, false).GetTitleIndex(L"Here"), 5u) << each.key;
    }
}

TEST_F(PerfLibTest, KeyWithoutTheValueGivesFalse)
{
    Store(L"Counter", StoredLiteral(L"238\0Processor\0\0"));
    Help help{{1, L"Kept"}};
    EXPECT_FALSE(m_english.GetPerformanceDataCounterHelp(help));
    EXPECT_EQ(help.size(), 1u);
}

TEST_F(PerfLibTest, TitleThatOccursTwiceStandsForItsFirstNumber)
{
    EXPECT_EQ(TitlesOf(StoredLiteral(L"9\0Twice\0003\0Twice\0004\0Once\0\0")), (Titles{{L"Twice", 9}, {L"Once", 4}}));
}

TEST_F(PerfLibTest, NumberThatOccursTwiceKeepsItsFirstHelp)
{
    Store(L"Help", StoredLiteral(L"3\0first\0003\0second\0\0"));
    Help help;
    EXPECT_TRUE(m_english.GetPerformanceDataCounterHelp(help));
    EXPECT_EQ(help, (Help{{3, L"first"}}));
}

TEST_F(PerfLibTest, EntriesOfTheMapStay)
{
    Store(L"Counter", StoredLiteral(L"3\0System\0004\0Memory\0\0"));
    Titles titles{{L"System", 77}, {L"Mine", 78}};
    EXPECT_TRUE(m_english.GetPerformanceDataCounterTitles(titles));
    EXPECT_EQ(titles, (Titles{{L"System", 77}, {L"Mine", 78}, {L"Memory", 4}}));
}

TEST_F(PerfLibTest, ValueThatBeginsWithAnEmptyTextGivesAnEmptyMapAndTrue)
{
    EXPECT_EQ(TitlesOf(StoredLiteral(L"\0003\0System\0\0")), Titles());
    EXPECT_EQ(TitlesOf(StoredLiteral(L"\0")), Titles());
}

TEST_F(PerfLibTest, ValueWithoutBytesGivesAnEmptyMapAndTrue) { EXPECT_EQ(TitlesOf(""), Titles()); }

TEST_F(PerfLibTest, EmptyNumberEndsTheTableAndAnEmptyTextDoesNot)
{
    EXPECT_EQ(TitlesOf(StoredLiteral(L"1\0\0003\0System\0\0004\0Memory\0\0")), (Titles{{L"", 1}, {L"System", 3}}));
}

TEST_F(PerfLibTest, TableOfAnyTypeIsRead)
{
    Store(L"Counter", StoredLiteral(L"3\0System\0\0"), L"009", REG_BINARY);
    EXPECT_EQ(CPerfLib(english, true, false).GetTitleIndex(L"System"), 3u);
}

TEST_F(PerfLibTest, CharacterOutsideTheBasicPlaneIsOne)
{
    EXPECT_EQ(TitlesOf(Stored(std::wstring(L"3\0Größe 😀\0\0", sizeof(L"3\0Größe 😀\0\0") / sizeof(wchar_t) - 1))),
              (Titles{{L"Größe 😀", 3}}));
}

TEST_F(PerfLibTest, NumbersAreThoseOfTheSystem)
{
    constexpr int most = std::numeric_limits<int>::max();
    const struct
    {
        const wchar_t* text;
        int number;
    } cases[] = {{L"0", 0},
                 {L"007", 7},
                 {L" \t\n\v\f\r 42", 42},
                 {L"+5", 5},
                 {L"-5", -5},
                 {L" -5 ", -5},
                 {L"+-5", 0},
                 {L"- 5", 0},
                 {L"--5", 0},
                 {L"12ab", 12},
                 {L"1 2", 1},
                 {L"0x10", 0},
                 {L"x", 0},
                 {L" ", 0},
                 {L"-", 0},
                 {L"2147483646", most - 1},
                 {L"2147483647", most},
                 {L"2147483648", most},
                 {L"4294967296", most},
                 {L"-2147483647", -most},
                 {L"-2147483648", -most - 1},
                 {L"-2147483649", -most - 1},
                 {L"99999999999999999999999999999999", most},
                 {L"-99999999999999999999999999999999", -most - 1},
                 {L"\x00A0\x3000\x0663\xFF17", 37}};
    for (const auto& each : cases)
    {
        EXPECT_EQ(NumberOf(each.text), each.number) << each.text;
#ifdef _WIN32
        EXPECT_EQ(::_wtoi(each.text), each.number) << each.text;
#endif
    }
}

TEST_F(PerfLibTest, NegativeNumberIsGivenIn32Bits)
{
    Store(L"Counter", StoredLiteral(L"-1\0Odd\0\0"));
    EXPECT_EQ(CPerfLib(english, true, false).GetTitleIndex(L"Odd"), 0xFFFFFFFFu);
}

#ifdef _WIN32
TEST_F(PerfLibTest, EachCharacterInANumberIsWhatTheSystemTakesItFor)
{
    std::wstring pairs;
    const auto textOf = [](int unit) { return std::wstring(1, static_cast<wchar_t>(unit)) + L"7"; };
    for (int unit = 1; unit <= 0xFFFF; ++unit)
        pairs += textOf(unit) + L'\0' + std::to_wstring(unit) + L'\0';
    const Titles titles = TitlesOf(Stored(pairs));
    EXPECT_EQ(titles.size(), 0xFFFFu);
    for (int unit = 1; unit <= 0xFFFF; ++unit)
        EXPECT_EQ(titles.at(std::to_wstring(unit)), ::_wtoi(textOf(unit).c_str())) << unit;
}
#endif

TEST_F(PerfLibTest, TableCutAtEveryByteGivesWhatIsWholeAndTheTextThatWasCut)
{
    const std::string whole = StoredLiteral(L"12\0System\0004\0Memory\0\0");
    for (std::size_t size = 0; size <= whole.size(); ++size)
    {
        Titles expected;
        const std::size_t units = size / sizeof(char16_t);
        if (units > 3)
            expected[std::wstring(L"System", std::min<std::size_t>(units - 3, 6))] = 12;
        if (units > 12)
            expected[std::wstring(L"Memory", std::min<std::size_t>(units - 12, 6))] = 4;
        EXPECT_EQ(TitlesOf(whole.substr(0, size)), expected) << size;
    }
}

TEST_F(PerfLibTest, NumberWithAnEmptyTextThatIsAllThereIsAPair)
{
    EXPECT_EQ(TitlesOf(StoredLiteral(L"12\0")), Titles());
    EXPECT_EQ(TitlesOf(StoredLiteral(L"12\0\0")), (Titles{{L"", 12}}));
}

/// Hands out the memory of a table with inaccessible pages around it.
struct GuardingHeap final : utility::platform::HeapService
{
    void* Allocate(std::size_t size) override
    {
        block = std::make_unique<GuardedText>(std::string(size, 'x'), GuardedText::Touches::pageBehind);
        return const_cast<char*>(block->First());
    }
    void Free(void*) override { block.reset(); }

    std::unique_ptr<GuardedText> block;
    const support::Substitute<utility::platform::HeapService> scope{utility::platform::HeapSlot(), *this};
};

TEST_F(PerfLibTest, NothingOutsideTheBytesIsRead)
{
    const std::string whole = StoredLiteral(L"12\0System\0004\0Memory\0\0");
    const GuardingHeap heap;
    // Wine writes a null behind a text of a single byte.
    for (std::size_t size = 2; size <= whole.size(); ++size)
        EXPECT_LE(TitlesOf(whole.substr(0, size)).size(), 2u);
    EXPECT_EQ(heap.block, nullptr);
}

TEST_F(PerfLibTest, WithoutMemoryForTheValueTheMapStaysAndTrueIsDeliberatelyGiven)
{
    const std::string table = StoredLiteral(L"3\0System\0\0");
    Store(L"Counter", table);
    support::ForwardingHeap heap;
    heap.failAt = 1;
    Titles titles{{L"Kept", 1}};
    EXPECT_TRUE(m_english.GetPerformanceDataCounterTitles(titles));
    EXPECT_EQ(titles, (Titles{{L"Kept", 1}}));
    EXPECT_EQ(heap.requests, std::vector<std::size_t>{table.size()});
}

TEST_F(PerfLibTest, MemoryOfTheValueIsGivenBack)
{
    Store(L"Counter", StoredLiteral(L"3\0System\0\0"));
    const support::ForwardingHeap heap;
    Titles titles;
    EXPECT_TRUE(m_english.GetPerformanceDataCounterTitles(titles));
    EXPECT_EQ(titles.size(), 1u);
    EXPECT_EQ(heap.requests.size(), 1u);
    EXPECT_TRUE(heap.live.empty());
}

/// Fails at the reading of a value's bytes, or does something ahead of it.
struct OddRegistry final : support::ForwardingRegistry
{
    LSTATUS RegOpenKeyExW(HKEY parent, const wchar_t* subKey, DWORD access, HKEY& key) override
    {
        accesses.push_back(access);
        keys.emplace_back(subKey);
        return ForwardingRegistry::RegOpenKeyExW(parent, subKey, access, key);
    }
    LSTATUS RegQueryValueExW(HKEY key, const wchar_t* name, DWORD* type, void* data, DWORD* size) override
    {
        if (data != nullptr && status != 0)
            return status;
        if (data != nullptr && ahead)
            ahead();
        return ForwardingRegistry::RegQueryValueExW(key, name, type, data, size);
    }
    LSTATUS RegCloseKey(HKEY key) override
    {
        ++closed;
        return ForwardingRegistry::RegCloseKey(key);
    }

    LSTATUS status = 0;
    std::function<void()> ahead;
    std::vector<DWORD> accesses;
    std::vector<std::wstring> keys;
    int closed = 0;
};

TEST_F(PerfLibTest, KeyIsOpenedByItsNameInLowerCase)
{
    const OddRegistry registry;
    const CPerfLib absent(0xC1B, true, false);
    EXPECT_EQ(registry.keys,
              std::vector<std::wstring>{L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Perflib\\c1b"});
}

TEST_F(PerfLibTest, ValueThatCannotBeReadAnyMoreLeavesTheMapAndTrueIsDeliberatelyGiven)
{
    Store(L"Counter", StoredLiteral(L"3\0System\0\0"));
    const support::ForwardingHeap heap;
    OddRegistry registry;
    registry.status = ERROR_ACCESS_DENIED;
    Titles titles{{L"Kept", 1}};
    EXPECT_TRUE(m_english.GetPerformanceDataCounterTitles(titles));
    EXPECT_EQ(titles, (Titles{{L"Kept", 1}}));
    EXPECT_EQ(heap.requests.size(), 1u);
    EXPECT_TRUE(heap.live.empty());
    EXPECT_EQ(registry.accesses, std::vector<DWORD>{0x20019});
    EXPECT_EQ(registry.closed, 1);
}

TEST_F(PerfLibTest, ValueThatGrowsMeanwhileLeavesTheMap)
{
    Store(L"Counter", StoredLiteral(L"3\0System\0\0"));
    OddRegistry registry;
    registry.ahead = [&] { Store(L"Counter", StoredLiteral(L"3\0System\0004\0Memory\0\0")); };
    Titles titles;
    EXPECT_TRUE(m_english.GetPerformanceDataCounterTitles(titles));
    EXPECT_EQ(titles, Titles());
}

TEST_F(PerfLibTest, ValueThatShrinksMeanwhileGivesWhatIsLeft)
{
    Store(L"Counter", StoredLiteral(L"3\0System\0004\0Memory\0\0"));
    OddRegistry registry;
    registry.ahead = [&] { Store(L"Counter", StoredLiteral(L"4\0Mem")); };
    Titles titles;
    EXPECT_TRUE(m_english.GetPerformanceDataCounterTitles(titles));
    EXPECT_EQ(titles, (Titles{{L"Mem", 4}}));
}

TEST_F(PerfLibTest, CopiesAndMovesTakeTheLanguageAndBothTables)
{
    Store(L"Counter", StoredLiteral(L"3\0System\0\0"));
    Store(L"Help", StoredLiteral(L"3\0Help\0\0"));
    const auto isWhole = [](CPerfLib names)
    {
        Help help;
        return names.GetTitleIndex(L"System") == 3 && names.GetPerformanceDataCounterHelp(help) && help.size() == 1;
    };
    CPerfLib names(english, true, true);
    EXPECT_TRUE(isWhole(names));
    CPerfLib other(7, true, true);
    other = names;
    EXPECT_TRUE(isWhole(other));
    EXPECT_TRUE(isWhole(names));
    CPerfLib moved(7, false, false);
    moved = std::move(other);
    EXPECT_TRUE(isWhole(moved));
    EXPECT_TRUE(isWhole(std::move(moved)));
}

struct ObjectOfBlock
{
    DWORD length;
    DWORD titleIndex;
};

/// A block whose header says how many objects and how many bytes there are; those of the objects follow it.
std::string Block(const std::vector<ObjectOfBlock>& objects)
{
    std::string bytes(sizeof(_PERF_DATA_BLOCK), '\x55');
    for (const ObjectOfBlock& each : objects)
    {
        std::string object(std::max<std::size_t>(sizeof(_PERF_OBJECT_TYPE), each.length), '\x66');
        std::memcpy(object.data(), &each.length, sizeof(DWORD));
        std::memcpy(object.data() + 12, &each.titleIndex, sizeof(DWORD));
        bytes += object;
    }
    const DWORD header[] = {static_cast<DWORD>(bytes.size()), sizeof(_PERF_DATA_BLOCK),
                            static_cast<DWORD>(objects.size())};
    std::memcpy(bytes.data() + 20, header, sizeof(header));
    return bytes;
}

void PutNumber(std::string& bytes, std::size_t at, DWORD number)
{
    std::memcpy(&bytes.at(at + sizeof(number) - 1) - (sizeof(number) - 1), &number, sizeof(number));
}

constexpr std::ptrdiff_t noObject = -1;

/// Where the object is that is found in a block with nothing readable behind it.
std::ptrdiff_t PlaceOfObject(const std::string& bytes, DWORD titleIndex)
{
    const GuardedText block(bytes, GuardedText::Touches::pageBehind);
    auto* const start = const_cast<char*>(block.First());
    auto* const object = CPerfLib::FindObject(reinterpret_cast<_PERF_DATA_BLOCK*>(start), titleIndex);
    return object != nullptr ? reinterpret_cast<char*>(object) - start : noObject;
}

constexpr std::ptrdiff_t firstObject = sizeof(_PERF_DATA_BLOCK);

TEST(PerfLibFindObjectTest, FindsTheFirstOfANumber)
{
    const std::string block = Block({{64, 2}, {104, 238}, {72, 4}, {64, 238}});
    EXPECT_EQ(PlaceOfObject(block, 2), firstObject);
    EXPECT_EQ(PlaceOfObject(block, 238), firstObject + 64);
    EXPECT_EQ(PlaceOfObject(block, 4), firstObject + 168);
    EXPECT_EQ(PlaceOfObject(block, 5), noObject);
}

TEST(PerfLibFindObjectTest, NameThatIsNotKnownFindsAnObjectOfNumber0Only)
{
    EXPECT_EQ(PlaceOfObject(Block({{64, 2}}), 0), noObject);
    EXPECT_EQ(PlaceOfObject(Block({{64, 2}, {64, 0}}), 0), firstObject + 64);
}

TEST(PerfLibFindObjectTest, FirstObjectStandsWhereTheHeaderEnds)
{
    std::string block = Block({{64, 2}, {64, 3}});
    PutNumber(block, 24, firstObject + 64);
    PutNumber(block, 28, 1);
    EXPECT_EQ(PlaceOfObject(block, 2), noObject);
    EXPECT_EQ(PlaceOfObject(block, 3), firstObject + 64);
}

TEST(PerfLibFindObjectTest, BlockWithoutObjectsOrNoBlockGivesNull)
{
    std::string block = Block({{64, 2}});
    PutNumber(block, 28, 0);
    EXPECT_EQ(PlaceOfObject(block, 2), noObject);
    EXPECT_EQ(CPerfLib::FindObject(nullptr, 2), nullptr);
}

TEST(PerfLibFindObjectTest, ObjectBehindTheirNumberIsNotLookedAt)
{
    std::string block = Block({{64, 2}, {64, 3}});
    PutNumber(block, 28, 1);
    EXPECT_EQ(PlaceOfObject(block, 2), firstObject);
    EXPECT_EQ(PlaceOfObject(block, 3), noObject);
}

TEST(PerfLibFindObjectTest, MoreObjectsThanThereAreEndWithTheBlock)
{
    std::string block = Block({{64, 2}, {64, 3}});
    PutNumber(block, 28, 0xFFFFFFFF);
    EXPECT_EQ(PlaceOfObject(block, 3), firstObject + 64);
    EXPECT_EQ(PlaceOfObject(block, 4), noObject);
}

TEST(PerfLibFindObjectTest, ObjectWithoutALengthEndsTheSearch)
{
    const std::string block = Block({{0, 2}, {64, 3}});
    EXPECT_EQ(PlaceOfObject(block, 2), firstObject);
    EXPECT_EQ(PlaceOfObject(block, 3), noObject);
}

TEST(PerfLibFindObjectTest, LengthThatWouldLeadBackEndsTheSearch)
{
    for (const unsigned int length : {0xFFFFFFC0u, 0xFFFFFFFFu, 0x80000000u, 0x7FFFFFFFu})
    {
        std::string block = Block({{64, 3}, {64, 2}, {64, 4}});
        PutNumber(block, firstObject + 64, length);
        EXPECT_EQ(PlaceOfObject(block, 2), firstObject + 64) << length;
        EXPECT_EQ(PlaceOfObject(block, 4), noObject) << length;
    }
}

TEST(PerfLibFindObjectTest, ObjectAheadOfAnotherIsNotComeBackTo)
{
    std::string block = Block({{64, 3}, {64, 2}});
    PutNumber(block, 24, firstObject + 64);
    PutNumber(block, firstObject + 64, 0xFFFFFFC0);
    EXPECT_EQ(PlaceOfObject(block, 2), firstObject + 64);
    EXPECT_EQ(PlaceOfObject(block, 3), noObject);
}

TEST(PerfLibFindObjectTest, HeaderThatEndsOutsideTheBlockGivesNull)
{
    for (const auto length :
         {DWORD{0x7FFFFFFF}, DWORD{0xFFFFFFFF}, DWORD{firstObject + 64 - 15}, DWORD{firstObject + 64}})
    {
        std::string block = Block({{64, 2}});
        PutNumber(block, 24, length);
        EXPECT_EQ(PlaceOfObject(block, 0x66666666), noObject) << length;
    }
}

TEST(PerfLibFindObjectTest, BlockCutAnywhereIsReadToItsEndAtMost)
{
    const std::string whole = Block({{64, 2}, {64, 3}});
    for (std::size_t size = 24; size <= whole.size(); ++size)
    {
        std::string cut = whole.substr(0, size);
        PutNumber(cut, 20, static_cast<DWORD>(size));
        EXPECT_EQ(PlaceOfObject(cut, 2), size >= firstObject + 16 ? firstObject : noObject) << size;
        EXPECT_EQ(PlaceOfObject(cut, 3), size >= firstObject + 64 + 16 ? firstObject + 64 : noObject) << size;
    }
}

TEST(PerfLibFindObjectTest, TotalLengthCountsAndNotWhatIsBehindIt)
{
    std::string block = Block({{64, 2}, {64, 3}});
    PutNumber(block, 20, firstObject + 64 + 15);
    EXPECT_EQ(PlaceOfObject(block, 2), firstObject);
    EXPECT_EQ(PlaceOfObject(block, 3), noObject);
    for (DWORD length = 0; length < 32; ++length)
    {
        PutNumber(block, 20, length);
        EXPECT_EQ(PlaceOfObject(block, 2), noObject);
    }
}

TEST(PerfLibFindObjectTest, ObjectsOfOddLengthsAreFoundWhereTheyAre)
{
    std::string block = Block({{64, 2}, {64, 3}, {64, 4}});
    PutNumber(block, firstObject, 17);
    PutNumber(block, firstObject + 17, 3);
    PutNumber(block, firstObject + 20, 5);
    PutNumber(block, firstObject + 29, 9);
    PutNumber(block, firstObject + 32, 10);
    EXPECT_EQ(PlaceOfObject(block, 2), firstObject);
    EXPECT_EQ(PlaceOfObject(block, (9u & 0xFF) | (9u >> 8) | 0x0A000000u), firstObject + 17);
}

}

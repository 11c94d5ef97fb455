#include "examples/executables/Executable.h"
#include "tests/support/FileOfBytes.h"
#include "tests/support/GuardedText.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

using executables::Examine;
using executables::Executable;
using executables::Section;

namespace
{

/// Examines bytes with nothing readable behind them.
std::optional<Executable> ExaminedBytes(const std::string& bytes)
{
    const support::GuardedText guarded(bytes, support::GuardedText::Touches::pageBehind);
    const support::FileOfBytes files({guarded.First(), bytes.size()});
    return Examine(CPEExeFile(L"any"));
}

using Faults = std::vector<std::string>;

/// An ELF file in the making, of one width and one order of bytes.
class ElfBytes
{
public:
    ElfBytes(unsigned width, bool isBigEndian) : m_width(width), m_isBigEndian(isBigEndian) {}

    std::string Number(std::uint64_t number, unsigned size) const
    {
        std::string bytes(size, '\0');
        for (unsigned i = 0; i < size; ++i, number >>= 8)
            bytes[m_isBigEndian ? size - 1 - i : i] = static_cast<char>(number & 0xFF);
        return bytes;
    }
    std::string Word(std::uint64_t number) const { return Number(number, m_width); }
    std::string Half(std::uint64_t number) const { return Number(number, 2); }
    std::string Four(std::uint64_t number) const { return Number(number, 4); }

    /// A part of the file by its place and its size.
    struct Content
    {
        std::uint64_t at;
        std::uint64_t size;
    };

    std::string Segment(std::uint64_t kind, Content content) const
    {
        const std::string places =
            Word(content.at) + Word(content.at + base) + Word(0) + Word(content.size) + Word(content.size);
        return m_width == 8 ? Four(kind) + Four(4) + places + Word(4) : Four(kind) + places + Four(4) + Word(4);
    }

    std::string SectionHeader(std::uint64_t name, std::uint64_t kind, Content content) const
    {
        return Four(name) + Four(kind) + Word(0) + Word(0) + Word(content.at) + Word(content.size) + Four(0) + Four(0) +
               Word(1) + Word(0);
    }

    /// A library or a program with a section of each kind.
    std::string File() const
    {
        const unsigned headerSize = m_width == 8 ? 64 : 52;
        const unsigned segmentSize = m_width == 8 ? 56 : 32;
        const unsigned sectionSize = m_width == 8 ? 64 : 40;
        std::string content;
        const auto add = [&](const std::string& bytes)
        {
            const Content place{headerSize + 4 * segmentSize + content.size(), bytes.size()};
            content += bytes;
            return place;
        };
        const Content interpreter = add(std::string("/lib/ld.so\0", 11));
        const std::string other = Four(4) + Four(2) + Four(1) + std::string("GNU\0no\0\0", 8);
        const std::string foreign = Four(3) + Four(1) + Four(3) + std::string("Go\0\0x\0\0\0", 8);
        const Content notes =
            add(other + foreign + Four(4) + Four(3) + Four(3) + std::string("GNU\0\x0A\xBC\xDE\0", 8));
        const Content texts = add(std::string("\0libone.so\0libtwo.so.2\0", 23));
        std::string entries;
        for (const auto& [tag, value] : dynamic)
            entries += Word(tag) + Word(tag == 5 ? texts.at + base : value);
        const Content needed = add(entries + Word(0) + Word(0) + Word(1) + Word(1));
        const Content names = add(std::string("\0.names\0.bss\0.text\0", 19));
        const Content whole{0, headerSize + 4 * segmentSize + content.size()};
        const std::string header = "\x7F"
                                   "ELF" +
                                   Number(m_width / 4, 1) + Number(m_isBigEndian ? 2 : 1, 1) + std::string(10, '\1') +
                                   Half(type) + Half(machine) + Four(1) + Word(0) + Word(headerSize) +
                                   Word(whole.size) + Four(0) + Half(headerSize) + Half(segmentSize) + Half(4) +
                                   Half(sectionSize) + Half(manySections ? 0 : 4) + Half(manySections ? 0xFFFF : 1);
        std::string first = SectionHeader(0, 0, {0, manySections ? 4u : 0u});
        if (manySections)
            first.replace(8 + 4 * m_width, 4, Four(1));
        return header + (hasInterpreter ? Segment(3, interpreter) : Segment(0, {0, 0})) + Segment(2, needed) +
               Segment(1, whole) + Segment(4, notes) + content + first + SectionHeader(1, 3, names) +
               SectionHeader(8, 8, {1, 1'000'000}) + SectionHeader(13, 1, texts);
    }

    std::uint64_t base = 0x10000;
    std::uint64_t type = 3;
    std::uint64_t machine = 183;
    bool hasInterpreter = true;
    bool manySections = false;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> dynamic = {{1, 1}, {5, 0}, {1, 11}};

private:
    unsigned m_width;
    bool m_isBigEndian;
};

class ElfTest : public testing::TestWithParam<std::pair<unsigned, bool>>
{
protected:
    ElfBytes m_elf{GetParam().first, GetParam().second};
};

/// A portable executable in the making, with a section of 512 bytes at the address 0x1000.
struct PeBytes
{
    static void Put(std::string& bytes, std::size_t at, std::uint64_t number, unsigned size)
    {
        for (unsigned i = 0; i < size; ++i)
            bytes.at(at + i) = static_cast<char>(number >> (8 * i) & 0xFF);
    }

    std::string File() const
    {
        const std::size_t optionalSize = magic == 0x20B ? 240 : 224;
        std::string bytes(512 + 512, '\0');
        Put(bytes, 0, 0x5A4D, 2);
        Put(bytes, 24, 64, 2);
        Put(bytes, 60, header, 4);
        Put(bytes, header, 0x4550, 4);
        Put(bytes, header + 4, 0x8664, 2);
        Put(bytes, header + 6, 2, 2);
        Put(bytes, header + 8, time, 4);
        Put(bytes, header + 12, 1024, 4);
        Put(bytes, header + 16, 2, 4);
        Put(bytes, header + 20, optionalSize, 2);
        Put(bytes, header + 22, characteristics, 2);
        const std::size_t optional = header + 24;
        Put(bytes, optional, magic, 2);
        Put(bytes, optional + 68, subsystem, 2);
        const std::size_t directories = optional + (magic == 0x20B ? 112 : 96);
        Put(bytes, directories - 4, 16, 4);
        Put(bytes, directories + 8, 0x1010, 4);
        const std::size_t sections = optional + optionalSize;
        for (std::size_t i = 0; i < 2; ++i)
        {
            const std::size_t at = sections + 40 * i;
            bytes.replace(at, 8, i == 0 ? std::string("/7\0\0\0\0\0\0", 8) : std::string("eightlen"));
            Put(bytes, at + 8, i == 0 ? 0x1F0 : 77, 4);
            Put(bytes, at + 12, i == 0 ? 0x1000 : 0x2000, 4);
            Put(bytes, at + 16, i == 0 ? 512 : 0, 4);
            Put(bytes, at + 20, i == 0 ? 512 : 0, 4);
        }
        // The imports: two libraries, and the end.
        Put(bytes, 512 + 0x10 + 12, 0x1100, 4);
        Put(bytes, 512 + 0x24 + 12, 0x1110, 4);
        bytes.replace(512 + 0x100, 7, std::string("one.dll"));
        bytes.replace(512 + 0x110, 7, std::string("two.dll"));
        // Two symbols, and the texts of long names.
        return bytes + std::string(2 * 18, '#') + std::string("\x17\0\0\0ab\0.debug_longer\0", 21);
    }

    std::size_t header = 128;
    std::uint64_t magic = 0x20B;
    std::uint64_t characteristics = 0x22;
    std::uint64_t subsystem = 3;
    std::uint64_t time = 1'234'567'890;
};

}

TEST_P(ElfTest, TellsWhatIsInIt)
{
    const auto elf = ExaminedBytes(m_elf.File());
    ASSERT_TRUE(elf);
    const auto& [width, isBigEndian] = GetParam();
    EXPECT_EQ(elf->kind, std::string("ELF, ") + (width == 8 ? "64" : "32") + " bits, " +
                             (isBigEndian ? "big" : "little") + "-endian, program");
    EXPECT_EQ(elf->machine, "ARM64");
    EXPECT_EQ(elf->built, "");
    EXPECT_EQ(elf->buildId, "0abcde");
    EXPECT_EQ(elf->interpreter, "/lib/ld.so");
    EXPECT_EQ(elf->needed, (std::vector<std::string>{"libone.so", "libtwo.so.2"}));
    EXPECT_EQ(elf->sections, (std::vector<Section>{{".names", 19}, {".bss", 1'000'000}, {".text", 23}}));
    EXPECT_EQ(elf->faults, Faults());
}

TEST_P(ElfTest, TypeIsTold)
{
    const auto kindOf = [this]
    {
        const std::string kind = ExaminedBytes(m_elf.File())->kind;
        return kind.substr(kind.rfind(", ") + 2);
    };
    m_elf.dynamic.emplace_back(14, 1);
    EXPECT_EQ(kindOf(), "library") << "with a name of its own";
    m_elf.dynamic.emplace_back(0x6FFFFFFB, 0x08000001);
    EXPECT_EQ(kindOf(), "program");
    m_elf.dynamic.back().second = 0x1;
    EXPECT_EQ(kindOf(), "library");
    m_elf.dynamic.clear();
    EXPECT_EQ(kindOf(), "program");
    m_elf.hasInterpreter = false;
    EXPECT_EQ(kindOf(), "library");
    m_elf.type = 1;
    EXPECT_EQ(kindOf(), "object file");
    m_elf.type = 2;
    EXPECT_EQ(kindOf(), "program");
    m_elf.type = 4;
    EXPECT_EQ(kindOf(), "core dump");
    m_elf.type = 5;
    EXPECT_EQ(kindOf(), "of an unknown type");
}

TEST_P(ElfTest, FirstSectionCountsWhatSixteenBitsCannot)
{
    m_elf.manySections = true;
    const auto elf = ExaminedBytes(m_elf.File());
    EXPECT_EQ(elf->sections, (std::vector<Section>{{".names", 19}, {".bss", 1'000'000}, {".text", 23}}));
    EXPECT_EQ(elf->faults, Faults());
}

TEST_P(ElfTest, NamesAreMissingWithoutTheirTable)
{
    m_elf.dynamic.erase(m_elf.dynamic.begin() + 1);
    for (const std::uint64_t base : {0, 0x10000})
    {
        m_elf.base = base;
        EXPECT_EQ(ExaminedBytes(m_elf.File())->needed, (std::vector<std::string>{"", ""}));
    }
}

TEST_P(ElfTest, LibrariesAreListedUpToALimit)
{
    m_elf.dynamic.resize(5000, {1, 1});
    EXPECT_EQ(ExaminedBytes(m_elf.File())->needed.size(), Executable::mostNeeded);
}

TEST_P(ElfTest, CutAtEveryByteItSaysWhatIsMissing)
{
    const std::string whole = m_elf.File();
    for (std::size_t size = 1; size < whole.size(); ++size)
    {
        SCOPED_TRACE(size);
        const auto elf = ExaminedBytes(whole.substr(0, size));
        ASSERT_EQ(elf.has_value(), size >= 4);
        ASSERT_TRUE(!elf || !elf->faults.empty());
    }
}

TEST_P(ElfTest, WildValuesAreHarmless)
{
    const std::string whole = m_elf.File();
    for (std::size_t at = 4; at + 4 <= whole.size(); ++at)
    {
        for (const auto value : {"\0\0\0\0", "\xFF\xFF\xFF\xFF", "\0\0\0\x80", "\xFF\xFF\xFF\x7F", "\x80\0\0\0"})
        {
            std::string bytes = whole;
            bytes.replace(at, 4, value, 4);
            ASSERT_TRUE(ExaminedBytes(bytes));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    WidthsAndOrders, ElfTest,
    testing::Values(std::pair(4u, false), std::pair(4u, true), std::pair(8u, false), std::pair(8u, true)),
    [](const auto& each)
    { return std::string(each.param.first == 8 ? "64" : "32") + (each.param.second ? "BigEndian" : "LittleEndian"); });

TEST(ExecutablesTest, SectionWhoseContentIsBeyondTheFileIsSaid)
{
    const ElfBytes elf(8, false);
    std::string bytes = elf.File();
    const std::size_t last = bytes.size() - 64;
    bytes.replace(last + 24, 8, elf.Word(bytes.size() - 22));
    EXPECT_EQ(ExaminedBytes(bytes)->faults, Faults{"section .text is not all there"});
    bytes.replace(last + 24, 8, elf.Word(bytes.size() - 23));
    EXPECT_EQ(ExaminedBytes(bytes)->faults, Faults());
}

TEST(ExecutablesTest, TableWithEntriesOfAnotherSizeIsNotRead)
{
    const ElfBytes elf(8, false);
    std::string bytes = elf.File();
    bytes.replace(58, 2, elf.Half(65));
    EXPECT_EQ(ExaminedBytes(bytes)->faults, Faults{"a table of its header is not all there"});
    EXPECT_TRUE(ExaminedBytes(bytes)->sections.empty());
    EXPECT_EQ(ExaminedBytes(bytes)->buildId, "0abcde");
}

TEST(ExecutablesTest, BuildIdThatIsTooLongIsNone)
{
    const ElfBytes elf(8, false);
    for (const std::size_t size : {64, 65})
    {
        std::string bytes = elf.File();
        const std::string note =
            elf.Four(4) + elf.Four(size) + elf.Four(3) + std::string("GNU\0", 4) + std::string(68, 'x');
        const std::size_t segment = 64 + 3 * 56;
        bytes.replace(segment + 8, 8, elf.Word(bytes.size()));
        bytes.replace(segment + 32, 8, elf.Word(note.size()));
        EXPECT_EQ(ExaminedBytes(bytes + note)->buildId.size(), size == 64 ? 128u : 0u);
    }
}

TEST(ExecutablesTest, TableOfMoreSectionsThanBytesIsNotRead)
{
    ElfBytes elf(8, false);
    elf.manySections = true;
    std::string bytes = elf.File();
    const std::size_t first = bytes.size() - 4 * 64;
    for (const std::uint64_t count : {std::uint64_t{5}, std::uint64_t{1} << 58, ~std::uint64_t{0}})
    {
        bytes.replace(first + 32, 8, elf.Word(count));
        EXPECT_EQ(ExaminedBytes(bytes)->faults, Faults{"a table of its header is not all there"});
    }
}

TEST(ExecutablesTest, LastTableOfLibrariesCounts)
{
    ElfBytes elf(8, false);
    elf.dynamic.emplace_back(14, 1);
    std::string bytes = elf.File();
    const std::string segment = bytes.substr(64 + 56, 56);
    EXPECT_TRUE(ExaminedBytes(bytes)->kind.ends_with("library")) << "with a name of its own";
    bytes.replace(64 + 2 * 56, 56, segment);
    bytes.replace(64 + 56 + 32, 8, elf.Word(32));
    EXPECT_TRUE(ExaminedBytes(bytes)->kind.ends_with("library"));
    bytes.replace(64 + 56, 56, segment);
    bytes.replace(64 + 2 * 56 + 32, 8, elf.Word(32));
    EXPECT_TRUE(ExaminedBytes(bytes)->kind.ends_with("program"));
}

TEST(ExecutablesTest, BuildIdIsLookedForInSoManyNotes)
{
    const ElfBytes elf(8, false);
    const std::string other = elf.Four(0) + elf.Four(0) + elf.Four(1);
    const std::string id = elf.Four(4) + elf.Four(1) + elf.Four(3) + std::string("GNU\0\xAB\0\0\0", 8);
    for (const std::size_t others : {999, 1000})
    {
        std::string notes;
        for (std::size_t i = 0; i < others; ++i)
            notes += other;
        notes += id;
        std::string bytes = elf.File();
        const std::size_t segment = 64 + 3 * 56;
        bytes.replace(segment + 8, 8, elf.Word(bytes.size()));
        bytes.replace(segment + 32, 8, elf.Word(notes.size()));
        EXPECT_EQ(ExaminedBytes(bytes + notes)->buildId, others == 999 ? "ab" : "");
    }
}

// One after the other that would take days.
TEST(ExecutablesTest, SegmentsThatAreAllTheWholeFileAreHarmless)
{
    const ElfBytes elf(8, false);
    constexpr std::uint64_t segments = 0xFFFE;
    std::string bytes = elf.File().substr(0, 64);
    bytes.replace(40, 8, elf.Word(0));
    bytes.replace(56, 2, elf.Half(segments));
    bytes.replace(60, 4, elf.Half(0) + elf.Half(0));
    const std::uint64_t contentAt = 64 + segments * 56;
    std::string content;
    for (std::size_t i = 0; i < 100'000; ++i)
        content += elf.Word(5) + elf.Word(1);
    for (std::uint64_t i = 0; i < segments; ++i)
        bytes += elf.Segment(i % 2 == 0 ? 2 : 4, {contentAt, content.size()});
    const auto examined = ExaminedBytes(bytes + content);
    ASSERT_TRUE(examined);
    EXPECT_EQ(examined->faults, Faults());
    EXPECT_TRUE(examined->needed.empty());
}

TEST(ExecutablesTest, LongTextIsCut)
{
    const ElfBytes elf(8, false);
    std::string bytes = elf.File();
    const std::size_t at = bytes.size();
    bytes += std::string(1000, 'x');
    bytes.replace(64 + 8, 8, elf.Word(at));
    bytes.replace(64 + 32, 8, elf.Word(1000));
    EXPECT_EQ(ExaminedBytes(bytes)->interpreter, std::string(255, 'x'));
}

TEST(ExecutablesTest, PortableExecutableTellsWhatIsInIt)
{
    const auto pe = ExaminedBytes(PeBytes().File());
    ASSERT_TRUE(pe);
    EXPECT_EQ(pe->kind, "portable executable, 64 bits, program for the console");
    EXPECT_EQ(pe->machine, "x86-64");
    EXPECT_EQ(pe->built, "2009-02-13 23:31:30 UTC");
    EXPECT_EQ(pe->sections, (std::vector<Section>{{".debug_longer", 0x1F0}, {"eightlen", 77}}));
    EXPECT_EQ(pe->needed, (std::vector<std::string>{"one.dll", "two.dll"}));
    EXPECT_EQ(pe->buildId, "");
    EXPECT_EQ(pe->faults, Faults());
}

TEST(ExecutablesTest, PortableExecutableOf32BitsToo)
{
    PeBytes pe;
    pe.magic = 0x10B;
    pe.subsystem = 2;
    const auto examined = ExaminedBytes(pe.File());
    EXPECT_EQ(examined->kind, "portable executable, 32 bits, program with windows");
    EXPECT_EQ(examined->needed, (std::vector<std::string>{"one.dll", "two.dll"}));
    EXPECT_EQ(examined->sections.size(), 2u);
}

TEST(ExecutablesTest, PortableExecutableOfAnUnknownKindHasItsSectionsAlone)
{
    PeBytes pe;
    pe.magic = 0x107;
    pe.header = 131;
    const auto examined = ExaminedBytes(pe.File());
    EXPECT_EQ(examined->kind, "portable executable, program");
    EXPECT_EQ(examined->needed, std::vector<std::string>());
    EXPECT_EQ(examined->sections.size(), 2u);
}

TEST(ExecutablesTest, ImportsMayBeginASection)
{
    // The second section follows the first, and has the same bytes from where the imports are.
    std::string bytes = PeBytes().File();
    const std::size_t second = 128 + 24 + 240 + 40;
    PeBytes::Put(bytes, second + 12, 0x1200, 4);
    PeBytes::Put(bytes, second + 16, 496, 4);
    PeBytes::Put(bytes, second + 20, 528, 4);
    PeBytes::Put(bytes, 128 + 24 + 112 + 8, 0x1200, 4);
    EXPECT_EQ(ExaminedBytes(bytes)->needed, (std::vector<std::string>{"one.dll", "two.dll"}));
    PeBytes::Put(bytes, 128 + 24 + 112 - 4, 1, 4);
    EXPECT_EQ(ExaminedBytes(bytes)->needed, std::vector<std::string>()) << "without a place for imports";
}

TEST(ExecutablesTest, SubsystemIsThatOfAProgram)
{
    PeBytes pe;
    for (const auto& [subsystem, text] : std::vector<std::pair<std::uint64_t, std::string>>{
             {1, " without a subsystem"}, {10, " for EFI"}, {12, " for EFI"}, {13, ""}, {0, ""}})
    {
        pe.subsystem = subsystem;
        EXPECT_EQ(ExaminedBytes(pe.File())->kind, "portable executable, 64 bits, program" + text);
    }
    pe.characteristics = 0x2022;
    EXPECT_EQ(ExaminedBytes(pe.File())->kind, "portable executable, 64 bits, library");
}

TEST(ExecutablesTest, TimeHasTheWholeRangeOf32Bits)
{
    PeBytes pe;
    for (const auto& [time, text] :
         std::vector<std::pair<std::uint64_t, std::string>>{{0, ""},
                                                            {1, "1970-01-01 00:00:01 UTC"},
                                                            {951'827'696, "2000-02-29 12:34:56 UTC"},
                                                            {0x80000000, "2038-01-19 03:14:08 UTC"},
                                                            {0xFFFFFFFF, "2106-02-07 06:28:15 UTC"}})
    {
        pe.time = time;
        EXPECT_EQ(ExaminedBytes(pe.File())->built, text);
    }
}

TEST(ExecutablesTest, PortableExecutableCutAtEveryByteSaysWhatIsMissing)
{
    const std::string whole = PeBytes().File();
    for (std::size_t size = 132; size < whole.size(); ++size)
    {
        SCOPED_TRACE(size);
        const auto pe = ExaminedBytes(whole.substr(0, size));
        // Without the texts of long names the place is shown, and nothing else is missing.
        const bool isWhole = size >= 1024;
        ASSERT_EQ(pe->faults.empty(), isWhole);
        ASSERT_EQ(pe->sections.size(), size < 132 + 20 + 240 + 80 ? 0u : 2u);
        ASSERT_TRUE(!isWhole || pe->sections[0].name == "/7" ||
                    (!pe->sections[0].name.empty() && std::string(".debug_longer").starts_with(pe->sections[0].name)));
    }
}

TEST(ExecutablesTest, WildValuesInAPortableExecutableAreHarmless)
{
    const std::string whole = PeBytes().File();
    for (std::size_t at = 132; at + 4 <= whole.size(); ++at)
    {
        for (const auto value : {"\0\0\0\0", "\xFF\xFF\xFF\xFF", "\0\0\0\x80", "\xFF\xFF\xFF\x7F", "\x10\x10\0\0"})
        {
            std::string bytes = whole;
            bytes.replace(at, 4, value, 4);
            const auto pe = ExaminedBytes(bytes);
            ASSERT_TRUE(pe && pe->needed.size() <= Executable::mostNeeded);
        }
    }
}

TEST(ExecutablesTest, OlderExecutablesAreTold)
{
    std::string bytes(0x100, '\0');
    const auto kindWith = [&bytes](std::string_view signature, char system)
    {
        bytes.replace(64, signature.size(), signature);
        bytes[64 + 0x36] = system;
        return ExaminedBytes(bytes)->kind;
    };
    PeBytes::Put(bytes, 0, 0x5A4D, 2);
    EXPECT_EQ(ExaminedBytes(bytes)->kind, "DOS program");
    PeBytes::Put(bytes, 24, 64, 2);
    PeBytes::Put(bytes, 60, 64, 4);
    EXPECT_EQ(kindWith("NE", 1), "16-bit program (NE) for OS/2");
    EXPECT_EQ(kindWith("NE", 2), "16-bit program (NE) for Windows");
    EXPECT_EQ(kindWith("NE", 5), "16-bit program (NE) for an unknown system");
    EXPECT_EQ(kindWith("LE", 0), "program or driver with a linear header (LE)");
    EXPECT_EQ(kindWith("XE", 0), "program with a header of type XE");
    EXPECT_EQ(kindWith("??", 0), "DOS program, followed by what is unknown");
    EXPECT_EQ(ExaminedBytes(bytes)->machine, "x86");
    EXPECT_EQ(ExaminedBytes(bytes)->faults, Faults());
    PeBytes::Put(bytes, 60, 0x101, 4);
    EXPECT_EQ(ExaminedBytes(bytes)->faults, Faults{"the header behind that of DOS would be outside the file"});
    EXPECT_EQ(ExaminedBytes(bytes)->kind, "DOS program, followed by what is unknown");
    PeBytes::Put(bytes, 60, 64, 4);
    kindWith("NE", 1);
    EXPECT_EQ(ExaminedBytes(bytes.substr(0, 64 + 0x36))->faults, Faults{"the file ends in its header"});
    EXPECT_EQ(ExaminedBytes(bytes.substr(0, 64 + 0x37))->faults, Faults());
}

TEST(ExecutablesTest, OtherFilesAreNone)
{
    for (const char* bytes : {"#!/bin/sh", "MZ",
                              "\x7F"
                              "ELD",
                              "\x7F"
                              "EL"})
        EXPECT_FALSE(ExaminedBytes(bytes)) << bytes;
}

TEST(ExecutablesTest, MachinesHaveNames)
{
    EXPECT_EQ(executables::PeMachine(0x14C), "x86");
    EXPECT_EQ(executables::PeMachine(0xAA64), "ARM64");
    EXPECT_EQ(executables::PeMachine(0x1234), "unknown (0x1234)");
    EXPECT_EQ(executables::ElfMachine(62), "x86-64");
    EXPECT_EQ(executables::ElfMachine(243), "RISC-V");
    EXPECT_EQ(executables::ElfMachine(0xF), "PA-RISC");
    EXPECT_EQ(executables::ElfMachine(0), "unknown (0x0000)");
}

TEST(ExecutablesTest, NothingThatIsShownIsACommandToATerminal)
{
    EXPECT_EQ(executables::Shown("lib\x1B[2J\nü\x7F~ "), "lib\\x1B[2J\\x0Aü\\x7F~ ");
    EXPECT_EQ(executables::Shown("\u009B31m\u0080\u009F"), "\\xC2\\x9B31m\\xC2\\x80\\xC2\\x9F");
    EXPECT_EQ(executables::Shown("\u00A0é\u201B\xC2"), "\u00A0é\u201B\xC2");
}

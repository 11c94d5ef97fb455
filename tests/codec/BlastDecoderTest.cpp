#include "utility/codec/BlastDecoder.h"

#include "tests/support/BlastTrial.h"
#include "tests/support/ForwardingHeap.h"
#include "tests/support/GuardedText.h"
#include "tests/support/Implode.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thorough.h"

#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <thread>

using support::BlastDifference;
using support::BlastWriter;
using support::BlockSource;
using support::GuardedText;

namespace
{

constexpr std::uint32_t windowSize = 4096;

/// A stream of bytes in memory, all of it one block.
struct WholeInput
{
    static std::uint32_t Give(void* context, const unsigned char** block)
    {
        auto& input = *static_cast<WholeInput*>(context);
        ++input.asked;
        *block = reinterpret_cast<const unsigned char*>(input.bytes.data());
        const auto size = static_cast<std::uint32_t>(input.bytes.size());
        input.bytes = {};
        return size;
    }

    std::string_view bytes;
    int asked = 0;
};

/// An expansion, to be asked for bytes as a user does.
class Expansion
{
public:
    explicit Expansion(std::string stream, std::vector<std::uint32_t> blocks = {UINT32_MAX})
        : m_source(std::move(stream), std::move(blocks)), m_code(blastInit(BlockSource::Give, &m_source, &m_state))
    {
    }
    Expansion(const Expansion&) = delete;
    Expansion& operator=(const Expansion&) = delete;
    ~Expansion() { blastTerm(m_state); }

    int InitCode() const { return m_code; }
    const BlastState* State() const { return m_state; }
    std::size_t Asked() const { return m_source.Asked(); }

    struct Part
    {
        int code;
        std::string bytes;
        bool operator==(const Part&) const = default;
    };

    Part More(std::size_t size)
    {
        std::string bytes(size, '?');
        std::uint64_t stored = 12345;
        const int code = blastMore(m_state, bytes.data(), size, &stored);
        EXPECT_LE(stored, size);
        EXPECT_EQ(bytes.substr(stored), std::string(size - stored, '?')) << "stored behind what it says";
        return {code, bytes.substr(0, stored)};
    }

    /// All that comes, with the code that ends it.
    Part Rest(std::size_t size = 65536)
    {
        Part all{0, ""};
        while (all.code == 0)
        {
            Part part = More(size);
            all.code = part.code;
            all.bytes += part.bytes;
        }
        return all;
    }

    std::optional<std::uint64_t> SizeAtEndMark() const
    {
        std::uint64_t size = 0;
        return blastEndMarkRead(m_state, &size) == 1 ? std::optional(size) : std::nullopt;
    }

private:
    BlockSource m_source;
    BlastState* m_state = nullptr;
    int m_code;
};

std::ostream& operator<<(std::ostream& stream, const Expansion::Part& part)
{
    return stream << "code " << part.code << ", " << part.bytes.size() << " bytes: " << part.bytes.substr(0, 100);
}

using Part = Expansion::Part;

/// A stream with what it expands to, byte by byte.
struct Written
{
    explicit Written(bool isCoded = false, int dictionaryBits = 6) : writer(isCoded, dictionaryBits) {}

    Written& Literals(std::string_view more)
    {
        writer.Literals(more);
        bytes += more;
        return *this;
    }

    Written& Match(int length, int distance)
    {
        writer.Match(length, distance);
        for (int i = 0; i < length; ++i)
            bytes += bytes[bytes.size() - static_cast<std::size_t>(distance)];
        return *this;
    }

    /// Some text, different everywhere, to so many bytes.
    Written& FillTo(std::size_t size)
    {
        while (bytes.size() < size)
        {
            const std::string text = std::to_string(bytes.size() * 7919) + ' ';
            Literals(text.substr(0, size - bytes.size()));
        }
        return *this;
    }

    std::string End() { return writer.End().Bytes(); }

    BlastWriter writer;
    std::string bytes;
};

/// Literals and matches of any kind, to about so many bytes.
Written AnyElements(std::mt19937& random, bool isCoded, int dictionaryBits, std::size_t size)
{
    Written written(isCoded, dictionaryBits);
    const auto below = [&](std::size_t limit) { return static_cast<int>(random() % limit); };
    while (written.bytes.size() < size)
    {
        if (written.bytes.empty() || below(3) == 0)
        {
            written.Literals(std::string(1, static_cast<char>(below(4) == 0 ? below(256) : 'a' + below(26))));
            continue;
        }
        const int length = below(4) == 0 ? 2 + below(517) : 2 + below(12);
        const auto farthest = std::min(written.bytes.size(), static_cast<std::size_t>(written.writer.Farthest(length)));
        written.Match(length, 1 + below(below(3) == 0 ? std::min<std::size_t>(farthest, 20) : farthest));
    }
    return written;
}

/// Each way in which a stream may be written.
struct Way
{
    bool isCoded;
    int dictionaryBits;
};
constexpr Way ways[] = {{false, 4}, {false, 5}, {false, 6}, {true, 4}, {true, 5}, {true, 6}};

std::ostream& operator<<(std::ostream& stream, const Way& way)
{
    return stream << (way.isCoded ? "coded literals" : "raw literals") << ", " << way.dictionaryBits << " bits";
}

const std::string helloWorld("\x00\x05\x90\x94\x61\xC3\xE6\x0D\x88\x2B\x6F\xE4\xB0\x21\x13\x12\xF0\x0F", 18);

}

TEST(BlastDecoderTest, ExpandsWhatAnotherProgramHasImploded)
{
    Expansion expansion(helloWorld);
    EXPECT_EQ(expansion.InitCode(), 0);
    EXPECT_EQ(expansion.More(100), (Part{0, "Hello World!"}));
    EXPECT_EQ(expansion.More(100), (Part{1, ""}));
}

TEST(BlastDecoderTest, LastBytesComeWithCodeZeroAndTheEndWithEachCallBehindThem)
{
    const std::string stream = Written().Literals("abcdef").End();
    Expansion exact(stream);
    EXPECT_EQ(exact.More(6), (Part{0, "abcdef"}));
    EXPECT_EQ(exact.More(0), (Part{1, ""}));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(exact.More(6), (Part{1, ""}));
    Expansion inParts(stream);
    EXPECT_EQ(inParts.More(4), (Part{0, "abcd"}));
    EXPECT_EQ(inParts.More(0), (Part{0, ""}));
    EXPECT_EQ(inParts.More(4), (Part{0, "ef"}));
    EXPECT_EQ(inParts.More(4), (Part{1, ""}));
}

TEST(BlastDecoderTest, HeaderOfAnotherKindIsRefusedWithAStateThatIsToBeEnded)
{
    for (const auto& [header, code, asked] :
         {std::tuple("\2\6", -1, 1u), std::tuple("\xFF\6", -1, 1u), std::tuple("\0\3", -2, 2u),
          std::tuple("\1\7", -2, 2u), std::tuple("\1\0", -2, 2u), std::tuple("\0\xFF", -2, 2u)})
    {
        const support::ForwardingHeap heap;
        {
            const Expansion expansion(std::string(header, 2), {1});
            EXPECT_EQ(expansion.InitCode(), code);
            EXPECT_NE(expansion.State(), nullptr);
            EXPECT_EQ(expansion.Asked(), asked) << "the second byte is not for a first one that is refused";
            EXPECT_EQ(heap.live.size(), 1u);
        }
        EXPECT_TRUE(heap.live.empty());
    }
}

TEST(BlastDecoderTest, EachHeaderOfAStreamIsAccepted)
{
    for (const Way& way : ways)
        EXPECT_EQ(Expansion(BlastWriter(way.isCoded, way.dictionaryBits).Bytes()).InitCode(), 0) << way;
}

TEST(BlastDecoderTest, CutHeaderLeavesNoState)
{
    const support::ForwardingHeap heap;
    for (const std::string& header : {std::string(), std::string("\0", 1), std::string("\1", 1)})
    {
        const Expansion expansion(header);
        EXPECT_EQ(expansion.InitCode(), 2);
        EXPECT_EQ(expansion.State(), nullptr);
    }
    EXPECT_TRUE(heap.live.empty());
}

TEST(BlastDecoderTest, WithoutMemoryThereIsNoState)
{
    support::ForwardingHeap heap;
    heap.failAt = 1;
    const Expansion expansion(helloWorld);
    EXPECT_EQ(expansion.InitCode(), 1);
    EXPECT_EQ(expansion.State(), nullptr);
    EXPECT_EQ(expansion.Asked(), 0u);
}

TEST(BlastDecoderTest, TakesMemoryOnceAndGivesItBack)
{
    const support::ForwardingHeap heap;
    {
        Expansion expansion(Written().FillTo(20000).End());
        EXPECT_EQ(expansion.Rest().code, 1);
        EXPECT_EQ(heap.requests.size(), 1u);
    }
    EXPECT_TRUE(heap.live.empty());
}

TEST(BlastDecoderTest, NullIsEndedWithoutHarm) { blastTerm(nullptr); }

TEST(BlastDecoderTest, EveryLiteralIsExpanded)
{
    for (const Way& way : ways)
    {
        Written written(way.isCoded, way.dictionaryBits);
        for (int round = 0; round < 3; ++round)
        {
            for (int byte = 0; byte < 256; ++byte)
                written.Literals(std::string(1, static_cast<char>(byte * (2 * round + 1))));
        }
        EXPECT_EQ(Expansion(written.End()).Rest(), (Part{1, written.bytes})) << way;
    }
}

TEST(BlastDecoderTest, EveryLengthIsExpanded)
{
    for (const Way& way : ways)
    {
        Written written(way.isCoded, way.dictionaryBits);
        written.FillTo(700);
        for (int length = 2; length <= 518; ++length)
            written.Literals("-").Match(length, std::min(600, written.writer.Farthest(length))).Literals("+");
        EXPECT_EQ(Expansion(written.End()).Rest(), (Part{1, written.bytes})) << way;
    }
}

TEST(BlastDecoderTest, EveryDistanceIsExpanded)
{
    for (const Way& way : ways)
    {
        Written written(way.isCoded, way.dictionaryBits);
        written.FillTo(5000);
        for (int distance = 1; distance <= written.writer.Farthest(3); ++distance)
            written.Match(3 + distance % 20, distance).Literals(std::to_string(distance));
        EXPECT_EQ(Expansion(written.End()).Rest(), (Part{1, written.bytes})) << way;
    }
}

TEST(BlastDecoderTest, DistanceOfAMatchOfTwoHasTwoLowBitsWhateverTheDictionary)
{
    for (const Way& way : ways)
    {
        Written written(way.isCoded, way.dictionaryBits);
        written.FillTo(300);
        const std::size_t before = written.writer.BitCount();
        written.Match(2, 1);
        EXPECT_EQ(written.writer.BitCount() - before, 1u + 3u + 2u + 2u);
        for (int distance = 1; distance <= 256; ++distance)
            written.Match(2, distance).Literals("x");
        EXPECT_EQ(Expansion(written.End()).Rest(), (Part{1, written.bytes})) << way;
    }
}

TEST(BlastDecoderTest, DistanceOfOneRepeatsTheLastByte)
{
    EXPECT_EQ(Expansion(Written().Literals("ab").Match(10, 1).End()).Rest(), (Part{1, "abbbbbbbbbbb"}));
}

TEST(BlastDecoderTest, MatchMayRepeatItself)
{
    for (int distance = 1; distance <= 40; ++distance)
    {
        for (const int length : {2, 3, 8, 9, 31, 32, 33, 100, 518})
        {
            Written written;
            written.FillTo(50).Match(length, distance).Literals("behind");
            EXPECT_EQ(Expansion(written.End()).Rest(), (Part{1, written.bytes})) << distance << ", " << length;
        }
    }
}

TEST(BlastDecoderTest, MatchAcrossTheWindowStopsAtItsEndAndGoesOnWithoutAFlag)
{
    for (const int length : {2, 3, 5, 8, 9, 20, 33, 518})
    {
        for (int inside = 1; inside < std::min(length, 40); ++inside)
        {
            Written written;
            written.FillTo(windowSize - static_cast<std::size_t>(inside)).Match(length, 200).Literals("behind");
            Expansion expansion(written.End(), {1});
            EXPECT_EQ(expansion.More(windowSize), (Part{0, written.bytes.substr(0, windowSize)}));
            // All of the match is read by now, and of the next element nothing.
            Expansion::Part rest = expansion.Rest();
            EXPECT_EQ(rest, (Part{1, written.bytes.substr(windowSize)})) << length << ", " << inside;
        }
    }
}

TEST(BlastDecoderTest, SuspendedMatchNeedsNoInput)
{
    BlastWriter writer(false, 6);
    writer.Literals(std::string(windowSize - 3, 'x')).Match(10, 1);
    const std::size_t used = writer.Bytes().size();
    Expansion expansion(writer.Bytes(), {1});
    EXPECT_EQ(expansion.More(windowSize).code, 0);
    EXPECT_EQ(expansion.Asked(), used);
    EXPECT_EQ(expansion.More(100), (Part{2, ""}));
    EXPECT_EQ(expansion.Asked(), used + 1);
    EXPECT_EQ(expansion.More(7), (Part{0, std::string(7, 'x')}));
}

TEST(BlastDecoderTest, DistanceFromAheadOfTheFirstByteIsRefused)
{
    for (const Way& way : ways)
    {
        for (const int length : {2, 3, 9, 518})
        {
            // One element, and some behind many others.
            for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{100}})
            {
                Written written(way.isCoded, way.dictionaryBits);
                written.FillTo(size);
                written.writer.Match(length, static_cast<int>(size) + 1).Literals("some more, and still more").End();
                Expansion expansion(written.writer.Bytes());
                EXPECT_EQ(expansion.More(1000), (Part{-3, ""})) << way << ", " << length;
                const Part rest = expansion.More(1000);
                EXPECT_EQ(rest.bytes.substr(0, size), written.bytes);
            }
        }
        Written farthest(way.isCoded, way.dictionaryBits);
        farthest.FillTo(100).Match(3, 100).Match(20, 103);
        EXPECT_EQ(Expansion(farthest.End()).Rest(), (Part{1, farthest.bytes})) << way;
    }
}

TEST(BlastDecoderTest, DistanceBeyondTheFirstWindowReadsTheOneBefore)
{
    // As far back as can be, at each place of the second window; the first one stays refused until it is given.
    Written written;
    written.FillTo(windowSize);
    for (int i = 0; i < 100; ++i)
        written.Match(40, 4096).Literals("!");
    EXPECT_EQ(Expansion(written.End()).Rest(), (Part{1, written.bytes}));
    Written sooner;
    sooner.FillTo(windowSize - 1);
    sooner.writer.Match(3, 4096);
    EXPECT_EQ(Expansion(sooner.End()).Rest(), (Part{-3, ""}));
}

TEST(BlastDecoderTest, FirstWindowStaysTheFirstBehindARefusedDistance)
{
    BlastWriter writer(false, 6);
    writer.Literals("abc").Match(5, 4).Literals("d").Match(2, 200);
    Expansion expansion(writer.Bytes());
    EXPECT_EQ(expansion.More(10), (Part{-3, ""}));
    EXPECT_EQ(expansion.More(3), (Part{0, "abc"}));
    // The match is taken for a suspended one, from ahead of the first byte, where zeros are; the next is refused again.
    EXPECT_EQ(expansion.More(10), (Part{-3, ""}));
    EXPECT_EQ(expansion.More(6), (Part{0, std::string("\0\0\0\0\0d", 6)}));
}

TEST(BlastDecoderTest, NothingIsExpandedForNoRoom)
{
    Expansion expansion(helloWorld, {1});
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(expansion.More(0), (Part{0, ""}));
    EXPECT_EQ(expansion.Asked(), 2u);
    EXPECT_EQ(expansion.Rest(), (Part{1, "Hello World!"}));
    EXPECT_EQ(expansion.More(0), (Part{1, ""}));
}

TEST(BlastDecoderTest, BlockIsAskedForAtTheBitThatNeedsIt)
{
    // A literal each nine bits: with the last bit of a byte no more is asked for.
    for (std::size_t size = 1; size <= 30; ++size)
    {
        Expansion expansion(BlastWriter(false, 6).Literals(std::string(size, 'x')).End().Bytes(), {1});
        EXPECT_EQ(expansion.Rest(), (Part{1, std::string(size, 'x')}));
        // The header, the literals, the flag and the length of the end mark.
        EXPECT_EQ(expansion.Asked(), 2 + (size * 9 + 1 + 7 + 8 + 7) / 8);
    }
}

TEST(BlastDecoderTest, EndMarkIsTheLastOfTheLengths)
{
    BlastWriter writer(false, 6);
    writer.Literals("a").Match(518, 1);
    EXPECT_EQ(writer.Length(519).Bytes(), BlastWriter(false, 6).Literals("a").Match(518, 1).End().Bytes());
    EXPECT_EQ(Expansion(writer.Bytes()).Rest(), (Part{1, std::string(519, 'a')}));
}

TEST(BlastDecoderTest, StreamOfAMultipleOfTheWindowDeliberatelyEndsInCodeTwo)
{
    for (const std::uint32_t windows : {1u, 2u, 5u})
    {
        for (const std::uint32_t size : {100u, windowSize, windows * windowSize, 1u << 20})
        {
            Written written;
            written.FillTo(windows * windowSize - 90).Match(4, 9).FillTo(windows * windowSize);
            Expansion expansion(written.End());
            EXPECT_EQ(expansion.Rest(size), (Part{2, written.bytes}));
            EXPECT_EQ(expansion.SizeAtEndMark(), written.bytes.size());
            // The end mark was repeated as a match from where the last one was.
            std::string repeated = written.bytes.substr(written.bytes.size() - 9);
            for (std::size_t at = 0; repeated.size() < 9 + 519; ++at)
                repeated += repeated[at];
            EXPECT_EQ(expansion.More(519), (Part{0, repeated.substr(9)}));
        }
    }
}

TEST(BlastDecoderTest, MultipleOfTheWindowReadsOnBehindTheEndMark)
{
    Written written;
    written.FillTo(2 * windowSize - 4).Match(4, 4096);
    written.writer.End();
    written.writer.Literals("behind").End();
    Expansion expansion(written.writer.Bytes());
    const Part all = expansion.Rest();
    EXPECT_EQ(all.code, 1);
    EXPECT_EQ(all.bytes, written.bytes + written.bytes.substr(windowSize, 519) + "behind");
    EXPECT_EQ(expansion.SizeAtEndMark(), written.bytes.size());
}

TEST(BlastDecoderTest, MultipleOfTheWindowWithoutAMatchRepeatsWhatWasThere)
{
    Written written;
    written.FillTo(windowSize);
    Expansion expansion(written.End());
    EXPECT_EQ(expansion.Rest(), (Part{2, written.bytes}));
    EXPECT_EQ(expansion.More(519), (Part{0, written.bytes.substr(0, 519)}));
}

TEST(BlastDecoderTest, EmptyStreamDeliberatelyEndsInCodeTwo)
{
    Expansion expansion(BlastWriter(true, 4).End().Bytes());
    EXPECT_EQ(expansion.More(100), (Part{2, ""}));
    EXPECT_EQ(expansion.SizeAtEndMark(), 0u);
    EXPECT_EQ(expansion.More(519), (Part{0, std::string(519, '\0')}));
}

TEST(BlastDecoderTest, EndMarkTellsAWholeStreamFromACutOne)
{
    Written written;
    written.FillTo(3 * windowSize);
    const std::string stream = written.End();
    Expansion cut(stream.substr(0, stream.size() - 1));
    EXPECT_EQ(cut.Rest(), (Part{2, written.bytes}));
    EXPECT_EQ(cut.SizeAtEndMark(), std::nullopt);

    Expansion whole(helloWorld);
    EXPECT_EQ(whole.SizeAtEndMark(), std::nullopt);
    whole.More(1);
    EXPECT_EQ(whole.SizeAtEndMark(), 12u) << "it is read with the last window, and that is read at once";
    whole.Rest();
    EXPECT_EQ(whole.SizeAtEndMark(), 12u);
}

TEST(BlastDecoderTest, WhatWasExpandedAheadOfACutComesWithTheNextCall)
{
    const std::string stream = Written().Literals("abcdefgh").End();
    Expansion expansion(stream.substr(0, 10));
    EXPECT_EQ(expansion.More(100), (Part{2, ""}));
    EXPECT_EQ(expansion.More(3), (Part{0, "abc"}));
    EXPECT_EQ(expansion.More(100), (Part{2, "defg"})) << "and the input is asked again";
    EXPECT_EQ(expansion.More(0), (Part{0, ""}));

    Written windows;
    windows.FillTo(2 * windowSize + 5);
    Expansion longer(windows.writer.Bytes());
    EXPECT_EQ(longer.More(3 * windowSize), (Part{2, windows.bytes.substr(0, 2 * windowSize)}));
    EXPECT_EQ(longer.More(5), (Part{0, windows.bytes.substr(2 * windowSize)}));
}

TEST(BlastDecoderTest, NothingAroundTheInputIsRead)
{
    std::mt19937 random(1);
    for (const Way& way : ways)
    {
        Written written = AnyElements(random, way.isCoded, way.dictionaryBits, 6000);
        const std::string stream = written.End();
        const GuardedText guarded(stream, GuardedText::Touches::pageBehind);
        WholeInput input{{guarded.First(), stream.size()}};
        BlastState* state = nullptr;
        ASSERT_EQ(blastInit(WholeInput::Give, &input, &state), 0);
        std::string bytes(written.bytes.size(), '?');
        std::uint64_t stored = 0;
        EXPECT_EQ(blastMore(state, bytes.data(), bytes.size(), &stored), 0);
        EXPECT_EQ(stored, bytes.size());
        EXPECT_TRUE(bytes == written.bytes) << way;
        EXPECT_EQ(input.asked, 1);
        blastTerm(state);
    }
}

TEST(BlastDecoderTest, ImplodedTextIsExpanded)
{
    std::string text;
    for (int number = 0; text.size() < 50000; ++number)
        text += std::to_string(number * 37 % 1000) + ".5D" + std::to_string(number % 7) + ", ";
    for (const Way& way : ways)
    {
        const std::string stream = support::Implode(text, way.isCoded, way.dictionaryBits);
        EXPECT_LT(stream.size(), text.size() / 2);
        const Part all = Expansion(stream).Rest();
        EXPECT_EQ(all.code, 1);
        EXPECT_TRUE(all.bytes == text) << way;
    }
}

// Against the model, which goes bit by bit: every code, every state between calls, every time a block is asked for.

TEST(BlastDecoderTest, AnyElementsInAnyPiecesAreExpandedAsBitByBit)
{
    std::mt19937 random(2);
    for (int trial = 0; trial < support::Cases(1500); ++trial)
    {
        const Way way = ways[trial % std::size(ways)];
        Written written = AnyElements(random, way.isCoded, way.dictionaryBits, random() % 20000);
        if (trial % 5 == 0)
            written.FillTo((written.bytes.size() / windowSize + 1) * windowSize);
        std::string stream = written.End();
        if (trial % 3 == 0)
            stream += std::string(random() % 2000, static_cast<char>(random()));
        std::vector<std::uint32_t> blocks(1 + random() % 5);
        for (std::uint32_t& size : blocks)
            size = random() % 3 == 0 ? static_cast<std::uint32_t>(random() % 4)
                                     : static_cast<std::uint32_t>(random() % 3000);
        std::vector<std::uint32_t> parts(1 + random() % 5);
        for (std::uint32_t& size : parts)
            size = static_cast<std::uint32_t>(random() % (random() % 2 == 0 ? 10000 : 30));
        ASSERT_EQ(BlastDifference(stream, blocks, parts), "") << trial;
    }
}

TEST(BlastDecoderTest, StreamCutAnywhereEndsAsBitByBit)
{
    std::mt19937 random(3);
    for (const Way& way : ways)
    {
        Written written = AnyElements(random, way.isCoded, way.dictionaryBits, windowSize - 300);
        while (written.bytes.size() < windowSize + 300)
            written.Match(5, 100).Literals("ab").Match(30, 1000);
        const std::string stream = written.End();
        for (std::size_t size = 0; size <= stream.size(); size += support::Thorough() ? 1 : 7)
            ASSERT_EQ(BlastDifference(stream.substr(0, size), {UINT32_MAX}, {windowSize, 1, 700}), "") << way << size;
    }
}

TEST(BlastDecoderTest, StreamWithAnyBitFlippedIsExpandedAsBitByBit)
{
    std::mt19937 random(4);
    for (const Way& way : ways)
    {
        std::string stream = AnyElements(random, way.isCoded, way.dictionaryBits, 400).End() + "behind it";
        for (std::size_t bit = 0; bit < stream.size() * 8; ++bit)
        {
            const char mask = static_cast<char>(1 << bit % 8);
            stream[bit / 8] = static_cast<char>(stream[bit / 8] ^ mask);
            ASSERT_EQ(BlastDifference(stream, {100}, {300}), "") << way << ", bit " << bit;
            stream[bit / 8] = static_cast<char>(stream[bit / 8] ^ mask);
        }
    }
}

TEST(BlastDecoderTest, RandomBytesAreExpandedAsBitByBit)
{
    std::mt19937 random(5);
    for (int trial = 0; trial < support::Cases(5000); ++trial)
    {
        const Way way = ways[trial % std::size(ways)];
        std::string stream = {static_cast<char>(way.isCoded), static_cast<char>(way.dictionaryBits)};
        stream += Written().FillTo(trial % 2 == 0 ? 0 : 3000).writer.Bytes().substr(2); // for all distances to be good
        for (int i = 0; i < 5000; ++i)
            stream += static_cast<char>(random());
        ASSERT_EQ(BlastDifference(stream, {trial % 3 == 0 ? 50u : 5000u},
                                  {windowSize + static_cast<std::uint32_t>(trial % 100)}),
                  "")
            << trial;
    }
}

TEST(BlastDecoderTest, InputThatGoesOnAfterItsEndIsTakenAsBitByBit)
{
    std::mt19937 random(6);
    for (int trial = 0; trial < support::Cases(1000); ++trial)
    {
        const Way way = ways[trial % std::size(ways)];
        const std::string stream =
            AnyElements(random, way.isCoded, way.dictionaryBits, trial % 2 == 0 ? 100 : 9000).End();
        // Nothing at some byte, and then the rest.
        const auto cut = static_cast<std::uint32_t>(2 + random() % (stream.size() - 2));
        ASSERT_EQ(BlastDifference(stream, {cut, 0, 9, 0, UINT32_MAX}, {windowSize, 100}), "") << trial;
    }
}

TEST(BlastDecoderTest, LiteralThatTheInputCutsIsBegunAnew)
{
    // The longest codes, which begin in one byte and end in the next but one.
    const std::string stream = BlastWriter(true, 6).Literals("\xFF\x80\xFE\x81\xFD\x82\xFC\x83").End().Bytes();
    for (std::uint32_t cut = 2; cut < stream.size(); ++cut)
        ASSERT_EQ(BlastDifference(stream, {cut, 0, 1, 0, UINT32_MAX}, {windowSize, 100}), "") << cut;
}

TEST(BlastDecoderTest, StreamsAreExpandedByManyThreadsAtOnce)
{
    std::mt19937 random(7);
    Written written = AnyElements(random, true, 6, 100000);
    const std::string stream = written.End();
    std::string expanded[4];
    std::vector<std::thread> threads;
    for (std::string& bytes : expanded)
        threads.emplace_back([&stream, &bytes] { bytes = Expansion(stream, {1000}).Rest(500).bytes; });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::string& bytes : expanded)
        EXPECT_TRUE(bytes == written.bytes);
}

// Streams that other programs have imploded, beside what they expand to.

TEST(BlastDecoderTest, RealStreamsExpandToTheirOriginals)
{
    const boost::filesystem::path folder = boost::filesystem::path(UTILITY_TEST_DATA) / "dcl";
    if (!boost::filesystem::exists(folder))
        GTEST_SKIP() << "no real streams";
    int count = 0;
    for (const auto& entry : boost::filesystem::directory_iterator(folder))
    {
        std::string name = entry.path().filename().string();
        const bool isImploded = name.find(".imploded") != std::string::npos;
        if (!isImploded && !name.ends_with(".imp"))
            continue;
        ++count;
        name = isImploded ? name.substr(0, name.find(".imploded")) + ".decomp" : name.substr(0, name.find('.') + 4);
        const std::string original = support::TemporaryFolder::BytesOf(folder / name);
        const std::string stream = support::TemporaryFolder::BytesOf(entry.path());
        ASSERT_FALSE(original.empty()) << name;
        Expansion expansion(stream, {4096});
        const Part all = expansion.Rest();
        EXPECT_TRUE(all.bytes == original) << entry.path();
        EXPECT_EQ(expansion.SizeAtEndMark(), original.size());
        EXPECT_EQ(all.code, original.size() % windowSize == 0 ? 2 : 1) << entry.path();
        EXPECT_EQ(BlastDifference(stream, {4096}, {65536}), "") << entry.path();
        EXPECT_EQ(BlastDifference(stream.substr(0, 5000), {1}, {1}), "") << entry.path();
    }
    EXPECT_GE(count, 8);
}

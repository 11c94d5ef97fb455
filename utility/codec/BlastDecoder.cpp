#include "utility/codec/BlastDecoder.h"

#include "utility/platform/Heap.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

using utility::platform::Heap;

// The stream is a sequence of bits, each byte's lowest first. Behind the two bytes of the header it has elements: a bit
// 0 and a literal byte, or a bit 1 and a match, which repeats so many bytes from so far back. They are expanded to a
// window of 4096 bytes, from which the caller is served; a full one stops the expanding, within a match as well.
//
// An element is read in one of two ways, which come to the same. The exact one takes a byte of input when it needs a
// bit of it, and thereby asks for a block at the very bit at which the last one ends. The fast one has many bits at
// hand, and looks twelve of them up for a whole element, or two: it stays within a block and within the window, and
// leaves to the exact one what is left of both, and whatever may fail.
//
// The fast way has no branch between a literal and a match, which no processor could foretell: it reads from where a
// match would be and then chooses what it stores. So that this is always memory, and a match is always one piece, the
// bytes of the window before this one stand ahead of it.

namespace
{

constexpr std::size_t windowSize = 4096;
/// The last of the lengths is none: it is the mark at the end.
constexpr unsigned int endMark = 519;

constexpr unsigned int literalBits = 13; // of the longest code
constexpr unsigned int lengthBits = 7;
constexpr unsigned int distanceBits = 8;

// How long the codes of successive symbols are: the low four bits say the length, the high four for how many symbols
// besides the first.
constexpr std::uint8_t literalLengths[] = {
    11, 124, 8,  7,  28, 7,  188, 13,  76,  4,   10,  8,   12, 10, 12, 10, 8,  23, 8,  9,  7,  6,  7,   8,  7,
    6,  55,  8,  23, 24, 12, 11,  7,   9,   11,  12,  6,   7,  22, 5,  7,  24, 6,  11, 9,  6,  7,  22,  7,  11,
    38, 7,   9,  8,  25, 11, 8,   11,  9,   12,  8,   12,  5,  38, 5,  38, 5,  11, 7,  5,  6,  21, 6,   10, 53,
    8,  7,   24, 10, 27, 44, 253, 253, 253, 252, 252, 252, 13, 12, 45, 12, 45, 12, 61, 12, 45, 44, 173,
};
constexpr std::uint8_t lengthLengths[] = {2, 35, 36, 53, 38, 23};
constexpr std::uint8_t distanceLengths[] = {2, 20, 53, 230, 247, 151, 248};

constexpr std::uint16_t baseLengths[] = {3, 2, 4, 5, 6, 7, 8, 9, 10, 12, 16, 24, 40, 72, 136, 264};
constexpr std::uint8_t extraLengthBits[] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8};

constexpr std::uint32_t Low(std::uint64_t bits, unsigned int count)
{
    return static_cast<std::uint32_t>(bits & ((std::uint64_t{1} << count) - 1));
}

struct Symbol
{
    std::uint8_t value = 0;
    std::uint8_t bits = 0;
};

/// The symbol that so many bits begin with, for all that they may be.
template <unsigned int longest>
using Code = std::array<Symbol, 1 << longest>;

template <unsigned int longest, std::size_t size>
constexpr Code<longest> MakeCode(const std::uint8_t (&lengths)[size])
{
    Code<longest> code;
    unsigned int next = 0; // The codes of a length go up with the symbols, and go on in the next length.
    for (unsigned int length = 1; length <= longest; ++length)
    {
        unsigned int symbol = 0;
        for (const std::uint8_t repeated : lengths)
        {
            for (unsigned int i = 0; i <= repeated / 16u; ++i, ++symbol)
            {
                if (repeated % 16u != length)
                    continue;
                std::size_t inverted = 0; // and the highest bit first
                for (unsigned int bit = 0; bit < length; ++bit)
                    inverted = inverted << 1 | (~next >> bit & 1u);
                ++next;
                for (std::size_t at = inverted; at < code.size(); at += std::size_t{1} << length)
                    code[at] = {static_cast<std::uint8_t>(symbol), static_cast<std::uint8_t>(length)};
            }
        }
        next <<= 1;
    }
    return code;
}

constexpr Code<literalBits> literals = MakeCode<literalBits>(literalLengths);
constexpr Code<lengthBits> lengths = MakeCode<lengthBits>(lengthLengths);
constexpr Code<distanceBits> distances = MakeCode<distanceBits>(distanceLengths);

/// How many low bits of a distance stand behind its code.
constexpr unsigned int LowDistanceBits(unsigned int length, unsigned int dictionaryBits)
{
    return length == 2 ? 2 : dictionaryBits;
}

/// What the next bits begin with, as far as so many tell. As one number, so that looking it up is one load:
///   bits 0 to 5    how many bits it takes
///   bits 6 to 9    how many bytes it is; 0 if the bits do not tell all
///   bits 10 to 15  of a match a mask for the low bits of the distance
///   bits 16 to 31  one or two literals; of a match where the low bits are (4 bits) and the others, above two zeros at
///                  least; of a match without its distance the length, 0 if not even that is told
class Element
{
public:
    static constexpr unsigned int indexBits = 12;
    static constexpr unsigned int mostBits = indexBits + 6;
    static constexpr unsigned int mostBytes = 8;

    constexpr Element() = default;

    static constexpr Element Literal(unsigned int bits, unsigned int byte)
    {
        // What is taken for its distance is long then: what was stored long ago is loaded sooner.
        constexpr unsigned int farAway = 0x80000000;
        return Element(bits | 1u << 6 | byte << 16 | farAway);
    }

    static constexpr Element Literals(unsigned int bits, unsigned int first, unsigned int second)
    {
        return Element(bits | 2u << 6 | first << 16 | second << 24);
    }

    static constexpr Element Match(unsigned int codeBits, unsigned int length, unsigned int distanceSymbol,
                                   unsigned int lowBits)
    {
        return Element((codeBits + lowBits) | length << 6 | ((1u << lowBits) - 1) << 10 | codeBits << 16 |
                       distanceSymbol << lowBits << 20);
    }

    static constexpr Element MatchWithoutDistance(unsigned int bits, unsigned int length)
    {
        return Element(bits | length << 16);
    }

    constexpr std::uint32_t Word() const { return m_word; }
    constexpr unsigned int Bits() const { return m_word & 63; }
    constexpr unsigned int Length() const { return m_word >> 6 & 15; }
    constexpr unsigned int LengthWithoutDistance() const { return m_word >> 16; }
    constexpr bool IsMatch() const { return LowDistanceMask() != 0; }
    constexpr std::uint64_t LiteralBytes() const { return m_word >> 16; }

    /// Of literals anything that is not below their number, up to 4096.
    constexpr unsigned int Distance(std::uint64_t bits) const
    {
        return (m_word >> 20) + (static_cast<unsigned int>(bits >> (m_word >> 16 & 63)) & LowDistanceMask()) + 1;
    }

    /// All bits of a match, none of literals.
    constexpr unsigned int MatchMask() const { return 0 - (m_word >> 10 & 1); }

private:
    constexpr explicit Element(std::uint32_t word) : m_word(word) {}

    constexpr unsigned int LowDistanceMask() const { return m_word >> 10 & 63; }

    std::uint32_t m_word = 0;
};

using Elements = std::array<Element, 1 << Element::indexBits>;

/// A literal byte without its flag, in so many bits. A length of 0 if these are too few.
constexpr Symbol LiteralOf(bool isCoded, unsigned int bits, unsigned int count)
{
    const Symbol literal = isCoded ? literals[bits] : Symbol{static_cast<std::uint8_t>(bits), 8};
    return literal.bits <= count ? literal : Symbol{};
}

constexpr Element LiteralsOf(bool isCoded, unsigned int bits)
{
    const Symbol first = LiteralOf(isCoded, bits >> 1, Element::indexBits - 1);
    if (first.bits == 0)
        return {};
    const unsigned int used = 1u + first.bits;
    const unsigned int ahead = bits >> used;
    const Symbol second = used == Element::indexBits || ahead % 2 != 0
                              ? Symbol{}
                              : LiteralOf(isCoded, ahead >> 1, Element::indexBits - used - 1);
    return second.bits == 0 ? Element::Literal(used, first.value)
                            : Element::Literals(used + 1u + second.bits, first.value, second.value);
}

constexpr Element MatchOf(unsigned int dictionaryBits, unsigned int bits)
{
    const Symbol symbol = lengths[bits >> 1 & (lengths.size() - 1)];
    const unsigned int extraBits = extraLengthBits[symbol.value];
    const unsigned int used = 1u + symbol.bits + extraBits;
    if (used > Element::indexBits)
        return {};
    const unsigned int length = baseLengths[symbol.value] + Low(bits >> (used - extraBits), extraBits);
    const Symbol distance = distances[bits >> used & (distances.size() - 1)];
    if (length > Element::mostBytes || used + distance.bits > Element::indexBits)
        return Element::MatchWithoutDistance(used, length);
    return Element::Match(used + distance.bits, length, distance.value, LowDistanceBits(length, dictionaryBits));
}

Elements MakeElements(bool isCoded, unsigned int dictionaryBits)
{
    Elements made;
    for (unsigned int bits = 0; bits < made.size(); ++bits)
        made[bits] = bits % 2 == 0 ? LiteralsOf(isCoded, bits) : MatchOf(dictionaryBits, bits);
    return made;
}

/// Made for the first stream of their kind: in the library's file the six of them would be a tenth of it.
template <bool isCoded, unsigned int dictionaryBits>
const Elements& ElementsOf()
{
    static const Elements elements = MakeElements(isCoded, dictionaryBits);
    return elements;
}

constexpr const Elements& (*elementsOf[2][3])() = {
    {ElementsOf<false, 4>, ElementsOf<false, 5>, ElementsOf<false, 6>},
    {ElementsOf<true, 4>, ElementsOf<true, 5>, ElementsOf<true, 6>},
};

template <class Word>
Word Load(const unsigned char* from)
{
    Word word;
    std::memcpy(&word, from, sizeof(word));
    return word;
}

template <class Word>
void CopyWord(unsigned char* to, const unsigned char* from)
{
    const auto word = Load<Word>(from);
    std::memcpy(to, &word, sizeof(word));
}

struct LongWord
{
    std::uint64_t halves[2];
};

constexpr std::size_t mostBehind = 2 * sizeof(LongWord);

/// Repeats `length` bytes from `distance` ahead, each behind the other, so that they may be among themselves. Writes
/// over up to `mostBehind` bytes behind them.
inline void Repeat(unsigned char* to, unsigned int distance, unsigned int length)
{
    constexpr unsigned int wordSize = sizeof(std::uint64_t);
    const unsigned char* const end = to + length;
    if (distance >= sizeof(LongWord))
    {
        for (; to < end; to += 2 * sizeof(LongWord))
        {
            CopyWord<LongWord>(to, to - distance);
            CopyWord<LongWord>(to + sizeof(LongWord), to + sizeof(LongWord) - distance);
        }
        return;
    }
    if (distance < wordSize)
    {
        for (unsigned int i = 0; i < wordSize; ++i, ++to)
            *to = *(to - distance);
        distance *=
            (wordSize + distance - 1) / distance; // What repeats after so many bytes does so after twice as many.
    }
    for (; to < end; to += wordSize)
        CopyWord<std::uint64_t>(to, to - distance);
}

constexpr int good = 0;
constexpr int ended = 1;
constexpr int withoutInput = 2;
constexpr int aheadOfTheFirst = -3;

}

struct BlastState
{
    BlastInput input;
    void* context;
    const unsigned char* next = nullptr; // of the block
    std::uint32_t left = 0;

    std::uint32_t bits = 0;     // taken, but not yet used
    std::uint32_t bitCount = 0; // less than 8 between symbols

    bool isCoded = false;
    std::uint8_t dictionaryBits = 4;
    const Elements* elements = &ElementsOf<false, 4>();
    bool isFirstWindow = true;
    bool isEndMarkRead = false;

    // Of the last match what is still to be repeated: of one that the end of a window has cut, of one that failed, or
    // `endMark`.
    std::uint32_t copyLength = 0;
    std::uint32_t copyDistance = windowSize;

    std::uint32_t readPosition = 0; // in the window
    std::uint32_t writePosition = 0;
    std::uint64_t sizeBeforeWindow = 0;
    std::uint64_t sizeAtEndMark = 0;

    // The window, as it was when this one was begun.
    unsigned char history[windowSize] = {};
    unsigned char window[windowSize + mostBehind];

    bool IsAtEnd() const { return copyLength == endMark && readPosition == writePosition; }

    bool TakeByte(std::uint32_t& byte);
    bool TakeBits(unsigned int count, std::uint32_t& value);
    template <std::size_t size>
    bool TakeSymbol(const std::array<Symbol, size>& code, std::uint32_t& value);
    void Copy();
    int TakeElement();
    template <bool isFirst, bool isRaw>
    void TakeElementsFast();
    void TakeElementsFast();
    int Refill();
};

bool BlastState::TakeByte(std::uint32_t& byte)
{
    if (left == 0)
        left = input(context, &next);
    if (left == 0)
        return false;
    --left;
    byte = *next++;
    return true;
}

bool BlastState::TakeBits(unsigned int count, std::uint32_t& value)
{
    if (bitCount < count)
    {
        std::uint32_t byte = 0;
        if (!TakeByte(byte))
            return false;
        bits |= byte << bitCount;
        bitCount += 8;
    }
    value = Low(bits, count);
    bits >>= count;
    bitCount -= count;
    return true;
}

/// Without input the bits are as they were ahead of the symbol, though its bytes are taken.
template <std::size_t size>
bool BlastState::TakeSymbol(const std::array<Symbol, size>& code, std::uint32_t& value)
{
    std::uint32_t ahead = bits;
    std::uint32_t count = bitCount;
    Symbol symbol;
    while ((symbol = code[ahead % size]).bits > count)
    {
        std::uint32_t byte = 0;
        if (!TakeByte(byte))
            return false;
        ahead |= byte << count;
        count += 8;
    }
    bits = ahead >> symbol.bits;
    bitCount = count - symbol.bits;
    value = symbol.value;
    return true;
}

/// As much of a match as the window has room for.
void BlastState::Copy()
{
    const std::uint32_t length = std::min<std::uint32_t>(copyLength, windowSize - writePosition);
    Repeat(window + writePosition, copyDistance, length);
    writePosition += length;
    copyLength -= length;
}

/// The exact way. At the end mark the copy length is `endMark`.
int BlastState::TakeElement()
{
    std::uint32_t isMatch = 0;
    if (!TakeBits(1, isMatch))
        return withoutInput;
    if (isMatch == 0)
    {
        std::uint32_t byte = 0;
        if (!(isCoded ? TakeSymbol(literals, byte) : TakeBits(8, byte)))
            return withoutInput;
        window[writePosition++] = static_cast<unsigned char>(byte);
        return good;
    }
    std::uint32_t symbol = 0;
    std::uint32_t low = 0;
    if (!TakeSymbol(lengths, symbol) || !TakeBits(extraLengthBits[symbol], low))
        return withoutInput;
    copyLength = baseLengths[symbol] + low;
    if (copyLength == endMark)
        return good;
    const unsigned int lowBits = LowDistanceBits(copyLength, dictionaryBits);
    if (!TakeSymbol(distances, symbol) || !TakeBits(lowBits, low))
        return withoutInput;
    copyDistance = (symbol << lowBits) + low + 1;
    if (isFirstWindow && copyDistance > writePosition)
        return aheadOfTheFirst;
    Copy();
    return good;
}

/// Ends ahead of an element that the exact way has to take.
template <bool isFirst, bool isRaw>
void BlastState::TakeElementsFast()
{
    constexpr unsigned int atOnce = 3;
    constexpr unsigned int fewestBits = 56; // of a buffer that was filled
    static_assert(atOnce * Element::mostBits <= fewestBits);
    constexpr unsigned int rawAtOnce = 6;
    constexpr std::uint64_t rawFlags = 0x2010'0804'0201; // one each nine bits
    constexpr std::ptrdiff_t mostBytes{atOnce * Element::mostBytes};

    const Elements& table = *elements;
    std::uint64_t buffer = bits;
    std::uint32_t count = bitCount; // in its low 6 bits, for shifts and sums take whole words
    const unsigned char* from = next;
    const unsigned char* const fromEnd = next + left;
    unsigned char* to = window + writePosition;
    const unsigned char* const toEnd = window + windowSize;
    unsigned int lastDistance = copyDistance;

    // None of these is called, so that the compiler keeps the variables above in registers.
#define INLINE __attribute__((always_inline))
    const auto isAheadOfTheFirst = [&](unsigned int distance) INLINE
    { return isFirst && distance > static_cast<std::size_t>(to - window); };
    // What the buffer holds above its count is the next byte's, and comes again with that.
    const auto fill = [&]() INLINE
    {
        buffer |= Load<std::uint64_t>(from) << (count & 63);
        from += (63 - (count & 63)) / 8;
        count = (count & 63) | fewestBits;
    };
    const auto takeElement = [&]() INLINE
    {
        const Element element = table[buffer % table.size()];
        const unsigned int length = element.Length();
        if (length == 0)
            return false;
        const unsigned int distance = element.Distance(buffer);
        if (distance < length || (isFirst && element.IsMatch() && isAheadOfTheFirst(distance)))
            return false;
        const auto matched = Load<std::uint64_t>(to - distance);
        const std::uint64_t word = element.IsMatch() ? matched : element.LiteralBytes();
        std::memcpy(to, &word, sizeof(word));
        lastDistance ^= (lastDistance ^ distance) & element.MatchMask();
        to += length;
        buffer >>= element.Bits();
        count -= element.Word();
        return true;
    };
    const auto takeRawLiterals = [&]() INLINE
    {
        for (unsigned int i = 0; i < rawAtOnce; ++i)
            *to++ = static_cast<unsigned char>(buffer >> (9 * i + 1));
        buffer >>= 9 * rawAtOnce;
        count -= 9 * rawAtOnce;
    };
    const auto takeLongLiteral = [&]() INLINE
    {
        const Symbol literal = literals[(buffer >> 1) % literals.size()];
        *to++ = literal.value;
        buffer >>= 1u + literal.bits;
        count -= 1u + literal.bits;
    };
    const auto takeLongMatch = [&]() INLINE
    {
        const Element element = table[buffer % table.size()];
        unsigned int length = element.Length();
        unsigned int distance = element.Distance(buffer);
        unsigned int used = element.Bits();
        if (length == 0)
        {
            length = element.LengthWithoutDistance();
            const std::uint64_t ahead = buffer >> used;
            const Symbol symbol = distances[ahead % distances.size()];
            const unsigned int lowBits = LowDistanceBits(length, dictionaryBits);
            distance = (static_cast<unsigned int>(symbol.value) << lowBits) + Low(ahead >> symbol.bits, lowBits) + 1;
            used += symbol.bits + lowBits;
        }
        if (length == 0 || length >= toEnd - to || isAheadOfTheFirst(distance))
            return false;
        Repeat(to, distance, length);
        lastDistance = distance;
        to += length;
        buffer >>= used;
        count -= used;
        return true;
    };
#undef INLINE

    while (fromEnd - from >= 8 && toEnd - to > Element::mostBytes)
    {
        fill();
        if (isRaw && (buffer & rawFlags) == 0)
        {
            takeRawLiterals();
            continue;
        }
        const bool isOne = toEnd - to <= mostBytes;
        if (takeElement() && (isOne || (takeElement() && takeElement())))
            continue;
        if (fromEnd - from < 8)
            break;
        fill();
        if (buffer % 2 == 0)
            takeLongLiteral();
        else if (!takeLongMatch())
            break;
    }

    count %= 64;
    from -= count / 8;
    count %= 8;
    bits = Low(buffer, count);
    bitCount = count;
    next = from;
    left = static_cast<std::uint32_t>(fromEnd - from);
    writePosition = static_cast<std::uint32_t>(to - window);
    copyDistance = lastDistance;
}

void BlastState::TakeElementsFast()
{
    if (isFirstWindow)
        isCoded ? TakeElementsFast<true, false>() : TakeElementsFast<true, true>();
    else
        isCoded ? TakeElementsFast<false, false>() : TakeElementsFast<false, true>();
}

/// Expands until the window is full or the stream at its end.
int BlastState::Refill()
{
    std::memcpy(history, window, writePosition);
    sizeBeforeWindow += writePosition;
    readPosition = 0;
    writePosition = 0;
    if (copyLength != 0)
        Copy();
    while (writePosition < windowSize)
    {
        TakeElementsFast();
        if (const int code = TakeElement(); code != good)
            return code;
        if (copyLength == endMark)
        {
            if (!isEndMarkRead)
                sizeAtEndMark = sizeBeforeWindow + writePosition;
            isEndMarkRead = true;
            break;
        }
    }
    isFirstWindow = false;
    return good;
}

int blastInit(BlastInput input, void* context, BlastState** state)
{
    *state = nullptr;
    void* const memory = Heap().Allocate(sizeof(BlastState));
    if (memory == nullptr)
        return 1;
    BlastState& made = *new (memory) BlastState;
    made.input = input;
    made.context = context;
    std::uint32_t isCoded = 0;
    std::uint32_t dictionaryBits = 0;
    if (!made.TakeByte(isCoded) || (isCoded <= 1 && !made.TakeByte(dictionaryBits)))
    {
        Heap().Free(memory);
        return withoutInput;
    }
    *state = &made;
    if (isCoded > 1)
        return -1;
    if (dictionaryBits < 4 || dictionaryBits > 6)
        return -2;
    made.isCoded = isCoded == 1;
    made.dictionaryBits = static_cast<std::uint8_t>(dictionaryBits);
    made.elements = &elementsOf[isCoded][dictionaryBits - 4]();
    return good;
}

int blastMore(BlastState* state, void* buffer, std::uint64_t size, std::uint64_t* stored)
{
    int code = state->IsAtEnd() ? ended : good;
    *stored = 0;
    while (code == good && *stored < size)
    {
        if (state->readPosition == state->writePosition)
        {
            code = state->Refill();
            // Deliberately goes on behind an end mark at the start of a window: it is repeated as a match would be.
            if (code != good || state->writePosition == 0)
                continue;
        }
        const std::size_t count = std::min<std::uint64_t>(state->writePosition - state->readPosition, size - *stored);
        std::memcpy(static_cast<unsigned char*>(buffer) + *stored, state->window + state->readPosition, count);
        *stored += count;
        state->readPosition += static_cast<std::uint32_t>(count);
        if (state->IsAtEnd())
            break;
    }
    return code;
}

int blastEndMarkRead(const BlastState* state, std::uint64_t* size)
{
    if (!state->isEndMarkRead)
        return 0;
    *size = state->sizeAtEndMark;
    return 1;
}

void blastTerm(BlastState* state) { Heap().Free(state); }

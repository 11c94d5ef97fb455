#include "utility/platform/formats/ZipDirectory.h"

#include <utility>

namespace utility::platform::formats
{

namespace
{

// A number that does not fit its field is all ones there, and stands where there is more room.
constexpr std::uint16_t elsewhere16 = 0xFFFF;
constexpr std::uint32_t elsewhere32 = 0xFFFFFFFF;

#pragma pack(push, 1)

struct End
{
    static constexpr std::uint32_t expected = 0x06054B50;

    std::uint32_t signature;
    std::uint16_t part;
    std::uint16_t partOfDirectory;
    std::uint16_t entriesInPart;
    std::uint16_t entries;
    std::uint32_t directorySize;
    std::uint32_t directoryPosition;
    std::uint16_t commentSize;
};
static_assert(sizeof(End) == 22);

/// Ahead of an end that has numbers elsewhere.
struct Locator
{
    static constexpr std::uint32_t expected = 0x07064B50;

    std::uint32_t signature;
    std::uint32_t partOfWideEnd;
    std::uint64_t wideEndPosition;
    std::uint32_t parts;
};
static_assert(sizeof(Locator) == 20);

/// Ahead of the locator.
struct WideEnd
{
    static constexpr std::uint32_t expected = 0x06064B50;

    std::uint32_t signature;
    std::uint64_t sizeOfRest;
    std::uint16_t madeBy;
    std::uint16_t needed;
    std::uint32_t part;
    std::uint32_t partOfDirectory;
    std::uint64_t entriesInPart;
    std::uint64_t entries;
    std::uint64_t directorySize;
    std::uint64_t directoryPosition;
};
static_assert(sizeof(WideEnd) == 56);

struct Record
{
    static constexpr std::uint32_t expected = 0x02014B50;

    std::uint32_t signature;
    std::uint16_t madeBy;
    std::uint16_t needed;
    std::uint16_t flags;
    std::uint16_t method;
    std::uint32_t time;
    std::uint32_t checksum;
    std::uint32_t packedSize;
    std::uint32_t size;
    std::uint16_t nameSize;
    std::uint16_t extraSize;
    std::uint16_t commentSize;
    std::uint16_t part;
    std::uint16_t internalAttributes;
    std::uint32_t externalAttributes;
    std::uint32_t position;
};
static_assert(sizeof(Record) == 46);

/// What the extra part of a record is made of, each with its bytes behind it.
struct Extra
{
    static constexpr std::uint16_t wideNumbers = 1;

    std::uint16_t kind;
    std::uint16_t size;
};
static_assert(sizeof(Extra) == 4);

#pragma pack(pop)

constexpr std::size_t positionInRecord = sizeof(Record) - sizeof(Record::position);

template <class Value>
void Append(std::string& bytes, const Value& value)
{
    bytes.append(reinterpret_cast<const char*>(&value), sizeof(value));
}

std::string_view TextOf(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

/// What an end tells, of either kind.
struct Told
{
    std::uint64_t entries;
    std::uint64_t directorySize;
    std::uint64_t directoryPosition;
    bool isInOnePart;
};

template <class AnyEnd>
Told ToldBy(const AnyEnd& end)
{
    return {end.entries, end.directorySize, end.directoryPosition,
            end.part == 0 && end.partOfDirectory == 0 && end.entriesInPart == end.entries};
}

/// Where the numbers of eight bytes are in a record's extra part; its end if there are none.
struct WideNumbers
{
    std::uint64_t at;
    std::uint64_t size;
};

WideNumbers FindWideNumbers(Bytes extra)
{
    for (std::uint64_t at = 0; extra.size() - at >= sizeof(Extra);)
    {
        const auto each = RecordAt<Extra>(extra, at);
        at += sizeof(each);
        if (each.size > extra.size() - at)
            break;
        if (each.kind == Extra::wideNumbers)
            return {at, each.size};
        at += each.size;
    }
    return {extra.size(), 0};
}

/// The entry whose record begins at an offset of the directory; none if it is not whole, or in another part.
std::optional<ZipEntry> EntryAt(Bytes directory, std::uint64_t offset)
{
    const auto record = RecordAt<Record>(directory, offset);
    const std::uint64_t extraAt = sizeof(Record) + record.nameSize;
    const Bytes whole = BytesAt(directory, offset, extraAt + record.extraSize + record.commentSize);
    if (record.signature != Record::expected || whole.empty())
        return std::nullopt;
    ZipEntry entry = {TextOf(whole.subspan(sizeof(Record), record.nameSize)),
                      TextOf(whole),
                      record.position,
                      record.packedSize,
                      positionInRecord,
                      record.position == elsewhere32};

    // Those that are elsewhere, and no others, in this order.
    WideNumbers wide = FindWideNumbers(whole.subspan(extraAt, record.extraSize));
    const auto next = [&](std::uint64_t& number)
    {
        if (wide.size < sizeof(number))
            return false;
        number = RecordAt<std::uint64_t>(whole, extraAt + wide.at);
        wide = {wide.at + sizeof(number), wide.size - sizeof(number)};
        return true;
    };
    std::uint64_t size = 0;
    if (record.part != 0 || (record.size == elsewhere32 && !next(size)) ||
        (record.packedSize == elsewhere32 && !next(entry.packedSize)) || (entry.isWide && !next(entry.position)))
        return std::nullopt;
    if (entry.isWide)
        entry.positionAt = extraAt + wide.at - sizeof(entry.position);
    return entry;
}

}

std::optional<ZipEnd> FindZipEnd(Bytes lastBytes, std::uint64_t fileLength)
{
    // The end is the last that its comment fits behind.
    for (std::uint64_t commentSize = 0; sizeof(End) + commentSize <= lastBytes.size(); ++commentSize)
    {
        const std::uint64_t at = lastBytes.size() - commentSize - sizeof(End);
        const auto end = RecordAt<End>(lastBytes, at);
        if (end.signature != End::expected || end.commentSize != commentSize)
            continue;
        std::uint64_t directoryEnd = fileLength - (lastBytes.size() - at);
        Told told = ToldBy(end);
        if (at >= sizeof(Locator) + sizeof(WideEnd))
        {
            const auto locator = RecordAt<Locator>(lastBytes, at - sizeof(Locator));
            const auto wide = RecordAt<WideEnd>(lastBytes, at - sizeof(Locator) - sizeof(WideEnd));
            if (locator.signature == Locator::expected && wide.signature == WideEnd::expected)
            {
                directoryEnd -= sizeof(Locator) + sizeof(WideEnd);
                told = ToldBy(wide);
            }
        }
        if (!told.isInOnePart || told.directorySize > directoryEnd ||
            told.directoryPosition > directoryEnd - told.directorySize)
            return std::nullopt;
        const std::uint64_t position = directoryEnd - told.directorySize;
        return ZipEnd{told.entries, position, told.directorySize, position - told.directoryPosition,
                      lastBytes.last(commentSize)};
    }
    return std::nullopt;
}

std::string ZipEndOf(std::uint64_t entries, std::uint64_t directoryPosition, std::uint64_t directorySize)
{
    std::string bytes;
    const bool isWide = entries >= elsewhere16 || directoryPosition >= elsewhere32 || directorySize >= elsewhere32;
    if (isWide)
    {
        constexpr std::uint16_t version = 45;
        constexpr std::uint64_t sizeOfRest = sizeof(WideEnd) - sizeof(WideEnd::signature) - sizeof(WideEnd::sizeOfRest);
        Append(bytes, WideEnd{WideEnd::expected, sizeOfRest, version, version, 0, 0, entries, entries, directorySize,
                              directoryPosition});
        Append(bytes, Locator{Locator::expected, 0, directoryPosition + directorySize, 1});
        Append(bytes, End{End::expected, 0, 0, elsewhere16, elsewhere16, elsewhere32, elsewhere32, 0});
        return bytes;
    }
    const auto count = static_cast<std::uint16_t>(entries);
    Append(bytes, End{End::expected, 0, 0, count, count, static_cast<std::uint32_t>(directorySize),
                      static_cast<std::uint32_t>(directoryPosition), 0});
    return bytes;
}

std::optional<std::vector<ZipEntry>> ZipEntries(Bytes directory, std::uint64_t count)
{
    std::vector<ZipEntry> entries;
    for (std::uint64_t at = 0; at < directory.size(); at += entries.back().record.size())
    {
        const std::optional<ZipEntry> entry = EntryAt(directory, at);
        if (!entry)
            return std::nullopt;
        entries.push_back(*entry);
    }
    return entries.size() == count ? std::optional(std::move(entries)) : std::nullopt;
}

std::string MovedZipRecord(const ZipEntry& entry, std::uint64_t position)
{
    std::string record(entry.record);
    const std::size_t size = entry.isWide ? sizeof(std::uint64_t) : sizeof(std::uint32_t);
    record.replace(entry.positionAt, size, reinterpret_cast<const char*>(&position), size);
    return record;
}

}

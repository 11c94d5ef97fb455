// An entry's bytes are between its position and the next one, or the directory, whatever they are made of: headers of
// any kind, data packed by any method or with a password, and what may stand behind it. They are copied as they are, so
// nothing of an entry is lost that minizip knows nothing of. Its record in the directory says where it is, and changes
// in that.

#include "utility/platform/posix/ziplibrary/KeptEntries.h"

#include "utility/platform/formats/ZipDirectory.h"

#include <algorithm>
#include <array>
#include <vector>

namespace utility::platform::posix
{

namespace
{

using formats::ZipEnd;
using formats::ZipEntry;

/// The least that is ahead of an entry's data, and how that begins.
constexpr std::uint64_t shortestHeader = 30;
constexpr std::array<char, 4> headerBegin = {'P', 'K', 3, 4};

bool Copy(const SourceFile& from, std::uint64_t begin, std::uint64_t end, NewArchive& to)
{
    std::vector<char> block(1 << 18);
    for (std::size_t size = 0; begin < end; begin += size)
    {
        size = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), end - begin));
        if (!from.Read(block.data(), size, begin) || !to.Write(block.data(), size))
            return false;
    }
    return true;
}

bool IsHeaderAt(const SourceFile& file, std::uint64_t position)
{
    std::array<char, 4> begin;
    return file.Read(begin.data(), begin.size(), position) && begin == headerBegin;
}

formats::Bytes BytesOf(const std::string& text) { return std::as_bytes(std::span(text)); }

/// What fills a text with the bytes at a position of a file.
using Reader = std::function<bool(std::string& bytes, std::uint64_t position)>;

/// The end of an archive of this length; `lastBytes` has what it refers to.
std::optional<ZipEnd> ReadEnd(std::uint64_t length, const Reader& read, std::string& lastBytes)
{
    lastBytes.resize(std::min(length, formats::longestZipEnd));
    return read(lastBytes, length - lastBytes.size()) ? formats::FindZipEnd(BytesOf(lastBytes), length) : std::nullopt;
}

/// The entries of an archive of so many; `directory` has what they refer to.
std::optional<std::vector<ZipEntry>> ReadEntries(const ZipEnd& end, std::uint64_t count, const Reader& read,
                                                 std::string& directory)
{
    if (end.directorySize / formats::longestZipRecord > count)
        return std::nullopt;
    directory.resize(end.directorySize);
    return read(directory, end.directoryPosition) ? formats::ZipEntries(BytesOf(directory), count) : std::nullopt;
}

struct Place
{
    const ZipEntry* entry;
    std::uint64_t next; ///< where the next one is, or the directory
    bool goes;
    std::uint64_t newPosition = 0;
};

/// Whether an entry is within its place and nothing else is, by what its record tells.
bool IsApart(const SourceFile& file, std::uint64_t begin, const Place& place)
{
    const std::uint64_t position = place.entry->position;
    return position <= place.next && place.next - position >= shortestHeader &&
           place.next - position - shortestHeader >= place.entry->packedSize && IsHeaderAt(file, begin + position);
}

}

std::optional<KeptEntries> KeepEntries(const SourceFile& old, const std::function<bool(std::string_view)>& isToGo,
                                       NewArchive& archive)
{
    const auto read = [&](std::string& bytes, std::uint64_t position)
    { return old.Read(bytes.data(), bytes.size(), position); };
    std::string lastBytes;
    const auto found = old.IsPlain() ? ReadEnd(old.Length(), read, lastBytes) : std::nullopt;
    if (!found)
        return std::nullopt;
    const ZipEnd& end = *found;
    std::string directory;
    const auto entries = ReadEntries(end, end.entries, read, directory);
    if (!entries)
        return std::nullopt;

    const std::uint64_t space = end.directoryPosition - end.begin;
    std::vector<Place> places;
    places.reserve(entries->size());
    for (const ZipEntry& entry : *entries)
        places.push_back({&entry, space, isToGo(entry.name)});
    std::vector<Place*> byPosition;
    byPosition.reserve(places.size());
    for (Place& place : places)
        byPosition.push_back(&place);
    std::ranges::sort(byPosition, {}, [](const Place* place) { return place->entry->position; });
    for (std::size_t each = 1; each < byPosition.size(); ++each)
        byPosition[each - 1]->next = byPosition[each]->entry->position;

    // What is ahead of the first one, such as a program that unpacks the rest, stays.
    std::uint64_t copied = 0;
    std::uint64_t gone = 0;
    for (Place* place : byPosition)
    {
        const std::uint64_t position = place->entry->position;
        if (!IsApart(old, end.begin, *place))
            return std::nullopt;
        place->newPosition = position - gone;
        if (!place->goes)
            continue;
        if (!Copy(old, copied, end.begin + position, archive))
            return std::nullopt;
        copied = end.begin + place->next;
        gone += place->next - position;
    }
    if (!Copy(old, copied, end.directoryPosition, archive))
        return std::nullopt;

    KeptEntries kept = {0, std::string(reinterpret_cast<const char*>(end.comment.data()), end.comment.size())};
    const std::uint64_t newDirectory = archive.Position();
    for (const Place& place : places)
    {
        if (place.goes)
            continue;
        archive.Write(formats::MovedZipRecord(*place.entry, place.newPosition));
        ++kept.count;
    }
    archive.Write(formats::ZipEndOf(kept.count, space - gone, archive.Position() - newDirectory));
    return archive.HasFailed() ? std::nullopt : std::optional(kept);
}

bool Finish(NewArchive& archive, std::uint64_t entries, std::uint64_t latest, const std::string& comment)
{
    const auto read = [&](std::string& bytes, std::uint64_t position)
    {
        archive.Seek(position);
        return archive.Read(bytes.data(), bytes.size());
    };
    std::string lastBytes;
    const auto end = ReadEnd(archive.Length(), read, lastBytes);
    if (!end)
        return false;
    std::string directory;
    const auto records = ReadEntries(*end, entries, read, directory);
    if (!records)
        return false;
    for (const ZipEntry& entry : std::span(*records).last(latest))
    {
        constexpr std::uint64_t systemAt = 5;
        constexpr char thisSystem = 3;
        archive.Seek(end->directoryPosition + static_cast<std::uint64_t>(entry.record.data() - directory.data()) +
                     systemAt);
        archive.Write(&thisSystem, sizeof(thisSystem));
    }
    std::string newEnd = formats::ZipEndOf(entries, end->directoryPosition - end->begin, end->directorySize);
    const auto commentSize = static_cast<std::uint16_t>(comment.size());
    newEnd.resize(newEnd.size() - sizeof(commentSize));
    newEnd.append(reinterpret_cast<const char*>(&commentSize), sizeof(commentSize));
    archive.Seek(end->directoryPosition + end->directorySize);
    return archive.Write(newEnd + comment);
}

}

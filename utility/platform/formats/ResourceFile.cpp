#include "utility/platform/formats/ResourceFile.h"

#include "utility/platform/formats/Utf16.h"

#include <algorithm>

namespace utility::platform::formats
{

namespace
{

// Records of the file format. Addresses count from where the module would be loaded, offsets into the tree from its
// root.

struct FileHeader
{
    std::uint32_t signature;
    std::uint16_t machine;
    std::uint16_t sections;
    std::uint32_t time;
    std::uint32_t symbolTable;
    std::uint32_t symbols;
    std::uint16_t optionalHeaderSize;
    std::uint16_t characteristics;
};
static_assert(sizeof(FileHeader) == 24);

struct DirectoryRange
{
    std::uint32_t address;
    std::uint32_t size;
};

struct Section
{
    char name[8];
    std::uint32_t sizeInMemory;
    std::uint32_t address;
    std::uint32_t size;
    std::uint32_t offset;
    std::uint32_t notForModules[4];
};
static_assert(sizeof(Section) == 40);

struct TreeDirectory
{
    std::uint32_t characteristics;
    std::uint32_t time;
    std::uint32_t version;
    std::uint16_t entriesByText;
    std::uint16_t entriesByNumber;
};
static_assert(sizeof(TreeDirectory) == 16);

struct TreeEntry
{
    std::uint32_t name;
    std::uint32_t leadsTo;
};

struct TreeLeaf
{
    std::uint32_t address;
    std::uint32_t size;
    std::uint32_t codePage;
    std::uint32_t reserved;
};

constexpr std::uint16_t dosMagic = 0x5A4D;
constexpr std::uint32_t signature = 0x4550;
constexpr std::uint16_t magicOf32Bits = 0x10B;
constexpr std::uint16_t magicOf64Bits = 0x20B;
constexpr unsigned resourceDirectory = 2;
// No system loads a file with more; it keeps every look-up short.
constexpr unsigned mostSections = 96;

/// Set where an entry leads to a directory, and where a name is a text.
constexpr std::uint32_t flag = 0x80000000;

constexpr UINT bitmapType = 2;
constexpr UINT stringType = 6;
constexpr UINT versionType = 16;
constexpr UINT stringsInBlock = 16;

}

ResourceFile::ResourceFile(Bytes file) : m_file(file)
{
    const auto headerAt = RecordAt<std::uint32_t>(file, 0x3C);
    const auto header = RecordAt<FileHeader>(file, headerAt);
    if (RecordAt<std::uint16_t>(file, 0) != dosMagic || header.signature != signature || header.sections > mostSections)
        return;
    const std::uint64_t optionalAt = std::uint64_t{headerAt} + sizeof(header);
    const auto magic = RecordAt<std::uint16_t>(file, optionalAt);
    if (magic != magicOf32Bits && magic != magicOf64Bits)
        return;
    const std::uint64_t directoriesAt = optionalAt + (magic == magicOf64Bits ? 112 : 96);
    if (RecordAt<std::uint32_t>(file, directoriesAt - sizeof(std::uint32_t)) <= resourceDirectory)
        return;
    const auto resources = RecordAt<DirectoryRange>(file, directoriesAt + resourceDirectory * sizeof(DirectoryRange));
    if (resources.size == 0)
        return;
    m_sections = BytesAt(file, optionalAt + header.optionalHeaderSize, header.sections * sizeof(Section));
    m_tree = FromAddress(resources.address);
}

Bytes ResourceFile::Find(const ResourceName& type, const ResourceName& name) const
{
    // Types, names, languages: as three steps are all there are, a circle in the tree is no danger.
    const std::uint32_t names = EntryOf(flag, [&](std::uint32_t stored) { return IsName(stored, type); });
    const std::uint32_t languages = EntryOf(names, [&](std::uint32_t stored) { return IsName(stored, name); });
    const std::uint32_t leafAt = EntryOf(languages, [](std::uint32_t) { return true; });
    if (leafAt == 0 || (leafAt & flag) != 0)
        return {};
    const auto leaf = RecordAt<TreeLeaf>(m_tree, leafAt);
    return BytesAt(FromAddress(leaf.address), 0, leaf.size);
}

std::wstring ResourceFile::String(UINT id) const
{
    const Bytes block = Find(stringType, id / stringsInBlock + 1);
    std::size_t at = 0;
    for (UINT before = id % stringsInBlock; before != 0; --before)
        at += (1 + std::size_t{RecordAt<std::uint16_t>(block, at)}) * sizeof(char16_t);
    const auto length = RecordAt<std::uint16_t>(block, at);
    const Bytes text = BytesAt(block, at + sizeof(length), length * sizeof(char16_t));
    return WideFromUtf16(text.data(), text.size() / sizeof(char16_t));
}

Bytes ResourceFile::Bitmap(const ResourceName& name) const { return Find(bitmapType, name); }

Bytes ResourceFile::Version() const { return Find(versionType, 1u); }

/// Where the first wanted entry of a directory leads; 0, where nothing but the root stands, if there is none.
template <class IsWanted>
std::uint32_t ResourceFile::EntryOf(std::uint32_t directory, IsWanted isWanted) const
{
    if ((directory & flag) == 0)
        return 0;
    const std::uint64_t headAt = directory & ~flag;
    const auto head = RecordAt<TreeDirectory>(m_tree, headAt);
    const std::uint64_t first = headAt + sizeof(head);
    const std::uint64_t count = head.entriesByText + std::uint64_t{head.entriesByNumber};
    const std::uint64_t end = std::min<std::uint64_t>(first + count * sizeof(TreeEntry), m_tree.size());
    for (std::uint64_t at = first; at < end; at += sizeof(TreeEntry))
    {
        const auto entry = RecordAt<TreeEntry>(m_tree, at);
        if (isWanted(entry.name))
            return entry.leadsTo;
    }
    return 0;
}

bool ResourceFile::IsName(std::uint32_t stored, const ResourceName& name) const
{
    if (const UINT* const number = std::get_if<UINT>(&name))
        return stored == *number && *number <= 0xFFFF;
    if ((stored & flag) == 0)
        return false;
    const std::uint64_t lengthAt = stored & ~flag;
    const auto length = RecordAt<std::uint16_t>(m_tree, lengthAt);
    return IsText(BytesAt(m_tree, lengthAt + sizeof(length), length * sizeof(char16_t)),
                  std::get<std::wstring_view>(name));
}

/// The bytes of the file from an address on, to the end of the section that holds it.
Bytes ResourceFile::FromAddress(std::uint32_t address) const
{
    for (std::uint64_t at = 0; at < m_sections.size(); at += sizeof(Section))
    {
        const auto section = RecordAt<Section>(m_sections, at);
        if (address >= section.address && address - section.address < section.size)
            return BytesAt(BytesAt(m_file, section.offset, section.size), address - section.address,
                           section.size - (address - section.address));
    }
    return {};
}

}

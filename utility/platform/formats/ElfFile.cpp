#include "utility/platform/formats/ElfFile.h"

namespace utility::platform::formats
{

namespace
{

struct FileHeader
{
    unsigned char identification[16];
    std::uint16_t type;
    std::uint16_t machine;
    std::uint32_t version;
    std::uint64_t entry;
    std::uint64_t segmentsAt;
    std::uint64_t sectionsAt;
    std::uint32_t flags;
    std::uint16_t headerSize;
    std::uint16_t segmentSize;
    std::uint16_t segmentCount;
    std::uint16_t sectionSize;
    std::uint16_t sectionCount;
    std::uint16_t sectionOfNames;
};
static_assert(sizeof(FileHeader) == 64);

struct SectionHeader
{
    std::uint32_t nameAt; ///< in the section of names
    std::uint32_t type;
    std::uint64_t flags;
    std::uint64_t address;
    std::uint64_t contentAt;
    std::uint64_t contentSize;
    std::uint32_t link;
    std::uint32_t info;
    std::uint64_t alignment;
    std::uint64_t entrySize;
};
static_assert(sizeof(SectionHeader) == 64);

/// The magic number, 64 bits, little-endian.
constexpr unsigned char begin[] = {0x7F, 'E', 'L', 'F', 2, 1};
constexpr std::uint32_t programData = 1;

}

Bytes ElfSection(Bytes file, std::string_view name)
{
    const auto header = RecordAt<FileHeader>(file, 0);
    if (std::memcmp(header.identification, begin, sizeof(begin)) != 0)
        return {};
    const Bytes table = BytesAt(file, header.sectionsAt, header.sectionCount * sizeof(SectionHeader));
    const auto names = RecordAt<SectionHeader>(table, header.sectionOfNames * sizeof(SectionHeader));
    for (std::size_t at = 0; at < table.size(); at += sizeof(SectionHeader))
    {
        const auto section = RecordAt<SectionHeader>(table, at);
        const Bytes found = BytesAt(BytesAt(file, names.contentAt, names.contentSize), section.nameAt, name.size() + 1);
        if (section.type == programData && !found.empty() && std::memcmp(found.data(), name.data(), name.size()) == 0 &&
            found.back() == std::byte{0})
            return BytesAt(file, section.contentAt, section.contentSize);
    }
    return {};
}

}

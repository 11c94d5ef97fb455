#include "utility/platform/formats/VersionRecord.h"

#include "utility/platform/Error.h"
#include "utility/platform/formats/ElfFile.h"
#include "utility/platform/formats/ResourceFile.h"
#include "utility/platform/formats/Utf16.h"

#include <algorithm>
#include <optional>

namespace utility::platform::formats
{

namespace
{

struct NodeHeader
{
    std::uint16_t length;
    std::uint16_t valueLength;
    std::uint16_t type;
};
static_assert(sizeof(NodeHeader) == 6);

constexpr std::uint16_t textType = 1;
constexpr int depthOfTexts = 3;
constexpr DWORD fixedInformationSignature = 0xFEEF04BD;

/// A node of a record. The places are offsets from the start of the record.
struct Node
{
    Bytes key;
    std::size_t value;
    std::size_t valueLength; ///< of what is there of it: in bytes, of a text in units
    std::size_t children;
    std::size_t end;
};

std::size_t Aligned(std::size_t offset) { return (offset + 3) & ~std::size_t{3}; }

/// The node at an offset, which ends at `end` at the latest; none if its key does not end before that.
std::optional<Node> NodeAt(Bytes record, std::size_t at, std::size_t end)
{
    const auto header = RecordAt<NodeHeader>(record, at);
    const std::size_t keyAt = at + sizeof(header);
    const std::size_t nodeEnd = std::min(at + header.length, end);
    std::size_t keyEnd = keyAt;
    while (keyEnd < nodeEnd && RecordAt<char16_t>(record, keyEnd) != 0)
        keyEnd += sizeof(char16_t);
    if (keyEnd + sizeof(char16_t) > nodeEnd)
        return {};
    const std::size_t value = std::min(Aligned(keyEnd + sizeof(char16_t)), nodeEnd);
    const std::size_t unit = header.type == textType ? sizeof(char16_t) : 1;
    const std::size_t valueSize = std::min(header.valueLength * unit, nodeEnd - value);
    return Node{BytesAt(record, keyAt, keyEnd - keyAt), value, valueSize / unit, Aligned(value + valueSize), nodeEnd};
}

std::optional<Node> ChildOf(Bytes record, const Node& parent, std::wstring_view key)
{
    std::optional<Node> child = NodeAt(record, parent.children, parent.end);
    while (child && !IsText(child->key, key))
        child = NodeAt(record, Aligned(child->end), parent.end);
    return child;
}

/// The record without what lies behind it; none if it is not whole or does not begin with fixed information.
Bytes WholeRecord(Bytes bytes)
{
    const Bytes record = BytesAt(bytes, 0, RecordAt<NodeHeader>(bytes, 0).length);
    const auto root = NodeAt(record, 0, record.size());
    const bool isVersion = root && root->valueLength >= sizeof(VS_FIXEDFILEINFO) &&
                           RecordAt<VS_FIXEDFILEINFO>(record, root->value).dwSignature == fixedInformationSignature;
    return isVersion ? record : Bytes();
}

std::size_t Units(Bytes record) { return record.size() / sizeof(char16_t); }

}

Bytes FindVersionRecord(Bytes file)
{
    const Bytes section = ElfSection(file, ".utility.version");
    return section.empty() ? ResourceFile(file).Version() : section;
}

DWORD VersionBlockSize(Bytes record)
{
    const Bytes whole = WholeRecord(record);
    return whole.empty() ? 0 : static_cast<DWORD>(Aligned(whole.size()) + (Units(whole) + 1) * sizeof(wchar_t));
}

void WriteVersionBlock(Bytes record, void* block)
{
    const Bytes whole = WholeRecord(record);
    std::memset(block, 0, VersionBlockSize(record));
    std::memcpy(block, whole.data(), whole.size());
    auto* const wide = reinterpret_cast<wchar_t*>(static_cast<std::byte*>(block) + Aligned(whole.size()));
    // What stands between two nulls is widened as one text and keeps its place: what is no text does no harm, and every
    // text begins behind the null that ends its key.
    for (std::size_t begin = 0, end = 0; begin < Units(whole); begin = end + 1)
    {
        end = begin;
        while (end < Units(whole) && RecordAt<char16_t>(whole, end * sizeof(char16_t)) != 0)
            ++end;
        const std::wstring text = WideFromUtf16(whole.data() + begin * sizeof(char16_t), end - begin);
        text.copy(wide + begin, text.size());
    }
}

bool QueryVersionBlock(const void* block, const wchar_t* path, void*& value, UINT& length)
{
    std::uint16_t size = 0;
    std::memcpy(&size, block, sizeof(size));
    const Bytes record(static_cast<const std::byte*>(block), size);
    std::optional<Node> node = NodeAt(record, 0, record.size());
    int depth = 0;
    const std::wstring_view keys(path);
    for (std::size_t begin = 0, end = 0; node && begin < keys.size(); begin = end + 1)
    {
        end = std::min(keys.find(L'\\', begin), keys.size());
        if (end == begin)
            continue;
        node = ChildOf(record, *node, keys.substr(begin, end - begin));
        ++depth;
    }
    if (!node)
    {
        SetLastError(ERROR_RESOURCE_TYPE_NOT_FOUND);
        return false;
    }
    const auto* const stored = static_cast<const std::byte*>(block);
    const auto* const wide = reinterpret_cast<const wchar_t*>(stored + Aligned(record.size()));
    // The texts are values of names in a translation in StringFileInfo. The last null is an empty text.
    const std::size_t unit = node->valueLength != 0 ? node->value / sizeof(char16_t) : Units(record);
    const void* const found = depth == depthOfTexts ? static_cast<const void*>(wide + unit) : stored + node->value;
    value = const_cast<void*>(found);
    length = static_cast<UINT>(node->valueLength);
    return true;
}

}

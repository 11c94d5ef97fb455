#pragma once

#include "utility/platform/formats/VersionRecord.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace support
{

/// A node of a version record. What it says of its sizes can be made wrong.
struct RecordNode
{
    std::u16string key;
    bool isText = false;
    std::string value;
    std::vector<RecordNode> children;
    std::optional<std::uint16_t> length;
    std::optional<std::uint16_t> valueLength;

    /// Adds the node to a record.
    void Append(std::string& record) const
    {
        Align(record);
        const std::size_t start = record.size();
        record.append(3 * sizeof(std::uint16_t), '\0');
        record.append(reinterpret_cast<const char*>(key.c_str()), (key.size() + 1) * sizeof(char16_t));
        Align(record);
        record += value;
        for (const RecordNode& child : children)
            child.Append(record);
        const std::size_t units = value.size() / (isText ? sizeof(char16_t) : 1);
        const std::uint16_t header[] = {length.value_or(static_cast<std::uint16_t>(record.size() - start)),
                                        valueLength.value_or(static_cast<std::uint16_t>(units)),
                                        static_cast<std::uint16_t>(isText ? 1 : 0)};
        std::memcpy(&record[start], header, sizeof(header));
    }

private:
    static void Align(std::string& record) { record.resize((record.size() + 3) / 4 * 4); }
};

inline std::string StoredBytes(std::u16string_view text)
{
    return {reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)};
}

/// A text under a name, stored with its null.
inline RecordNode StoredText(const char16_t* name, std::u16string text)
{
    return {name, true, StoredBytes(text += u'\0'), {}, {}, {}};
}

/// A record of the file version 1.2.3.4 with these children.
inline RecordNode VersionRecord(std::vector<RecordNode> children)
{
    const std::uint32_t numbers[13] = {0xFEEF04BD, 0x10000, 0x10002, 0x30004};
    return {u"VS_VERSION_INFO",  false, {reinterpret_cast<const char*>(numbers), sizeof(numbers)},
            std::move(children), {},    {}};
}

/// A record whose first translation, 0x0409 with the code page 1200, has these texts.
inline RecordNode RecordOfTexts(std::vector<RecordNode> texts)
{
    const RecordNode translation{u"040904b0", true, "", std::move(texts), {}, {}};
    const RecordNode translations{u"Translation", false, std::string("\x09\x04\xB0\x04", 4), {}, {}, {}};
    return VersionRecord(
        {{u"StringFileInfo", true, "", {translation}, {}, {}}, {u"VarFileInfo", true, "", {translations}, {}, {}}});
}

inline std::string BytesOf(const RecordNode& root)
{
    std::string record;
    root.Append(record);
    return record;
}

/// A record that has been read.
class VersionBlock
{
public:
    explicit VersionBlock(std::string_view record)
        : m_size(utility::platform::formats::VersionBlockSize(std::as_bytes(std::span(record)))),
          m_bytes(new std::byte[m_size])
    {
        if (m_size != 0)
            utility::platform::formats::WriteVersionBlock(std::as_bytes(std::span(record)), m_bytes.get());
    }

    bool IsEmpty() const { return m_size == 0; }

    /// What a look-up gives; nothing if it fails, as it does without a record. It is checked that all of it is in the
    /// block.
    std::optional<std::string_view> Find(const wchar_t* path) const
    {
        void* value = nullptr;
        UINT length = 0;
        if (IsEmpty() || !utility::platform::formats::QueryVersionBlock(m_bytes.get(), path, value, length))
            return {};
        const auto* const first = static_cast<const char*>(value);
        const auto* const begin = reinterpret_cast<const char*>(m_bytes.get());
        Require(first >= begin && first <= begin + m_size &&
                length <= static_cast<std::size_t>(begin + m_size - first));
        return std::string_view(first, length);
    }

    /// The text that a look-up gives; "(none)" if it fails. It is checked that its null is in the block.
    std::wstring Text(const wchar_t* path) const
    {
        const auto found = Find(path);
        if (!found)
            return L"(none)";
        const auto* const text = reinterpret_cast<const wchar_t*>(found->data());
        const auto* const end = reinterpret_cast<const wchar_t*>(m_bytes.get() + m_size);
        const auto* const null = std::find(text, end, L'\0');
        Require(null != end);
        return {text, null};
    }

private:
    static void Require(bool holds)
    {
        if (!holds)
            std::abort();
    }

    std::size_t m_size;
    std::unique_ptr<std::byte[]> m_bytes;
};

/// Reads a record and looks up what there may be in it, and what not; VersionBlock checks the answers.
inline void LookUpEverything(std::string_view record)
{
    const VersionBlock block(record);
    if (block.IsEmpty())
        return;
    for (const wchar_t* path :
         {L"", L"\\", L"\\VarFileInfo", L"\\VarFileInfo\\Translation", L"\\StringFileInfo\\040904b0"})
        block.Find(path);
    block.Text(L"\\StringFileInfo\\040904B0\\Name");
    block.Text(L"\\StringFileInfo\\040904b0\\Other");
    block.Text(L"\\StringFileInfo\\040904b0\\Absent");
}

}

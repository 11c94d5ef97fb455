#pragma once

// The bytes of a foreign format, in which every offset and every count may be anything.

#include "utility/platform/formats/Utf16.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

namespace utility::platform::formats
{

using Bytes = std::span<const std::byte>;

/// `size` bytes at an offset; none if they are not all there.
inline Bytes BytesAt(Bytes bytes, std::uint64_t offset, std::uint64_t size)
{
    const bool areAllThere = offset <= bytes.size() && size <= bytes.size() - offset;
    return areAllThere ? bytes.subspan(offset, size) : Bytes();
}

/// The record at an offset, which need not be aligned; all zeros if it is not whole.
template <class Record>
Record RecordAt(Bytes bytes, std::uint64_t offset)
{
    Record record{};
    if (const Bytes whole = BytesAt(bytes, offset, sizeof(record)); !whole.empty())
        std::memcpy(&record, whole.data(), sizeof(record));
    return record;
}

/// Whether these bytes are this text as stored. The case of A to Z is ignored.
inline bool IsText(Bytes stored, std::wstring_view text)
{
    const auto inUpperCase = [](char16_t unit)
    { return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - u'a' + u'A') : unit; };
    std::uint64_t at = 0;
    const auto isNext = [&](char16_t unit)
    {
        const auto next = RecordAt<char16_t>(stored, at);
        at += sizeof(next);
        return inUpperCase(next) == inUpperCase(unit);
    };
    const std::u16string wanted = Utf16FromWide(text);
    return stored.size() == wanted.size() * sizeof(char16_t) && std::ranges::all_of(wanted, isNext);
}

}

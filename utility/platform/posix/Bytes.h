#pragma once

// The bytes of a foreign format, in which every offset and every count may be anything.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace utility::platform::posix
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

}

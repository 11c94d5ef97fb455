#pragma once

#include "utility/platform/posix/registry/Hive.h"
#include "utility/platform/Types.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace utility::platform::posix
{

/// The keys that are open, by their handles. A handle that was closed is known as such.
class OpenKeys
{
public:
    struct Entry
    {
        std::unique_ptr<Hive>* hive;
        std::uint32_t generation; ///< of the hive, when the key was opened
        Hive::Key key;
        DWORD access;
    };

    HKEY Add(const Entry& entry);

    /// Null for what is no open key.
    const Entry* Find(HKEY handle) const;

    /// False for what is no open key. Needs no memory.
    bool Remove(HKEY handle);

private:
    struct Slot
    {
        Entry entry; ///< without a hive in one that is free
        std::uint32_t serial;
    };

    // A handle is the number of its slot, from 1, below the slot's serial number.
    static constexpr int serialShift = 32;

    std::vector<Slot> m_slots;
    std::vector<std::size_t> m_free; ///< has room for every slot
};

}

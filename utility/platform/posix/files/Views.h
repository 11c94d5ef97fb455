#pragma once

#include "utility/platform/AtFork.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <sys/types.h>
#include <utility>

namespace utility::platform::posix
{

/// The views of files. Any thread may call.
class Views
{
public:
    /// The bytes of a whole file of this length, read-only, with one more readable behind them. Null, with the reason
    /// in LastError(), on failure. They stay when the descriptor is closed.
    void* Map(int descriptor, std::uint64_t length);

    /// Ends what Map gave. False, with the reason in LastError(), on failure, and for anything else.
    bool Unmap(const void* view);

    /// Whether there is a view of the file that is open by this descriptor.
    bool IsViewed(int descriptor);

private:
    /// What tells a file from every other: its device, and its number there, which is 0 where nothing is told of it.
    using Identity = std::pair<dev_t, ino_t>;

    /// The system wants the length back, and the interface does not carry it.
    struct View
    {
        std::size_t length;
        Identity file;
    };
    using ByBase = std::map<const void*, View>;

    static Identity IdentityOf(int descriptor);
    bool Add(const void* base, const View& view);
    ByBase::node_type Take(const void* base);
    void PutBack(ByBase::node_type view);

    ForkSafeMutex m_mutex;
    ByBase m_views;
};

}

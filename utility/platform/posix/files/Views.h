#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>

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

private:
    /// The mapped length of each view: the system wants it back, and the interface does not carry it.
    using Lengths = std::map<const void*, std::size_t>;

    bool Add(const void* base, std::size_t length);
    Lengths::node_type Take(const void* base);
    void PutBack(Lengths::node_type view);

    std::mutex m_mutex;
    Lengths m_lengths;
};

}

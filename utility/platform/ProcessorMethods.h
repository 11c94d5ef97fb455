#pragma once

// Ways to do the same, with the same results, which differ in what they take of the processor.

#include <algorithm>
#include <atomic>
#include <span>

namespace utility::platform
{

/// What each way has, whatever it does.
struct ProcessorMethod
{
    const char* name;
    /// Whether this processor, and its system, has what the method takes.
    bool (*isSupported)();
};

inline bool OnAnyProcessor() { return true; }

#if defined(__x86_64__)
/// Vectors of 512 bits whose bytes and words may be left out one by one, and shorter ones alike.
inline bool HasMaskedVectors()
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512vl");
}
#endif

/// The ways to do something, and the one in use, which any thread may ask for. One that is static is made ahead of all
/// that is run, and has the last of its methods in use until TakeFastest.
template <class Method>
class ProcessorMethods
{
public:
    /// All that the library has been compiled with, the fastest first. The last one is supported everywhere. They stay
    /// as long as this.
    constexpr explicit ProcessorMethods(std::span<const Method> all) noexcept : m_all(all), m_used(&all.back()) {}

    std::span<const Method> All() const noexcept { return m_all; }

    const Method& Used() const noexcept { return *m_used.load(std::memory_order_relaxed); }

    /// The first that is supported here is in use from now on. Gives true, so that it can be called as the library is
    /// loaded: a call would be slower by the question whether that has been done.
    bool TakeFastest() noexcept
    {
        Take(*std::ranges::find_if(m_all, [](const Method& each) { return each.isSupported(); }));
        return true;
    }

    /// Gives the one whose place this method takes.
    const Method& Take(const Method& method) noexcept { return *m_used.exchange(&method); }

private:
    std::span<const Method> m_all;
    std::atomic<const Method*> m_used;
};

}

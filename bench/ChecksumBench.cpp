// The check of blocks of 64 bytes to 1 MiB, each block by itself. ISA-L's crc32_ieee is this check with its register
// inverted before and after. What the peers have reflected is another check: the same work, but for the order of the
// bytes.

#include "utility/codec/CyclicRedundancyCheck.h"
#include "utility/codec/internal/ChecksumMethods.h"

#include <benchmark/benchmark.h>
#include <immintrin.h>
#include <isa-l/crc.h>
#include <libdeflate.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <zlib.h>

namespace
{

using Oracle = std::uint32_t (*)(const unsigned char*, std::size_t);

constexpr std::size_t largest = 1 << 20;

const unsigned char* Bytes()
{
    alignas(64) static std::array<unsigned char, largest> bytes;
    static const bool isFilled = []
    {
        std::mt19937 random(20'000'023);
        for (unsigned char& byte : bytes)
            byte = static_cast<unsigned char>(random());
        return true;
    }();
    static_cast<void>(isFilled);
    return bytes.data();
}

std::uint32_t ByUtility(const unsigned char* data, std::size_t size)
{
    CyclicRedundancyCheck check;
    check.Incorporate(data, static_cast<std::int64_t>(size));
    return check.Current();
}

std::uint32_t ByTable(const unsigned char* data, std::size_t size)
{
    static const auto table = []
    {
        std::array<std::uint32_t, 256> made;
        for (std::uint32_t i = 0; i < made.size(); ++i)
        {
            const auto byte = static_cast<unsigned char>(i);
            made[i] = ~crc32_ieee(~0U, &byte, 1);
        }
        return made;
    }();
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i)
        value = table[value >> 24 ^ data[i]] ^ value << 8;
    return value;
}

std::uint32_t ByIsal(const unsigned char* data, std::size_t size) { return ~crc32_ieee(~0U, data, size); }

std::uint32_t ByIsalReflected(const unsigned char* data, std::size_t size) { return crc32_gzip_refl(0, data, size); }

std::uint32_t ByLibdeflate(const unsigned char* data, std::size_t size) { return libdeflate_crc32(0, data, size); }

std::uint32_t ByZlib(const unsigned char* data, std::size_t size)
{
    return static_cast<std::uint32_t>(crc32(0, data, static_cast<uInt>(size)));
}

/// ISA-L leaves the upper halves of the registers in use, and then instructions that know only the lower halves wait
/// for each other.
[[gnu::target("avx")]] void ReleaseUpperHalves()
{
    if (__builtin_cpu_supports("avx"))
        _mm256_zeroupper();
}

template <class CheckOf>
void CheckBlock(benchmark::State& state, std::size_t size, CheckOf check, Oracle oracle)
{
    const unsigned char* const data = Bytes();
    if (check(data, size) != oracle(data, size))
        return state.SkipWithError("another value");
    ReleaseUpperHalves();
    for (auto _ : state)
        benchmark::DoNotOptimize(check(data, size));
    state.SetBytesProcessed(static_cast<std::int64_t>(size) * state.iterations());
}

const bool areRegistered = []
{
    for (const std::size_t size : {std::size_t{64}, std::size_t{1024}, std::size_t{4096}, largest})
    {
        const std::string what = "check of " + std::to_string(size) + " bytes/";
        const auto add = [&](const std::string& who, auto check, Oracle oracle)
        {
            benchmark::RegisterBenchmark((what + who).c_str(),
                                         [=](benchmark::State& state) { CheckBlock(state, size, check, oracle); });
        };
        add("Utility", ByUtility, ByIsal);
        add("byte table", ByTable, ByIsal);
        add("ISA-L", ByIsal, ByTable);
        add("ISA-L, reflected", ByIsalReflected, ByZlib);
        add("libdeflate, reflected", ByLibdeflate, ByZlib);
        add("zlib, reflected", ByZlib, ByLibdeflate);
        for (const utility::detail::ChecksumMethod& each : utility::detail::checksumMethods.All())
        {
            if (each.isSupported())
            {
                const auto fold = each.fold;
                add(
                    std::string("Utility:") + each.name,
                    [fold](auto* data, auto count) { return fold(0, data, count); }, ByIsal);
            }
        }
    }
    return true;
}();

}

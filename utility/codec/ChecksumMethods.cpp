#include "utility/codec/internal/ChecksumMethods.h"

#include <cstdint>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace utility::detail
{

namespace
{

/// Sixteen bytes at a time, each by a table of its own: what a byte adds to the register that so many others follow.
class Slicing
{
public:
    static DWORD Fold(DWORD value, const unsigned char* data, std::size_t count) noexcept
    {
        static const Slicing slicing;
        return slicing.Add(value, data, count);
    }

private:
    Slicing()
    {
        for (DWORD byte = 0; byte < 256; ++byte)
        {
            DWORD value = byte << 24;
            for (auto& table : m_tables)
            {
                for (int bit = 0; bit < 8; ++bit)
                    value = TimesX(value);
                table[byte] = value;
            }
        }
    }

    DWORD Add(DWORD value, const unsigned char* data, std::size_t count) const
    {
        for (; count >= checksumBlock; count -= checksumBlock, data += checksumBlock)
        {
            DWORD next = 0;
#pragma GCC unroll 16
            for (std::size_t i = 0; i < checksumBlock; ++i)
            {
                const DWORD byte = i < 4 ? data[i] ^ (value >> (24 - 8 * i) & 0xFF) : data[i];
                next ^= m_tables[checksumBlock - 1 - i][byte];
            }
            value = next;
        }
        for (; count != 0; --count)
            value = value << 8 ^ m_tables[0][value >> 24 ^ *data++];
        return value;
    }

    DWORD m_tables[checksumBlock][256];
};

#if defined(__x86_64__)

constexpr DWORD Product(DWORD v, DWORD w)
{
    DWORD product = 0;
    for (int bit = 31; bit >= 0; --bit)
        product = TimesX(product) ^ (w >> bit & 1) * v;
    return product;
}

/// The remainder of x to such a power. After 2 to the 32nd less 1 of them they repeat.
constexpr DWORD PowerOfX(int exponent)
{
    DWORD value = 1;
    DWORD factor = 2;
    for (DWORD bits = static_cast<DWORD>(exponent) - (exponent < 0 ? 1 : 0); bits != 0; bits >>= 1)
    {
        if ((bits & 1) != 0)
            value = Product(value, factor);
        factor = Product(factor, factor);
    }
    return value;
}

struct Block
{
    std::uint64_t lower;
    std::uint64_t upper;
};

/// What takes a block so many others further.
constexpr Block StepOver(int blocks) { return {PowerOfX(128 * blocks), PowerOfX(128 * blocks + 64)}; }

/// What takes a block to where its remainder is: 32 bits behind it and so many blocks. The product has 95 bits; they
/// stand at the upper end of a block.
constexpr Block Weight(int blocks)
{
    return {std::uint64_t{PowerOfX(128 * blocks + 32)} << 32, std::uint64_t{PowerOfX(128 * blocks + 96)} << 32};
}

struct Weights
{
    alignas(64) Block of[64] = {}; // the one with most blocks behind first

    constexpr Weights()
    {
        for (int behind = 0; behind < 64; ++behind)
            of[63 - behind] = Weight(behind);
    }
};
constexpr Weights weights;

/// What moves the register from the first bits of a message to the end of the first block, by the zeros ahead of the
/// message. Those are part of the block, so the way may be one backwards.
struct Shares
{
    DWORD of[64] = {};

    constexpr Shares()
    {
        for (int zeros = 0; zeros < 64; ++zeros)
            of[zeros] = PowerOfX(128 - 32 - 8 * zeros);
    }
};
constexpr Shares shares;

/// The quotient of x to the 96th, without its highest term, x to the 64th.
constexpr std::uint64_t Reciprocal()
{
    std::uint64_t quotient = 0;
    DWORD rest = checksumPolynomial; // of x to the 32nd, which goes once
    for (int i = 0; i < 64; ++i)
    {
        quotient = quotient << 1 | rest >> 31;
        rest = TimesX(rest);
    }
    return quotient;
}

#define TARGET __attribute__((target("pclmul,ssse3")))

TARGET inline __m128i ToRegister(Block block)
{
    return _mm_set_epi64x(static_cast<long long>(block.upper), static_cast<long long>(block.lower));
}

/// Of what stands in the upper 95 bits of a block. The quotient is the product of the upper half and the reciprocal.
TARGET inline DWORD Remainder(__m128i dividend)
{
    constexpr Block factors = {Reciprocal(), std::uint64_t{checksumPolynomial} << 32};
    const __m128i factor = ToRegister(factors);
    const __m128i quotient = _mm_xor_si128(_mm_clmulepi64_si128(dividend, factor, 0x01), dividend);
    const __m128i rest = _mm_xor_si128(_mm_clmulepi64_si128(quotient, factor, 0x11), dividend);
    return static_cast<DWORD>(static_cast<std::uint64_t>(_mm_cvtsi128_si64(rest)) >> 32);
}

/// Which byte of a block goes to each place: the last one first. Behind them, what makes a byte zero.
alignas(16) constexpr unsigned char reversed[31] = {15,   14,   13,   12,   11,   10,   9,    8,    7,    6,    5,
                                                    4,    3,    2,    1,    0,    0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
                                                    0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80};

/// The first `size` bytes, 1 to 16, of the 16 here, moved to the end of a block.
TARGET inline __m128i LoadPart(const unsigned char* data, std::size_t size)
{
    return _mm_shuffle_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(data)),
                            _mm_loadu_si128(reinterpret_cast<const __m128i*>(reversed + 16 - size)));
}

namespace bits128
{

using Vector = __m128i;

TARGET inline Vector Add(Vector v, Vector w) { return _mm_xor_si128(v, w); }
TARGET inline Vector AddBlocks(Vector v) { return v; }
TARGET inline Vector Extend(__m128i block) { return block; }
TARGET inline Vector Repeat(__m128i block) { return block; }
TARGET inline Vector Multiply(Vector v, Vector w)
{
    return Add(_mm_clmulepi64_si128(v, w, 0x00), _mm_clmulepi64_si128(v, w, 0x11));
}
TARGET inline Vector Multiply(Vector v, Vector w, Vector more) { return Add(Multiply(v, w), more); }
TARGET inline Vector LoadWeights(std::size_t behind)
{
    return _mm_load_si128(reinterpret_cast<const __m128i*>(weights.of + 63 - behind));
}
TARGET inline Vector Load(const unsigned char* data) { return LoadPart(data, 16); }
TARGET inline Vector LoadHead(const unsigned char* data, std::size_t size) { return LoadPart(data, size); }

#include "utility/codec/internal/Folding.inc"

bool IsSupported()
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("ssse3");
}

}

#undef TARGET
#define TARGET __attribute__((target("pclmul,vpclmulqdq,avx2")))

namespace bits256
{

using Vector = __m256i;

TARGET inline Vector Add(Vector v, Vector w) { return _mm256_xor_si256(v, w); }
TARGET inline __m128i AddBlocks(Vector v)
{
    return _mm_xor_si128(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
}
TARGET inline Vector Extend(__m128i block) { return _mm256_zextsi128_si256(block); }
TARGET inline Vector Repeat(__m128i block) { return _mm256_broadcastsi128_si256(block); }
TARGET inline Vector Multiply(Vector v, Vector w)
{
    return Add(_mm256_clmulepi64_epi128(v, w, 0x00), _mm256_clmulepi64_epi128(v, w, 0x11));
}
TARGET inline Vector Multiply(Vector v, Vector w, Vector more) { return Add(Multiply(v, w), more); }
TARGET inline Vector LoadWeights(std::size_t behind)
{
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(weights.of + 62 - behind));
}
TARGET inline Vector Load(const unsigned char* data)
{
    return _mm256_shuffle_epi8(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(data)),
                               _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(reversed))));
}
TARGET inline Vector LoadHead(const unsigned char* data, std::size_t size)
{
    if (size <= 16)
        return _mm256_set_m128i(LoadPart(data, size), _mm_setzero_si128());
    return _mm256_set_m128i(LoadPart(data + size - 16, 16), LoadPart(data, size - 16));
}

#include "utility/codec/internal/Folding.inc"

bool IsSupported()
{
    return bits128::IsSupported() && __builtin_cpu_supports("vpclmulqdq") && __builtin_cpu_supports("avx2");
}

}

#undef TARGET
#define TARGET __attribute__((target("pclmul,vpclmulqdq,avx512f,avx512bw,avx512vl")))

namespace bits512
{

using Vector = __m512i;

TARGET inline Vector Add(Vector v, Vector w) { return _mm512_xor_si512(v, w); }
TARGET inline __m128i AddBlocks(Vector v)
{
    return bits256::AddBlocks(_mm256_xor_si256(__builtin_shufflevector(v, v, 0, 1, 2, 3), //
                                               __builtin_shufflevector(v, v, 4, 5, 6, 7)));
}
TARGET inline Vector Extend(__m128i block) { return _mm512_zextsi128_si512(block); }
TARGET inline Vector Repeat(__m128i block) { return _mm512_maskz_broadcast_i32x4(__mmask16{0xFFFF}, block); }
TARGET inline Vector Multiply(Vector v, Vector w)
{
    return Add(_mm512_clmulepi64_epi128(v, w, 0x00), _mm512_clmulepi64_epi128(v, w, 0x11));
}
TARGET inline Vector Multiply(Vector v, Vector w, Vector more)
{
    const int exclusiveOr = 0x96; // of three
    return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(v, w, 0x00), _mm512_clmulepi64_epi128(v, w, 0x11), more,
                                     exclusiveOr);
}
TARGET inline Vector LoadWeights(std::size_t behind) { return _mm512_loadu_si512(weights.of + 60 - behind); }
TARGET inline Vector Reverse(Vector v)
{
    return _mm512_shuffle_epi8(v, Repeat(_mm_load_si128(reinterpret_cast<const __m128i*>(reversed))));
}
TARGET inline Vector Load(const unsigned char* data) { return Reverse(_mm512_loadu_si512(data)); }
TARGET inline Vector LoadHead(const unsigned char* data, std::size_t size)
{
    // What the mask leaves out is not read.
    const auto last = reinterpret_cast<std::uintptr_t>(data) + size;
    return Reverse(_mm512_maskz_loadu_epi8(~__mmask64{0} << (64 - size), reinterpret_cast<const void*>(last - 64)));
}

#include "utility/codec/internal/Folding.inc"

bool IsSupported() { return bits256::IsSupported() && platform::HasMaskedVectors(); }

}

#undef TARGET

#endif

constexpr ChecksumMethod methods[] = {
#if defined(__x86_64__)
    {{"512 bits", bits512::IsSupported}, bits512::Fold},
    {{"256 bits", bits256::IsSupported}, bits256::Fold},
    {{"128 bits", bits128::IsSupported}, bits128::Fold},
#endif
    {{"slicing", platform::OnAnyProcessor}, Slicing::Fold},
};

}

constinit platform::ProcessorMethods<ChecksumMethod> checksumMethods(methods);
[[maybe_unused]] const bool isFastestTaken = checksumMethods.TakeFastest();

}

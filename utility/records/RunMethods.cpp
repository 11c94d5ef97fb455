#include "utility/records/internal/RunMethods.h"

#include "utility/numbers/internal/AllPowers.h"

#include <algorithm>
#include <bit>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace utility::detail
{

namespace
{

#if defined(__x86_64__)

/// Masks: what begins at the n-th one leaves the last n of 16 bytes.
struct LastBytes
{
    alignas(64) unsigned char bytes[64] = {}; // to be read from the first one on

    constexpr LastBytes() { std::fill(bytes + 17, std::end(bytes), static_cast<unsigned char>(0xFF)); }

    const unsigned char* Leaving(std::size_t count) const { return bytes + 1 + count; }
    /// All of them but the point in front.
    const unsigned char* LeavingBehindPoint(std::size_t count) const { return bytes + count; }
};
constexpr LastBytes lastBytes;

/// What a number's first character is.
struct Signs
{
    std::uint8_t count[256] = {}; ///< 1 for a sign
    std::uint64_t bit[256] = {};  ///< that of a double

    constexpr Signs()
    {
        count[std::size_t{'+'}] = count[std::size_t{'-'}] = 1;
        bit[std::size_t{'-'}] = std::uint64_t{1} << 63;
    }
};
constexpr Signs signs;

/// What so many digits of a fraction, the point among them, are to be divided by.
struct Divisors
{
    double of[longestMantissa + 2] = {1.0,  1.0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                                      1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
};
constexpr Divisors divisors;

/// What the first pass over some fields makes of each, for the second to compute with. A chain of doubles over sixteen
/// digits rounds once, at the last of them, as the sum of its upper and its lower eight does.
struct RealParts
{
    static constexpr std::size_t capacity = 64;
    static constexpr std::size_t block = 8; ///< so many are computed with at least
    static constexpr std::size_t mostDigits = 16;
    static constexpr std::size_t longestExponent = 4; ///< in characters behind its letter

    /// Eight digits each: whole part, its lower ones behind its upper ones, and fraction.
    alignas(64) std::int32_t digits[capacity][4];
    alignas(64) double divisor[capacity]; ///< of the fraction
    alignas(64) double scale[capacity];
    alignas(64) std::uint64_t sign[capacity];           ///< the sign bit of a double, or 0
    alignas(64) std::uint32_t exponentText[capacity];   ///< the last characters of the field
    alignas(64) std::uint32_t behindMantissa[capacity]; ///< so many of them are of an exponent, the letter among them
    alignas(64) std::int32_t exponents[capacity];
    TextFieldForm forms[capacity];

    /// A fraction of more digits.
    struct LongFraction
    {
        double value;
        std::size_t field;
    };
    LongFraction longFractions[capacity];
    std::size_t longFractionCount = 0;

    /// To whole blocks.
    static constexpr std::size_t Padded(std::size_t count) { return (count + block - 1) / block * block; }

    /// Something to compute with.
    void SetZero(std::size_t i)
    {
        std::fill(std::begin(digits[i]), std::end(digits[i]), 0);
        divisor[i] = 1.0;
        sign[i] = exponentText[i] = behindMantissa[i] = 0;
    }

    void SetExponent(std::size_t i, const char* end, std::size_t size)
    {
        std::memcpy(&exponentText[i], end - longestExponent, longestExponent);
        behindMantissa[i] = static_cast<std::uint32_t>(size);
    }

    /// False if there are too many, or something else among those that StoreDigits has not seen. It has stored the last
    /// ones.
    bool AddLongFraction(std::size_t i, const char* begin, std::size_t count)
    {
        if (count > longestMantissa)
            return false;
        std::uint64_t value = 0;
        for (std::size_t j = 0; j < count - mostDigits; ++j)
        {
            const auto digit = static_cast<unsigned char>(begin[j] - '0');
            if (digit > 9)
                return false;
            value = value * 10 + digit;
        }
        value = value * 10'000'000'000'000'000 + static_cast<std::uint64_t>(digits[i][2]) * 100'000'000 +
                static_cast<std::uint64_t>(digits[i][3]);
        longFractions[longFractionCount++] = {ChainOfDoubles(value), i};
        return true;
    }

    double ValueOf(const LongFraction& fraction) const
    {
        const std::size_t i = fraction.field;
        const auto isSigned = [&](double value)
        { return std::bit_cast<double>(std::bit_cast<std::uint64_t>(value) ^ sign[i]); };
        const double whole = digits[i][0] * 1e8 + digits[i][1];
        return scale[i] * (isSigned(fraction.value / divisor[i]) + isSigned(whole));
    }
};

/// What a field's characters are, a bit each, for the first 32.
struct FieldBits
{
    std::uint32_t blanks;
    std::uint32_t points;
    std::uint32_t exponentLetters;
};
constexpr std::size_t longestField = 32;

/// The letters D and E of either case differ from D in these bits alone.
constexpr char exceptLetterBits = static_cast<char>(~0x21);

/// 1 if the characters are the same, else 0. A comparison may be compiled to a branch.
inline std::uint32_t Is(char c, char other) { return (std::uint32_t{static_cast<unsigned char>(c ^ other)} - 1) >> 31; }

/// False if there is something else than digits behind its sign.
inline bool ReadExponent(RealParts& parts, std::size_t i)
{
    const std::uint32_t text = parts.exponentText[i];
    const std::size_t ahead = 8 * (RealParts::longestExponent + 1 - parts.behindMantissa[i]);
    const auto first = static_cast<unsigned char>(std::uint64_t{text} >> ahead);
    const std::uint32_t isNegative = Is(static_cast<char>(first), '-');
    const auto mask = static_cast<std::uint32_t>(0xFFFF'FFFF'FFFF'FFFF << ahead << 8 * signs.count[first]);
    const std::uint32_t digits = (text ^ 0x3030'3030) & mask;
    const std::uint32_t pairs = (digits * 10 + (digits >> 8)) & 0x00FF'00FF;
    const std::uint32_t number = (pairs * 100 + (pairs >> 16)) & 0xFFFF;
    const auto exponent = static_cast<std::int32_t>((number ^ (0 - isNegative)) + isNegative);
    parts.exponents[i] = std::clamp<std::int32_t>(exponent, lowestExponent, highestExponent);
    return (((digits + 0x7676'7676) | digits) & 0x8080'8080) == 0;
}

#define TARGET __attribute__((target("sse2")))

namespace bits128
{

struct Characters64
{
    __m128i parts[4];
};

TARGET inline Characters64 Load64(const char* at)
{
    Characters64 loaded;
    for (std::size_t i = 0; i < 4; ++i)
        loaded.parts[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at) + i);
    return loaded;
}

TARGET inline std::uint64_t Equal(const Characters64& characters, char c)
{
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < 4; ++i)
        bits |= std::uint64_t{static_cast<unsigned>(
                    _mm_movemask_epi8(_mm_cmpeq_epi8(characters.parts[i], _mm_set1_epi8(c))))}
                << (16 * i);
    return bits;
}

TARGET inline std::uint32_t Bits(__m128i lower, __m128i upper)
{
    return static_cast<std::uint32_t>(_mm_movemask_epi8(lower)) | static_cast<std::uint32_t>(_mm_movemask_epi8(upper))
                                                                      << 16;
}

/// What the first pass compares with, and what it takes off.
struct Constants
{
};

TARGET inline FieldBits BitsOf(const char* at, const Constants&)
{
    const __m128i lower = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
    const __m128i upper = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at + 16));
    const __m128i blank = _mm_set1_epi8(' ');
    const __m128i point = _mm_set1_epi8('.');
    const __m128i letter = _mm_set1_epi8('D');
    const __m128i mask = _mm_set1_epi8(exceptLetterBits);
    return {
        Bits(_mm_cmpeq_epi8(lower, blank), _mm_cmpeq_epi8(upper, blank)),
        Bits(_mm_cmpeq_epi8(lower, point), _mm_cmpeq_epi8(upper, point)),
        Bits(_mm_cmpeq_epi8(_mm_and_si128(lower, mask), letter), _mm_cmpeq_epi8(_mm_and_si128(upper, mask), letter))};
}

/// The last of 16 characters as digits behind zeros.
TARGET inline __m128i DigitsBefore(const char* end, const unsigned char* leaving)
{
    const __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i*>(end - 16));
    const __m128i mask = _mm_loadu_si128(reinterpret_cast<const __m128i*>(leaving));
    return _mm_and_si128(_mm_xor_si128(characters, _mm_set1_epi8('0')), mask);
}

/// Two numbers of eight digits, twice.
TARGET inline __m128i Eights(__m128i digits)
{
    const __m128i tens = _mm_mullo_epi16(_mm_and_si128(digits, _mm_set1_epi16(0xFF)), _mm_set1_epi16(10));
    const __m128i pairs = _mm_add_epi16(tens, _mm_srli_epi16(digits, 8));
    const __m128i fours = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 100));
    return _mm_madd_epi16(_mm_packs_epi32(fours, fours), _mm_set1_epi32(1 << 16 | 10'000));
}

/// What is above 9.
TARGET inline __m128i Excess(__m128i digits) { return _mm_subs_epu8(digits, _mm_set1_epi8(9)); }

TARGET inline bool IsZero(__m128i v) { return _mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_setzero_si128())) == 0xFFFF; }

/// The digits of the whole part, and of what is behind it up to the end of the mantissa. False if something else is
/// among them.
TARGET inline bool StoreDigits(const char* wholeEnd, std::size_t wholeCount, const char* fractionEnd,
                               std::size_t behindWhole, std::int32_t* to, const Constants&)
{
    const __m128i whole = DigitsBefore(wholeEnd, lastBytes.Leaving(wholeCount));
    const __m128i fraction = DigitsBefore(fractionEnd, lastBytes.LeavingBehindPoint(behindWhole));
    const __m128i eights = _mm_unpacklo_epi64(Eights(whole), Eights(fraction));
    _mm_store_si128(reinterpret_cast<__m128i*>(to), eights);
    return IsZero(_mm_or_si128(Excess(whole), Excess(fraction)));
}

TARGET inline std::size_t ReadExponents(RealParts& parts, std::size_t count)
{
    std::size_t fields[RealParts::capacity];
    std::size_t found = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        parts.exponents[i] = 0;
        fields[found] = i;
        found += parts.behindMantissa[i] != 0 ? 1 : 0;
    }
    for (std::size_t i = 0; i < found; ++i)
    {
        if (!ReadExponent(parts, fields[i])) [[unlikely]]
            return fields[i];
    }
    return count;
}

constexpr std::size_t together = 2;

/// The values of some parts from this index on.
TARGET inline void Compute(const RealParts& parts, std::size_t i, double* values)
{
    __m128d wholes[2];
    __m128d fractions[2];
    for (std::size_t j = 0; j < 2; ++j)
    {
        const __m128i digits = _mm_load_si128(reinterpret_cast<const __m128i*>(parts.digits[i + j]));
        wholes[j] = _mm_cvtepi32_pd(digits);
        fractions[j] = _mm_cvtepi32_pd(_mm_unpackhi_epi64(digits, digits));
    }
    const __m128d upper = _mm_set1_pd(1e8);
    const __m128d sign = _mm_load_pd(reinterpret_cast<const double*>(parts.sign + i));
    const __m128d whole =
        _mm_add_pd(_mm_mul_pd(_mm_unpacklo_pd(wholes[0], wholes[1]), upper), _mm_unpackhi_pd(wholes[0], wholes[1]));
    const __m128d fraction = _mm_add_pd(_mm_mul_pd(_mm_unpacklo_pd(fractions[0], fractions[1]), upper),
                                        _mm_unpackhi_pd(fractions[0], fractions[1]));
    const __m128d quotient = _mm_div_pd(fraction, _mm_load_pd(parts.divisor + i));
    const __m128d sum = _mm_add_pd(_mm_xor_pd(quotient, sign), _mm_xor_pd(whole, sign));
    _mm_storeu_pd(values, _mm_mul_pd(_mm_load_pd(parts.scale + i), sum));
}

/// Digits, at most 16, as a number of which only the lower 32 bits are wanted.
TARGET inline bool ReadDigits(const char* end, std::size_t count, std::uint32_t& number)
{
    const __m128i digits = DigitsBefore(end, lastBytes.Leaving(count));
    const auto eights = static_cast<std::uint64_t>(_mm_cvtsi128_si64(Eights(digits)));
    number = static_cast<std::uint32_t>(eights) * 100'000'000U + static_cast<std::uint32_t>(eights >> 32);
    return IsZero(Excess(digits));
}

#include "utility/records/internal/Runs.inc"

}

#undef TARGET
#define TARGET __attribute__((target("avx2,bmi,bmi2,popcnt")))

namespace bits256
{

struct Characters64
{
    __m256i lower;
    __m256i upper;
};

TARGET inline __m256i Load32(const char* at) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(at)); }

TARGET inline Characters64 Load64(const char* at) { return {Load32(at), Load32(at + 32)}; }

TARGET inline std::uint32_t EqualBits(__m256i characters, char c)
{
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(characters, _mm256_set1_epi8(c))));
}

TARGET inline std::uint64_t Equal(const Characters64& characters, char c)
{
    return EqualBits(characters.lower, c) | std::uint64_t{EqualBits(characters.upper, c)} << 32;
}

/// In a register for as long as it is needed: otherwise the compiler makes it anew for each field.
TARGET inline __m256i Kept(char c)
{
    __m256i characters = _mm256_set1_epi8(c);
    asm("" : "+x"(characters));
    return characters;
}

struct Constants
{
    __m256i blank;
    __m256i point;
    __m256i letter;
    __m256i exceptLetter;
    __m256i zero;
    __m256i nine;

    TARGET Constants()
        : blank(Kept(' ')),
          point(Kept('.')),
          letter(Kept('D')),
          exceptLetter(Kept(exceptLetterBits)),
          zero(Kept('0')),
          nine(Kept(9))
    {
    }
};

TARGET inline std::uint32_t EqualBits(__m256i characters, __m256i others)
{
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(characters, others)));
}

TARGET inline FieldBits BitsOf(const char* at, const Constants& constants)
{
    const __m256i characters = Load32(at);
    return {EqualBits(characters, constants.blank), EqualBits(characters, constants.point),
            EqualBits(_mm256_and_si256(characters, constants.exceptLetter), constants.letter)};
}

TARGET inline __m128i Load16(const void* at) { return _mm_loadu_si128(static_cast<const __m128i*>(at)); }

TARGET inline bool StoreDigits(const char* wholeEnd, std::size_t wholeCount, const char* fractionEnd,
                               std::size_t behindWhole, std::int32_t* to, const Constants& constants)
{
    const __m256i characters =
        _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(wholeEnd - 16)), Load16(fractionEnd - 16), 1);
    const __m256i mask = _mm256_inserti128_si256(_mm256_castsi128_si256(Load16(lastBytes.Leaving(wholeCount))),
                                                 Load16(lastBytes.LeavingBehindPoint(behindWhole)), 1);
    const __m256i digits = _mm256_and_si256(_mm256_xor_si256(characters, constants.zero), mask);
    const __m256i pairs = _mm256_maddubs_epi16(digits, _mm256_set1_epi16(1 << 8 | 10));
    const __m256i fours = _mm256_madd_epi16(pairs, _mm256_set1_epi32(1 << 16 | 100));
    const __m256i eights = _mm256_madd_epi16(_mm256_packus_epi32(fours, fours), _mm256_set1_epi32(1 << 16 | 10'000));
    constexpr int first64OfEach = 0b1000;
    const __m128i stored = _mm256_castsi256_si128(_mm256_permute4x64_epi64(eights, first64OfEach));
    _mm_store_si128(reinterpret_cast<__m128i*>(to), stored);
    const __m256i excess = _mm256_subs_epu8(digits, constants.nine);
    return _mm256_testz_si256(excess, excess) != 0;
}

/// Of eight fields, a bit for each whose exponent is good.
TARGET inline unsigned ReadExponentsOfBlock(RealParts& parts, std::size_t first)
{
    const auto load = [first](const std::uint32_t* from) __attribute__((always_inline, target("avx2")))
    {
        return _mm256_load_si256(reinterpret_cast<const __m256i*>(from + first));
    };
    const __m256i text = load(parts.exponentText);
    const __m256i longest = _mm256_set1_epi32(RealParts::longestExponent + 1);
    // The bits ahead of the exponent: all of them, or more, if there is none.
    const __m256i ahead = _mm256_slli_epi32(_mm256_sub_epi32(longest, load(parts.behindMantissa)), 3);
    const __m256i first8 = _mm256_and_si256(_mm256_srlv_epi32(text, ahead), _mm256_set1_epi32(0xFF));
    const __m256i isNegative = _mm256_cmpeq_epi32(first8, _mm256_set1_epi32('-'));
    const __m256i isSign = _mm256_or_si256(isNegative, _mm256_cmpeq_epi32(first8, _mm256_set1_epi32('+')));
    const __m256i aheadOfDigits = _mm256_add_epi32(ahead, _mm256_and_si256(isSign, _mm256_set1_epi32(8)));
    const __m256i mask = _mm256_sllv_epi32(_mm256_set1_epi32(-1), aheadOfDigits);
    const __m256i digits = _mm256_and_si256(_mm256_xor_si256(text, _mm256_set1_epi8('0')), mask);
    const __m256i pairs = _mm256_maddubs_epi16(digits, _mm256_set1_epi16(1 << 8 | 10));
    const __m256i number = _mm256_madd_epi16(pairs, _mm256_set1_epi32(1 << 16 | 100));
    const __m256i exponents = _mm256_sub_epi32(_mm256_xor_si256(number, isNegative), isNegative);
    const __m256i clamped = _mm256_min_epi32(_mm256_max_epi32(exponents, _mm256_set1_epi32(lowestExponent)),
                                             _mm256_set1_epi32(highestExponent));
    _mm256_store_si256(reinterpret_cast<__m256i*>(parts.exponents + first), clamped);
    const __m256i excess = _mm256_subs_epu8(digits, _mm256_set1_epi8(9));
    const __m256i isGood = _mm256_cmpeq_epi32(excess, _mm256_setzero_si256());
    return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(isGood)));
}

TARGET inline std::size_t ReadExponents(RealParts& parts, std::size_t count)
{
    std::size_t read = 0;
    for (std::size_t i = 0; read == i && i < count; i += RealParts::block)
        read += static_cast<std::size_t>(std::countr_one(ReadExponentsOfBlock(parts, i)));
    return read;
}

constexpr std::size_t together = 4;

TARGET inline __m256d LoadDigits(const RealParts& parts, std::size_t i)
{
    const __m128i digits = _mm_load_si128(reinterpret_cast<const __m128i*>(parts.digits[i]));
    return _mm256_mul_pd(_mm256_cvtepi32_pd(digits), _mm256_set_pd(1.0, 1e8, 1.0, 1e8));
}

TARGET inline void Compute(const RealParts& parts, std::size_t i, double* values)
{
    // Whole part, whole part of the next field, fraction, fraction of the next field.
    const __m256d first = _mm256_hadd_pd(LoadDigits(parts, i), LoadDigits(parts, i + 1));
    const __m256d second = _mm256_hadd_pd(LoadDigits(parts, i + 2), LoadDigits(parts, i + 3));
    const __m256d whole = _mm256_permute2f128_pd(first, second, 0x20);
    const __m256d fraction = _mm256_permute2f128_pd(first, second, 0x31);
    const __m256d sign = _mm256_load_pd(reinterpret_cast<const double*>(parts.sign + i));
    const __m256d quotient = _mm256_div_pd(fraction, _mm256_load_pd(parts.divisor + i));
    const __m256d sum = _mm256_add_pd(_mm256_xor_pd(quotient, sign), _mm256_xor_pd(whole, sign));
    _mm256_storeu_pd(values, _mm256_mul_pd(_mm256_load_pd(parts.scale + i), sum));
}

TARGET inline bool ReadDigits(const char* end, std::size_t count, std::uint32_t& number)
{
    const __m128i digits =
        _mm_and_si128(_mm_xor_si128(Load16(end - 16), _mm_set1_epi8('0')), Load16(lastBytes.Leaving(count)));
    const __m128i pairs = _mm_maddubs_epi16(digits, _mm_set1_epi16(1 << 8 | 10));
    const __m128i fours = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 100));
    const __m128i eights = _mm_madd_epi16(_mm_packus_epi32(fours, fours), _mm_set1_epi32(1 << 16 | 10'000));
    const auto both = static_cast<std::uint64_t>(_mm_cvtsi128_si64(eights));
    number = static_cast<std::uint32_t>(both) * 100'000'000U + static_cast<std::uint32_t>(both >> 32);
    const __m128i excess = _mm_subs_epu8(digits, _mm_set1_epi8(9));
    return _mm_testz_si128(excess, excess) != 0;
}

#include "utility/records/internal/Runs.inc"

bool IsSupported()
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
           __builtin_cpu_supports("popcnt");
}

}

#undef TARGET
#define TARGET __attribute__((target("avx2,bmi,bmi2,popcnt,avx512f,avx512bw,avx512vl")))

namespace bits512
{

using bits256::BitsOf;
using bits256::Constants;
using bits256::Load32;
using bits256::ReadDigits;
using bits256::ReadExponents;
using bits256::StoreDigits;
using Characters64 = __m512i;

TARGET inline Characters64 Load64(const char* at) { return _mm512_loadu_si512(at); }

TARGET inline std::uint64_t Equal(const Characters64& characters, char c)
{
    return _mm512_cmpeq_epi8_mask(characters, _mm512_set1_epi8(c));
}

constexpr std::size_t together = 8;

/// Operations without a mask begin with something undefined in GCC's headers, of which it warns.
constexpr __mmask8 everyLane = 0xFF;

/// Of four fields: the whole parts of the first and the third, their fractions, and the same of the others.
TARGET inline __m512d Sums(const RealParts& parts, std::size_t i)
{
    const __m512d weights = _mm512_set_pd(1.0, 1e8, 1.0, 1e8, 1.0, 1e8, 1.0, 1e8);
    const __m512d first = _mm512_mul_pd(
        _mm512_maskz_cvtepi32_pd(everyLane, Load32(reinterpret_cast<const char*>(parts.digits[i]))), weights);
    const __m512d second = _mm512_mul_pd(
        _mm512_maskz_cvtepi32_pd(everyLane, Load32(reinterpret_cast<const char*>(parts.digits[i + 2]))), weights);
    return _mm512_add_pd(_mm512_maskz_unpacklo_pd(everyLane, first, second),
                         _mm512_maskz_unpackhi_pd(everyLane, first, second));
}

TARGET inline void Compute(const RealParts& parts, std::size_t i, double* values)
{
    const __m512d first = Sums(parts, i);
    const __m512d second = Sums(parts, i + 4);
    const __m512d whole = _mm512_permutex2var_pd(first, _mm512_set_epi64(13, 9, 12, 8, 5, 1, 4, 0), second);
    const __m512d fraction = _mm512_permutex2var_pd(first, _mm512_set_epi64(15, 11, 14, 10, 7, 3, 6, 2), second);
    const __m512i sign = _mm512_load_si512(parts.sign + i);
    const __m512d quotient = _mm512_div_pd(fraction, _mm512_load_pd(parts.divisor + i));
    const auto signedAs = [&](__m512d v) __attribute__((always_inline, target("avx512f")))
    {
        return _mm512_castsi512_pd(_mm512_xor_si512(_mm512_castpd_si512(v), sign));
    };
    const __m512d sum = _mm512_add_pd(signedAs(quotient), signedAs(whole));
    _mm512_storeu_pd(values, _mm512_mul_pd(_mm512_load_pd(parts.scale + i), sum));
}

#include "utility/records/internal/Runs.inc"

bool IsSupported() { return bits256::IsSupported() && platform::HasMaskedVectors(); }

}

#undef TARGET

#endif

constexpr RunMethod methods[] = {
#if defined(__x86_64__)
    {{"512 bits", bits512::IsSupported}, bits512::Find, bits512::ReadReals, bits512::ReadInts},
    {{"256 bits", bits256::IsSupported}, bits256::Find, bits256::ReadReals, bits256::ReadInts},
    {{"128 bits", platform::OnAnyProcessor}, bits128::Find, bits128::ReadReals, bits128::ReadInts},
#endif
    {{"single reads", platform::OnAnyProcessor}, nullptr, nullptr, nullptr},
};

}

constinit platform::ProcessorMethods<RunMethod> runMethods(methods);
[[maybe_unused]] const bool isFastestTaken = runMethods.TakeFastest();

}

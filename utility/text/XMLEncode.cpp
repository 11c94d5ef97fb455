#include "utility/text/XMLEncode.h"

#include <array>
#include <bit>
#include <cstddef>
#include <string_view>

#include <emmintrin.h>

// The text is gone through twice: to count how long the result is, and to write it. No replacement has a character that
// is replaced, but for the & that each begins with, so that all can be made at once.
//
// Few characters are replaced, so that what matters is how fast the others are passed over: sixteen at a time, narrowed
// to bytes. Those that a byte cannot hold become 0 or 255, which are not replaced.

namespace
{

constexpr std::size_t together = 16;

__m128i Load(const wchar_t* text) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(text)); }

/// Sixteen characters as bytes.
__m128i Narrowed(const wchar_t* text)
{
    if constexpr (sizeof(wchar_t) == 2)
        return _mm_packus_epi16(Load(text), Load(text + 8));
    else
        return _mm_packus_epi16(_mm_packs_epi32(Load(text), Load(text + 4)),
                                _mm_packs_epi32(Load(text + 8), Load(text + 12)));
}

/// One bit for each of sixteen characters that is replaced.
unsigned SpecialsIn(const wchar_t* text)
{
    const __m128i bytes = Narrowed(text);
    const auto are = [bytes](char special) { return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(special)); };
    const __m128i found = (are('&') | are('\'')) | (are('<') | are('>')) | (are('"') | are('\xB0'));
    return static_cast<unsigned>(_mm_movemask_epi8(found));
}

/// What stands for each character that a byte holds; nothing if that is the character itself.
using Replacements = std::array<std::wstring_view, 256>;

constexpr Replacements ReplacementsWith(std::wstring_view degree)
{
    Replacements replacements;
    replacements[L'&'] = L"&amp;";
    replacements[L'<'] = L"&lt;";
    replacements[L'>'] = L"&gt;";
    replacements[L'\''] = L"&apos;";
    replacements[L'"'] = L"&quot;";
    replacements[L'\u00B0'] = degree;
    return replacements;
}

constexpr Replacements withNumberOfDegree = ReplacementsWith(L"&#176;");
constexpr Replacements withNameOfDegree = ReplacementsWith(L"&deg;");

/// Calls `use` with the place and the replacement of each character that is replaced, in their order.
template <class Use>
void ForEachSpecial(std::wstring_view text, const Replacements& replacements, Use use)
{
    std::size_t at = 0;
    const auto useThese = [&](unsigned specials)
    {
        for (; specials != 0; specials &= specials - 1)
        {
            const std::size_t place = at + static_cast<std::size_t>(std::countr_zero(specials));
            use(place, replacements[static_cast<std::size_t>(text[place])]);
        }
    };
    for (; text.size() - at >= together; at += together)
        useThese(SpecialsIn(text.data() + at));
    wchar_t rest[together] = {};
    text.copy(rest, together, at);
    useThese(SpecialsIn(rest));
}

}

std::wstring XMLEncode(std::wstring text, bool namedDegree)
{
    const Replacements& replacements = namedDegree ? withNameOfDegree : withNumberOfDegree;
    std::size_t size = text.size();
    ForEachSpecial(text, replacements,
                   [&size](std::size_t, std::wstring_view replacement) { size += replacement.size() - 1; });
    if (size == text.size())
        return text;
    std::wstring encoded;
    encoded.reserve(size);
    std::size_t done = 0;
    ForEachSpecial(text, replacements,
                   [&](std::size_t place, std::wstring_view replacement)
                   {
                       encoded.append(text, done, place - done).append(replacement);
                       done = place + 1;
                   });
    encoded.append(text, done);
    return encoded;
}

#include "utility/numbers/internal/FixedDigits.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace utility::detail
{

FixedDigits::FixedDigits(double value, int decimals)
{
    // A zero for a carry, then the exact value: as many places as there are bits behind the point.
    int exponent = 0;
    std::frexp(value, &exponent);
    const int exactPlaces = std::clamp(53 - exponent, 0, longestFraction);
    m_buffer[0] = '0';
    char* const first = m_buffer + 1;
    char* end =
        std::to_chars(first, m_buffer + sizeof m_buffer, std::fabs(value), std::chars_format::fixed, exactPlaces).ptr;
    char* const point = std::find(first, end, '.');
    if (point != end)
        end = std::copy(point + 1, end, point);

    // The first digit that is dropped, which may stand ahead of all.
    const std::int64_t kept = point - m_buffer + static_cast<std::int64_t>(decimals);
    if (kept <= 0)
        std::fill(m_buffer, end, '0');
    else if (kept < end - m_buffer)
    {
        char* const dropped = m_buffer + kept;
        char* last = dropped - 1;
        const bool isTie = *dropped == '5' && std::all_of(dropped + 1, end, [](char digit) { return digit == '0'; });
        if (isTie ? *last % 2 != 0 : *dropped >= '5')
        {
            for (; *last == '9'; --last)
                *last = '0';
            ++*last;
        }
        std::fill(dropped, end, '0');
    }
    m_text = std::find_if(m_buffer, point - 1, [](char digit) { return digit != '0'; });
    m_wholeLength = static_cast<std::size_t>(point - m_text);
    m_fractionLength = static_cast<std::size_t>(std::clamp<std::int64_t>(decimals, 0, end - point));
}

}

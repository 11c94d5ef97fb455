#include "utility/records/Mantissa.h"

namespace utility::detail
{

double RoundedChain(std::uint64_t digits)
{
    std::uint64_t exact = digits;
    std::size_t left = 0;
    for (; exact > std::uint64_t{1} << 53; ++left)
        exact /= 10;
    auto value = static_cast<double>(exact);
    while (left != 0)
        value = value * 10.0 + static_cast<double>(digits / integerPowers[--left] % 10);
    return value;
}

void LongMantissa::Add(char c)
{
    const MantissaCharacter& character = ToMantissa(c);
    m_state &= character.next;
    if (IsWhole())
    {
        m_whole = m_whole * 10.0 + character.digit;
    }
    else if (character.kind == mayBeDigit)
    {
        m_fraction = m_fraction * 10.0 + character.digit;
        ++m_fractionDigits;
    }
}

double LongMantissa::Value() const
{
    // A quotient, not a product with the inverse, which would round otherwise.
    const double fraction = m_fraction / pow10(static_cast<int>(std::min<std::int64_t>(m_fractionDigits, INT32_MAX)));
    return (m_state & isPositive) != 0 ? fraction + m_whole : -fraction + -m_whole;
}

}

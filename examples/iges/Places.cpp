#include "examples/iges/Places.h"

#include <cmath>
#include <numbers>

namespace iges
{

namespace
{

constexpr std::uint64_t fewEnoughToTry = 1'000;

}

const wchar_t* Places::Read(const Numbers& numbers)
{
    m_base = numbers.IntegerAt(1);
    switch (numbers.IntegerAt(0))
    {
    case 408: // base, place, scale
    {
        const wchar_t* const trouble = ReadScale(numbers, 5, 2);
        m_common.translation = {};
        return trouble;
    }
    case 412: // base, scale, place, columns, rows, distances of columns and of rows, turn, list
    {
        if (const wchar_t* const trouble = ReadScale(numbers, 2, 3))
            return trouble;
        if (numbers.IntegerAt(6) < 1 || numbers.IntegerAt(7) < 1)
            return L"The array has no places.";
        m_columns = static_cast<std::uint64_t>(numbers.IntegerAt(6));
        m_rows = static_cast<std::uint64_t>(numbers.IntegerAt(7));
        Transform turn;
        const double cosine = std::cos(numbers.At(10));
        const double sine = std::sin(numbers.At(10));
        turn.rotation = {{{cosine, -sine, 0.0}, {sine, cosine, 0.0}, {0.0, 0.0, 1.0}}};
        m_column = turn({numbers.At(8), 0.0, 0.0});
        m_row = turn({0.0, numbers.At(9), 0.0});
        const Point corner = m_common.translation;
        m_common.translation = {};
        m_common = turn.After(m_common);
        m_common.translation = corner;
        return ReadList(numbers, 11);
    }
    case 414: // base, places, centre, radius, angle of the first, step, list
        if (const wchar_t* const trouble = ReadScale(numbers, numbers.Size(), 3))
            return trouble;
        if (numbers.IntegerAt(2) < 1)
            return L"The array has no places.";
        m_isCircular = true;
        m_columns = static_cast<std::uint64_t>(numbers.IntegerAt(2));
        m_radius = numbers.At(6);
        m_start = numbers.At(7);
        m_step = numbers.At(8);
        return ReadList(numbers, 9);
    default:
        return nullptr;
    }
}

/// A scale of 0 is one that is not given.
const wchar_t* Places::ReadScale(const Numbers& numbers, std::size_t scale, std::size_t place)
{
    if (!numbers.Has(place, 3))
        return endsEarly;
    const double factor = numbers.At(scale) == 0.0 ? 1.0 : numbers.At(scale);
    for (std::size_t i = 0; i < 3; ++i)
        m_common.rotation[i][i] = factor;
    m_common.translation = numbers.PointAt(place);
    return nullptr;
}

/// How many are listed, 0 if those alone are shown, and the list. Without one all are shown.
const wchar_t* Places::ReadList(const Numbers& numbers, std::size_t count)
{
    const int listed = numbers.IntegerAt(count);
    m_onlyListed = listed > 0 && numbers.IntegerAt(count + 1) == 0;
    if (listed > 0 && !numbers.Has(count + 2, static_cast<std::size_t>(listed)))
        return endsEarly;
    for (int i = 0; i < listed; ++i)
    {
        const int number = numbers.IntegerAt(count + 2 + static_cast<std::size_t>(i));
        if (number >= 1 && static_cast<std::uint64_t>(number) <= m_columns * m_rows)
            m_listed.insert(static_cast<std::uint64_t>(number));
    }
    return nullptr;
}

bool Places::IsShown(std::uint64_t number) const { return m_listed.contains(number) == m_onlyListed; }

Point Places::At(std::uint64_t number) const
{
    const auto index = static_cast<double>(number - 1);
    if (m_isCircular)
    {
        const double angle = m_start + index * m_step;
        return {m_radius * std::cos(angle), m_radius * std::sin(angle), 0.0};
    }
    return static_cast<double>((number - 1) / m_rows) * m_column + static_cast<double>((number - 1) % m_rows) * m_row;
}

void Places::ForEach(const std::function<bool(const Point&)>& action) const
{
    if (m_onlyListed)
    {
        for (const std::uint64_t number : m_listed)
        {
            if (!action(At(number)))
                return;
        }
        return;
    }
    for (std::uint64_t number = 1; number <= m_columns * m_rows; ++number)
    {
        if (IsShown(number) && !action(At(number)))
            return;
    }
}

std::vector<Point> Places::Outermost() const
{
    std::vector<Point> places;
    if (m_onlyListed || (m_isCircular && m_columns <= fewEnoughToTry))
    {
        ForEach(
            [&](const Point& place)
            {
                places.push_back(place);
                return true;
            });
    }
    else if (m_isCircular)
    {
        const double sweep = std::abs(m_step) * static_cast<double>(m_columns - 1);
        const double start = m_step < 0.0 ? m_start - sweep : m_start;
        const auto at = [&](double angle) {
            return Point{m_radius * std::cos(angle), m_radius * std::sin(angle), 0.0};
        };
        Curve arc;
        Extents box;
        if (AddArc({}, at(start), at(sweep < 2.0 * std::numbers::pi ? start + sweep : start), arc))
        {
            AddToExtents(arc, {}, box);
            places = {box.Low(), box.High()};
        }
    }
    else
    {
        for (const bool isRight : {false, true})
        {
            for (const bool isTop : {false, true})
                AddCorner(isRight, isTop, places);
        }
    }
    return places;
}

/// Column by column from a corner, up to the first that has its outermost place: what is behind that, or farther in, is
/// nowhere farther out.
void Places::AddCorner(bool isRight, bool isTop, std::vector<Point>& places) const
{
    for (std::uint64_t i = 0; i < m_columns; ++i)
    {
        const std::uint64_t column = isRight ? m_columns - 1 - i : i;
        std::uint64_t j = 0;
        const auto number = [&] { return column * m_rows + (isTop ? m_rows - j : j + 1); };
        while (j < m_rows && !IsShown(number()))
            ++j;
        if (j < m_rows)
            places.push_back(At(number()));
        if (j == 0)
            return;
    }
}

}

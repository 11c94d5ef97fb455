#include "examples/iges/Geometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace iges
{

namespace
{

/// The parameters of one entity, read from the front to the back.
class Parameters
{
public:
    Parameters(const std::vector<double>& numbers, const Transform& transform, Extents& extents)
        : m_numbers(numbers), m_transform(transform), m_extents(extents)
    {
    }

    bool AddPoints(std::size_t start, std::size_t count, std::size_t stride = 3)
    {
        for (; count > 0 && Has(start, 3); --count, start += stride)
            m_extents.Add(m_transform({m_numbers[start], m_numbers[start + 1], m_numbers[start + 2]}));
        return count == 0;
    }

    bool AddArc();
    bool AddCopiousData();
    bool AddSplineCurve();
    bool AddSplineSurface();

private:
    bool Has(std::size_t start, std::size_t count) const { return start + count <= m_numbers.size(); }

    /// One that leaves room for as many numbers in the record; false if it does not.
    bool Count(std::size_t index, std::size_t& count) const
    {
        const int value = IntegerAt(m_numbers, index);
        count = static_cast<std::size_t>(std::max(value, 0));
        return Has(index, 1) && value >= 0 && count < m_numbers.size();
    }

    const std::vector<double>& m_numbers;
    const Transform& m_transform;
    Extents& m_extents;
};

/// Z of its plane, centre, start and end in it; counter-clockwise.
bool Parameters::AddArc()
{
    if (!Has(1, 7))
        return false;
    const double z = m_numbers[1];
    const double x = m_numbers[2];
    const double y = m_numbers[3];
    const double startX = m_numbers[4] - x;
    const double startY = m_numbers[5] - y;
    const double endX = m_numbers[6] - x;
    const double endY = m_numbers[7] - y;
    const double radius = std::hypot(startX, startY);
    const double start = std::atan2(startY, startX);
    constexpr double turn = 2.0 * std::numbers::pi;
    double sweep = std::atan2(endY, endX) - start;
    if (sweep <= 0.0)
        sweep += turn; // the same start and end are a full circle
    const auto addAt = [&](double angle) {
        m_extents.Add(m_transform({x + radius * std::cos(angle), y + radius * std::sin(angle), z}));
    };

    m_extents.Add(m_transform({m_numbers[4], m_numbers[5], z}));
    m_extents.Add(m_transform({m_numbers[6], m_numbers[7], z}));
    // Along each axis the extremes are where the arc's direction has no part in it, half a turn apart.
    for (const Point& row : m_transform.rotation)
    {
        const double extreme = std::atan2(row[1], row[0]);
        for (const double angle : {extreme, extreme + std::numbers::pi})
        {
            double behindStart = std::fmod(angle - start, turn);
            behindStart += behindStart < 0.0 ? turn : 0.0;
            if (behindStart < sweep)
                addAt(angle);
        }
    }
    return true;
}

/// Pairs with one Z for all of them, triples, or triples with a direction each.
bool Parameters::AddCopiousData()
{
    std::size_t count = 0;
    if (!Count(2, count))
        return false;
    switch (IntegerAt(m_numbers, 1))
    {
    case 1:
    {
        std::size_t at = 4;
        for (; count > 0 && Has(at, 2); --count, at += 2)
            m_extents.Add(m_transform({m_numbers[at], m_numbers[at + 1], m_numbers[3]}));
        return count == 0;
    }
    case 2:
        return AddPoints(3, count);
    case 3:
        return AddPoints(3, count, 6);
    default:
        return false;
    }
}

/// Upper index K, degree M, four properties, K + M + 2 knots, K + 1 weights, K + 1 points.
bool Parameters::AddSplineCurve()
{
    std::size_t k = 0;
    std::size_t m = 0;
    if (!Count(1, k) || !Count(2, m))
        return false;
    const std::size_t points = k + 1;
    return AddPoints(7 + (points + m + 1) + points, points);
}

/// As for a curve, each in two directions, with five properties.
bool Parameters::AddSplineSurface()
{
    std::size_t k1 = 0;
    std::size_t k2 = 0;
    std::size_t m1 = 0;
    std::size_t m2 = 0;
    if (!Count(1, k1) || !Count(2, k2) || !Count(3, m1) || !Count(4, m2))
        return false;
    const std::size_t points = (k1 + 1) * (k2 + 1);
    return AddPoints(10 + (k1 + m1 + 2) + (k2 + m2 + 2) + points, points);
}

}

Point Transform::Rotated(const Point& point) const
{
    Point result = {};
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = rotation[i][0] * point[0] + rotation[i][1] * point[1] + rotation[i][2] * point[2];
    return result;
}

Point Transform::operator()(const Point& point) const
{
    Point result = Rotated(point);
    for (std::size_t i = 0; i < 3; ++i)
        result[i] += translation[i];
    return result;
}

Transform Transform::After(const Transform& inner) const
{
    Transform result;
    for (std::size_t column = 0; column < 3; ++column)
    {
        const Point rotated =
            Rotated({inner.rotation[0][column], inner.rotation[1][column], inner.rotation[2][column]});
        for (std::size_t row = 0; row < 3; ++row)
            result.rotation[row][column] = rotated[row];
    }
    result.translation = (*this)(inner.translation);
    return result;
}

void Extents::Add(const Point& point)
{
    if (!std::ranges::all_of(point, [](double coordinate) { return std::isfinite(coordinate); }))
        return;
    for (std::size_t i = 0; i < 3; ++i)
        axes[i].AddValNotArray(point[i]);
}

int IntegerAt(const std::vector<double>& numbers, std::size_t index)
{
    if (index >= numbers.size() || !(std::abs(numbers[index]) <= std::numeric_limits<int>::max()))
        return 0;
    return static_cast<int>(numbers[index]);
}

bool AddGeometry(const std::vector<double>& numbers, const Transform& transform, Extents& extents)
{
    Parameters parameters(numbers, transform, extents);
    std::size_t count = 0;
    switch (IntegerAt(numbers, 0))
    {
    case 100:
        return parameters.AddArc();
    case 106:
        return parameters.AddCopiousData();
    case 110:
        return parameters.AddPoints(1, 2);
    case 116:
        return parameters.AddPoints(1, 1);
    case 122:
        return parameters.AddPoints(2, 1);
    case 126:
        return parameters.AddSplineCurve();
    case 128:
        return parameters.AddSplineSurface();
    case 502:
        count = static_cast<std::size_t>(std::max(IntegerAt(numbers, 1), 0));
        return parameters.AddPoints(2, count);
    default:
        return true;
    }
}

}

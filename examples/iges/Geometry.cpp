#include "examples/iges/Geometry.h"

#include <cmath>

namespace iges
{

Point Cross(const Point& a, const Point& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

double Length(const Point& point) { return std::hypot(point[0], point[1], point[2]); }

Point Normalized(const Point& point)
{
    const double length = Length(point);
    return length > 0.0 ? 1.0 / length * point : Point{};
}

double Transform::Growth() const { return std::hypot(Length(rotation[0]), Length(rotation[1]), Length(rotation[2])); }

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

}

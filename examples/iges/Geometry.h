#pragma once

// Points, where they stand, and the box around them.

#include "utility/numbers/StatSeries.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace iges
{

using Point = std::array<double, 3>;

// What is asked of every point of a file is compiled with who asks.
inline Point operator+(const Point& a, const Point& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline Point operator-(const Point& a, const Point& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline Point operator*(double factor, const Point& point)
{
    return {factor * point[0], factor * point[1], factor * point[2]};
}
inline double Dot(const Point& a, const Point& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
Point Cross(const Point& a, const Point& b);
double Length(const Point& point);
/// Of length 1; zero for a point of no length.
Point Normalized(const Point& point);
inline bool IsFinite(const Point& point)
{
    return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]);
}

/// A rotation, three rows, and then a translation. The rotation may scale as well.
struct Transform
{
    std::array<Point, 3> rotation = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
    Point translation = {};

    Point Rotated(const Point& point) const
    {
        return {Dot(rotation[0], point), Dot(rotation[1], point), Dot(rotation[2], point)};
    }
    Point operator()(const Point& point) const { return Rotated(point) + translation; }
    /// By how much lengths grow at most, or a little more.
    double Growth() const;
    bool operator==(const Transform&) const = default;
    /// This one after another one.
    Transform After(const Transform& inner) const;
};

/// A box, as the series of its points' coordinates along x, y and z.
struct Extents
{
    std::array<StatSeries, 3> axes;

    bool IsEmpty() const { return axes[0].count == 0; }
    /// Neither is to be asked of an empty one.
    Point Low() const { return {axes[0].minimum, axes[1].minimum, axes[2].minimum}; }
    Point High() const { return {axes[0].maximum, axes[1].maximum, axes[2].maximum}; }
    /// 0 for an empty one.
    double Diagonal() const { return IsEmpty() ? 0.0 : Length(High() - Low()); }
    bool Contains(const Extents& other) const
    {
        for (std::size_t i = 0; i < 3; ++i)
        {
            if (other.axes[i].minimum < axes[i].minimum || other.axes[i].maximum > axes[i].maximum)
                return false;
        }
        return true;
    }
    /// A point of which a coordinate is no finite number is left out.
    void Add(const Point& point)
    {
        if (!IsFinite(point))
            return;
        for (std::size_t i = 0; i < 3; ++i)
            axes[i].AddValNotArray(point[i]);
    }
};

}

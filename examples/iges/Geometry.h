#pragma once

// Points, where they stand, and the box around them.

#include "utility/numbers/StatSeries.h"

#include <array>
#include <vector>

namespace iges
{

using Point = std::array<double, 3>;

Point operator+(const Point& a, const Point& b);
Point operator-(const Point& a, const Point& b);
Point operator*(double factor, const Point& point);
double Dot(const Point& a, const Point& b);
Point Cross(const Point& a, const Point& b);
double Length(const Point& point);
/// Of length 1; zero for a point of no length.
Point Normalized(const Point& point);
bool IsFinite(const Point& point);

/// A rotation, three rows, and then a translation. The rotation may scale as well.
struct Transform
{
    std::array<Point, 3> rotation = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
    Point translation = {};

    Point Rotated(const Point& point) const;
    Point operator()(const Point& point) const;
    /// By how much lengths grow at most, or a little more.
    double Growth() const;
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
    /// A point of which a coordinate is no finite number is left out.
    void Add(const Point& point);
};

}

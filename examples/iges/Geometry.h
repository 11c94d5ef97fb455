#pragma once

// The points of the usual geometry, by the layout of its parameters, and the box around them.

#include "utility/numbers/StatSeries.h"

#include <array>
#include <vector>

namespace iges
{

using Point = std::array<double, 3>;

/// A rotation, three rows, and then a translation.
struct Transform
{
    std::array<Point, 3> rotation = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
    Point translation = {};

    Point Rotated(const Point& point) const;
    Point operator()(const Point& point) const;
    /// This one after another one.
    Transform After(const Transform& inner) const;
};

/// A box, as the series of its points' coordinates along x, y and z.
struct Extents
{
    std::array<StatSeries, 3> axes;

    bool IsEmpty() const { return axes[0].count == 0; }
    /// A point of which a coordinate is no finite number is left out.
    void Add(const Point& point);
};

/// The number at an index as a count or a pointer: 0 if there is none, or not such a one.
int IntegerAt(const std::vector<double>& numbers, std::size_t index);

/// Adds the geometry of an entity to the extents. `numbers` are the fields of its record, the type number in front.
/// False if they end before the points that they announce; those that are there are added. Types that are not in
/// `measuredTypes` add nothing.
bool AddGeometry(const std::vector<double>& numbers, const Transform& transform, Extents& extents);

/// What the extents are made of, in words.
inline constexpr const char* measuredTypes =
    "circular arcs (100), copious data (106), lines (110), points (116), the ends\n"
    "of tabulated cylinders (122), the control points of B-spline curves (126) and surfaces (128), and\n"
    "vertices (502)";

}

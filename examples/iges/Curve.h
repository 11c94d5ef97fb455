#pragma once

// Curves of every kind in one shape, rational Bézier curves end to end: exact for lines, conics and splines alike, and
// inside the hull of their control points, so that a box around them and a polyline near them can be had to any
// accuracy.
//
//     Curve curve;
//     if (AddArc(centre, first, second, curve))
//         AddToExtents(curve, transform, extents);
//
// What makes a curve gives false, and adds nothing, if its numbers make none.

#include "examples/iges/Geometry.h"

#include <array>
#include <span>
#include <vector>

namespace iges
{

struct Piece
{
    std::vector<std::array<double, 4>> points; ///< w x, w y, w z and w, which is positive; two at least
    double start = 0.0;                        ///< the curve's parameter at its first point
    double end = 1.0;                          ///< and at its last one
    bool isAngular = false;                    ///< the parameter is the angle of an ellipse, and not even in between
};

using Curve = std::vector<Piece>;

bool AddLine(const Point& first, const Point& second, Curve& curve);

/// Counter-clockwise around the centre in the plane of z, from the first point to the second one, and all around if
/// they are the same.
bool AddArc(const Point& centre, const Point& first, const Point& second, Curve& curve);

/// A x^2 + B x y + C y^2 + D x + E y + F = 0 in the plane of z, from the first point to the second one: an ellipse
/// counter-clockwise, a hyperbola on one branch. A parabola, where B^2 = 4 A C, is one by its numbers or as the caller
/// knows.
bool AddConic(const std::array<double, 6>& equation, bool isParabola, const Point& first, const Point& second,
              Curve& curve);

/// a + b t + c t^2 + d t^3, with t from 0 to `end - start`.
bool AddCubic(const std::array<Point, 4>& coefficients, double start, double end, Curve& curve);

/// A B-spline, all of whose control points have a weight above 0. It has many pieces, and a box around it needs but a
/// few of them.
struct Spline
{
    std::vector<double> knots;
    std::vector<std::array<double, 4>> points; ///< w x, w y, w z and w
    double start = 0.0;
    double end = 0.0;
};

/// A B-spline from one parameter to another one, or all of it if these are not in order. With other weights it is added
/// as a curve.
bool AddSpline(std::span<const double> knots, std::span<const double> weights, const std::vector<Point>& points,
               double start, double end, std::vector<Spline>& splines, Curve& curve);

/// Adds all pieces of a spline.
void AddPieces(const Spline& spline, Curve& curve);

Curve Transformed(const Curve& curve, const Transform& transform);

/// What lies between two parameters.
Curve Clipped(const Curve& curve, double start, double end);

/// Exactly, but for the last bits, and never less than the curve has.
void AddToExtents(const Curve& curve, const Transform& transform, Extents& extents);
void AddToExtents(const Spline& spline, const Transform& transform, Extents& extents);

/// A point of a curve, and the way that the curve takes there.
struct Sample
{
    Point point;
    Point direction; ///< of length 1, or 0 if it has none there
    double parameter = 0.0;
};

/// Points of a piece from end to end. The piece is nowhere farther than `error` from the polyline through them, and
/// does not turn by more than `turn`, a chord of the unit circle, from one to the next.
std::vector<Sample> SamplesOf(const Piece& piece, double error, double turn);

/// The points of a piece after a transformation, as above.
std::vector<Point> PolylineOf(const Piece& piece, const Transform& transform, double error);

/// An offset: to the left of the curve, seen from the tip of the normal, changing evenly between two places.
struct Offset
{
    Point normal;
    double first = 0.0;
    double second = 0.0;
    double firstPlace = 0.0;
    double secondPlace = 0.0;
    bool byLength = false; ///< the places are lengths along the curve, and not parameters
};

/// Adds the curve beside a curve: exact beside lines, and with one distance beside circles too. Beside others it is
/// polylines within the error, and `hull` gets the corners of a box in which it is for certain.
bool AddOffset(const Curve& base, const Offset& offset, double error, Curve& curve, std::vector<Point>& hull);

}

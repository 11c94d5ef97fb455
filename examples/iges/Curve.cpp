#include "examples/iges/Curve.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

// A Bézier curve is split in the middle by taking averages of its control points (de Casteljau's way), and the hulls of
// the halves shrink towards the curve with the square of their length. So a box is found by looking into those pieces
// alone that reach beyond what is known, and a polyline by splitting until no control point is far from its chord.

namespace iges
{

namespace
{

using Weighted = std::array<double, 4>;
using Hull = std::vector<Weighted>;

constexpr double pi = std::numbers::pi;
constexpr double pieceAngle = pi / 4.0;

Weighted WithWeight(const Point& point, double weight)
{
    return {weight * point[0], weight * point[1], weight * point[2], weight};
}

Point Projected(const Weighted& point) { return {point[0] / point[3], point[1] / point[3], point[2] / point[3]}; }

Weighted Between(const Weighted& a, const Weighted& b, double share)
{
    Weighted result;
    for (std::size_t i = 0; i < 4; ++i)
        result[i] = (1.0 - share) * a[i] + share * b[i];
    return result;
}

/// Makes a hull that of its curve up to `share` of it, and gives that of the rest.
Hull Split(Hull& hull, double share)
{
    Hull rest = hull;
    for (std::size_t step = 1; step < hull.size(); ++step)
    {
        for (std::size_t i = 0; i + step < hull.size(); ++i)
            rest[i] = Between(rest[i], rest[i + 1], share);
        hull[step] = rest[0];
    }
    return rest;
}

/// Far from what a double can hold, so that no arithmetic with it ends in an infinity.
bool IsSound(const Hull& hull)
{
    constexpr double large = 1e100;
    return std::ranges::all_of(hull,
                               [](const Weighted& point)
                               {
                                   const double most = large * point[3];
                                   return point[3] > 1.0 / large && point[3] < large && std::abs(point[0]) < most &&
                                          std::abs(point[1]) < most && std::abs(point[2]) < most;
                               });
}

/// Gives both ends of a conic the weight 1, which does not change it: so its parameter is even on both sides.
void Balance(Hull& hull)
{
    const std::array<double, 3> weights = {hull[0][3], std::sqrt(hull[0][3] * hull[2][3]), hull[2][3]};
    for (std::size_t i = 0; i < 3; ++i)
    {
        for (double& value : hull[i])
            value /= weights[i];
    }
}

bool Append(Curve&& pieces, Curve& curve)
{
    if (pieces.empty() || !std::ranges::all_of(pieces, IsSound, &Piece::points))
        return false;
    curve.insert(curve.end(), std::make_move_iterator(pieces.begin()), std::make_move_iterator(pieces.end()));
    return true;
}

/// The parameter at a share of the Bézier curve's own, and the other way round. That of a piece of a conic goes with
/// the tangent of half the angle.
double ParameterAt(const Piece& piece, double share)
{
    const double half = (piece.end - piece.start) / 2.0;
    if (!piece.isAngular)
        return piece.start + 2.0 * half * share;
    return piece.start + half + 2.0 * std::atan(std::tan(half / 2.0) * (2.0 * share - 1.0));
}

double ShareAt(const Piece& piece, double parameter)
{
    const double half = (piece.end - piece.start) / 2.0;
    if (!piece.isAngular)
        return (parameter - piece.start) / (2.0 * half);
    return 0.5 + std::tan((parameter - piece.start - half) / 2.0) / std::tan(half / 2.0) / 2.0;
}

/// centre + u cos t + v sin t, counter-clockwise.
Curve EllipseOf(const Point& centre, const Point& u, const Point& v, double start, double sweep)
{
    Curve pieces;
    const auto at = [&](double angle, double weight)
    {
        const Point point = weight * centre + std::cos(angle) * u + std::sin(angle) * v;
        return Weighted{point[0], point[1], point[2], weight};
    };
    const double count = std::isfinite(sweep) ? std::ceil(sweep / pieceAngle) : 0.0;
    const double half = sweep / count / 2.0;
    for (double i = 0.0; i < count; ++i)
    {
        const double middle = start + (2.0 * i + 1.0) * half;
        pieces.push_back({{at(middle - half, 1.0), at(middle, std::cos(half)), at(middle + half, 1.0)},
                          middle - half,
                          middle + half,
                          true});
    }
    return pieces;
}

/// centre + u cosh t + v sinh t, either way. The curve's parameter is the angle with the tangent sinh t.
Curve HyperbolaOf(const Point& centre, const Point& u, const Point& v, double start, double end)
{
    Curve pieces;
    const auto at = [&](double t, double weight)
    {
        const Point point = weight * centre + std::cosh(t) * u + std::sinh(t) * v;
        return Weighted{point[0], point[1], point[2], weight};
    };
    const auto parameter = [](double t) { return std::atan(std::sinh(t)); };
    const double count = std::ceil(std::abs(end - start));
    const double half = (end - start) / count / 2.0;
    for (double i = 0.0; i < count && count < 1000.0; ++i)
    {
        const double middle = start + (2.0 * i + 1.0) * half;
        pieces.push_back({{at(middle - half, 1.0), at(middle, std::cosh(half)), at(middle + half, 1.0)},
                          parameter(middle - half),
                          parameter(middle + half)});
    }
    return pieces;
}

/// From 0 on, and less than a full turn.
double AngleOf(double x, double y)
{
    const double angle = std::atan2(y, x);
    return angle < 0.0 ? angle + 2.0 * pi : angle;
}

double Turn(double from, double to)
{
    const double turn = std::remainder(to - from, 2.0 * pi);
    return turn > 0.0 ? turn : turn + 2.0 * pi; // the same start and end are a full turn
}

/// The ends are as they are given, to the last bit.
void FixEnds(Curve& pieces, const Point& first, const Point& second)
{
    if (pieces.empty())
        return;
    pieces.front().points.front() = WithWeight(first, 1.0);
    pieces.back().points.back() = WithWeight(second, 1.0);
}

std::size_t DegreeOf(const Spline& spline) { return spline.knots.size() - spline.points.size() - 1; }

/// A span, which is named by the last of its control points, as far as it is between start and end.
struct Span
{
    Span(const Spline& spline, std::size_t last)
        : from(std::max(spline.start, spline.knots[last])), to(std::min(spline.end, spline.knots[last + 1]))
    {
    }

    bool IsEmpty() const { return !(from < to); }

    double from;
    double to;
};

/// By de Boor's way, in which each step gives a control point one more knot at a place: first all of them where the
/// span begins, of which what stands behind that place is kept, and then all where it ends.
Hull HullOf(const Spline& spline, std::size_t last, const Span& span)
{
    const std::size_t degree = DegreeOf(spline);
    const double* const knots = spline.knots.data() + last - degree;
    Hull points(spline.points.begin() + static_cast<std::ptrdiff_t>(last - degree),
                spline.points.begin() + static_cast<std::ptrdiff_t>(last) + 1);
    const auto share = [](double at, double left, double right) { return (at - left) / (right - left); };
    for (std::size_t step = 1; step <= degree; ++step)
    {
        for (std::size_t i = 0; i + step <= degree; ++i)
            points[i] = Between(points[i], points[i + 1], share(span.from, knots[i + step], knots[i + degree + 1]));
    }
    for (std::size_t step = 1; step <= degree; ++step)
    {
        for (std::size_t i = degree; i >= step; --i)
            points[i] = Between(points[i - 1], points[i], share(span.to, span.from, knots[degree + 1 + i - step]));
    }
    return points;
}

Hull Transformed(Hull hull, const Transform& transform)
{
    for (Weighted& point : hull)
    {
        const Point moved = transform.Rotated({point[0], point[1], point[2]}) + point[3] * transform.translation;
        point = {moved[0], moved[1], moved[2], point[3]};
    }
    return hull;
}

/// By how much a point is outside, as a share of how far from zero it is.
double ShareOutside(const Extents& extents, const Point& point)
{
    double share = 0.0;
    for (std::size_t i = 0; i < 3; ++i)
    {
        const double outside = std::max(extents.axes[i].minimum - point[i], point[i] - extents.axes[i].maximum);
        if (outside > 0.0)
            share = std::max(share, outside / std::abs(point[i]));
    }
    return share;
}

constexpr double negligible = 4e-15;

/// `splits` is how many more there may be.
void AddHull(Hull& hull, int& splits, Extents& extents)
{
    double outside = 0.0;
    for (const Weighted& point : hull)
        outside = std::max(outside, ShareOutside(extents, Projected(point)));
    if (outside == 0.0)
        return;
    if (outside < negligible || splits == 0)
    {
        for (const Weighted& point : hull)
            extents.Add(Projected(point));
        return;
    }
    --splits;
    Hull rest = Split(hull, 0.5);
    extents.Add(Projected(rest.front()));
    AddHull(hull, splits, extents);
    AddHull(rest, splits, extents);
}

void AddPiece(Hull hull, Extents& extents)
{
    constexpr int mostSplits = 4000;
    extents.Add(Projected(hull.front()));
    extents.Add(Projected(hull.back()));
    int splits = mostSplits;
    AddHull(hull, splits, extents);
}

double DistanceFromChord(const Point& first, const Point& last, const Point& point)
{
    const Point chord = last - first;
    const double square = Dot(chord, chord);
    const double share = square > 0.0 ? std::clamp(Dot(point - first, chord) / square, 0.0, 1.0) : 0.0;
    return Length(point - first - share * chord);
}

/// From the first control point that lies elsewhere, seen from one end.
template <class Iterator>
Point DirectionAt(Iterator point, Iterator end)
{
    const Point from = Projected(*point);
    Point way = {};
    while (way == Point{} && ++point != end)
        way = Normalized(Projected(*point) - from);
    return way;
}

class Sampler
{
public:
    Sampler(const Piece& piece, double error, double turn) : m_piece(piece), m_error(error), m_turn(turn) {}

    std::vector<Sample> Samples(Hull hull)
    {
        m_samples.push_back(
            {Projected(hull.front()), DirectionAt(hull.begin(), hull.end()), ParameterAt(m_piece, 0.0)});
        Add(hull, 0.0, 1.0, 0);
        return std::move(m_samples);
    }

private:
    bool IsStraight(const Hull& hull) const
    {
        return std::ranges::all_of(hull,
                                   [&](const Weighted& point) {
                                       return DistanceFromChord(Projected(hull.front()), Projected(hull.back()),
                                                                Projected(point)) <= m_error;
                                   });
    }

    /// The points behind the first one of a part.
    void Add(Hull& hull, double start, double end, int depth)
    {
        constexpr int deepest = 14;
        const Point direction = Point{} - DirectionAt(hull.rbegin(), hull.rend());
        const bool isDone = depth == deepest || hull.size() == 2 ||
                            (IsStraight(hull) && Length(direction - m_samples.back().direction) <= m_turn);
        if (isDone)
        {
            m_samples.push_back({Projected(hull.back()), direction, ParameterAt(m_piece, end)});
            return;
        }
        const double middle = (start + end) / 2.0;
        Hull rest = Split(hull, 0.5);
        Add(hull, start, middle, depth + 1);
        Add(rest, middle, end, depth + 1);
    }

    const Piece& m_piece;
    double m_error;
    double m_turn;
    std::vector<Sample> m_samples;
};

/// To the left of a way, seen from the tip of a normal.
Point LeftOf(const Point& direction, const Point& normal) { return Normalized(Cross(normal, direction)); }

/// An arc of a circle in the plane of a normal.
bool IsCircular(const Piece& piece, const Point& normal)
{
    constexpr double good = 1e-9;
    if (piece.points.size() != 3)
        return false;
    const Point corner = Projected(piece.points[1]);
    const Point first = Projected(piece.points[0]) - corner;
    const Point last = Projected(piece.points[2]) - corner;
    const double leg = Length(first);
    const double cosine = piece.points[1][3] / std::sqrt(piece.points[0][3] * piece.points[2][3]);
    return cosine < 1.0 && std::abs(Length(last) - leg) < good * leg &&
           std::abs(Length(last - first) / leg / 2.0 - cosine) < good && std::abs(Dot(first, normal)) < good * leg &&
           std::abs(Dot(last, normal)) < good * leg;
}

Point Moved(const Sample& sample, const Point& normal, double distance)
{
    return sample.point + distance * LeftOf(sample.direction, normal);
}

Piece ArcBeside(const Piece& piece, const Sample& first, const Sample& last, const Point& normal, double distance)
{
    Piece beside = piece;
    const double weight = piece.points[1][3];
    const double cosine = weight / std::sqrt(piece.points[0][3] * piece.points[2][3]);
    const Point corner =
        Projected(piece.points[1]) +
        distance / cosine * Normalized(LeftOf(first.direction, normal) + LeftOf(last.direction, normal));
    beside.points = {WithWeight(Moved(first, normal, distance), piece.points[0][3]), WithWeight(corner, weight),
                     WithWeight(Moved(last, normal, distance), piece.points[2][3])};
    return beside;
}

/// The corners of the box of a piece, with a margin on all sides but along a normal.
void AddCorners(const Piece& piece, const Point& normal, double margin, std::vector<Point>& hull)
{
    Extents box;
    AddToExtents({piece}, {}, box);
    const std::array<Point, 2> ends = {box.Low(), box.High()};
    for (std::size_t corner = 0; corner < 8; ++corner)
    {
        Point point;
        for (std::size_t i = 0; i < 3; ++i)
        {
            const bool isHigh = (corner >> i & 1) != 0;
            const double grown = margin * std::sqrt(std::max(0.0, 1.0 - normal[i] * normal[i]));
            point[i] = ends[isHigh ? 1 : 0][i] + (isHigh ? grown : -grown);
        }
        hull.push_back(point);
    }
}

}

bool AddLine(const Point& first, const Point& second, Curve& curve)
{
    return Append({{{WithWeight(first, 1.0), WithWeight(second, 1.0)}}}, curve);
}

bool AddArc(const Point& centre, const Point& first, const Point& second, Curve& curve)
{
    const Point ray = first - centre;
    const double radius = std::hypot(ray[0], ray[1]);
    const double start = AngleOf(ray[0], ray[1]);
    const double end = AngleOf(second[0] - centre[0], second[1] - centre[1]);
    Curve pieces =
        EllipseOf({centre[0], centre[1], first[2]}, {radius, 0.0, 0.0}, {0.0, radius, 0.0}, start, Turn(start, end));
    FixEnds(pieces, first, second);
    return Append(std::move(pieces), curve);
}

bool AddConic(const std::array<double, 6>& equation, bool isParabola, const Point& first, const Point& second,
              Curve& curve)
{
    const double sign = equation[0] + equation[2] < 0.0 ? -1.0 : 1.0;
    const double a = sign * equation[0];
    const double b = sign * equation[1];
    const double c = sign * equation[2];
    const double d = sign * equation[3];
    const double e = sign * equation[4];
    const double f = sign * equation[5];
    constexpr double lastBits = 1e-13;
    const double determinant = 4.0 * a * c - b * b;
    isParabola = isParabola || std::abs(determinant) <= lastBits * (std::abs(4.0 * a * c) + b * b);

    // Along its own axes an equation has no x y.
    const double angle = std::atan2(b, a - c) / 2.0;
    Point along = {std::cos(angle), std::sin(angle), 0.0};
    Point across = {-along[1], along[0], 0.0};
    const auto square = [&](const Point& way)
    { return a * way[0] * way[0] + b * way[0] * way[1] + c * way[1] * way[1]; };
    Curve pieces;
    if (isParabola)
    {
        const double factor = square(along);
        const double slope = d * along[0] + e * along[1];
        const double rise = d * across[0] + e * across[1];
        const auto at = [&](double x1, double x2)
        {
            const double x = (x1 + x2) / 2.0;
            const double y = -(factor * x1 * x2 + slope * x + f) / rise;
            return WithWeight(x * along + y * across + Point{0.0, 0.0, first[2]}, 1.0);
        };
        const double start = Dot(first, along);
        const double end = Dot(second, along);
        pieces.push_back({{at(start, start), at(start, end), at(end, end)}, start, end});
    }
    else
    {
        const Point centre = {(b * e - 2.0 * c * d) / determinant, (b * d - 2.0 * a * e) / determinant, first[2]};
        const double level = -(f + (d * centre[0] + e * centre[1]) / 2.0);
        const auto turn = [&]
        {
            std::swap(along, across);
            along = -1.0 * along;
        };
        const bool isEllipse = determinant > 0.0;
        if (isEllipse ? std::abs(along[0]) < std::abs(across[0]) : level / square(along) < 0.0)
            turn();
        const Point u = std::sqrt(level / square(along)) * along;
        const Point v = std::sqrt(std::abs(level / square(across))) * across;
        const auto coordinates = [&](const Point& point) {
            return std::array{Dot(point - centre, u) / Dot(u, u), Dot(point - centre, v) / Dot(v, v)};
        };
        const auto [x1, y1] = coordinates(first);
        const auto [x2, y2] = coordinates(second);
        if (isEllipse)
        {
            const double start = AngleOf(x1, y1);
            pieces = EllipseOf(centre, u, v, start, Turn(start, AngleOf(x2, y2)));
        }
        else if (x1 * x2 > 0.0)
            pieces = HyperbolaOf(centre, x1 < 0.0 ? -1.0 * u : u, v, std::asinh(y1), std::asinh(y2));
    }
    FixEnds(pieces, first, second);
    return Append(std::move(pieces), curve);
}

bool AddCubic(const std::array<Point, 4>& coefficients, double start, double end, Curve& curve)
{
    const double length = end - start;
    if (!(length > 0.0))
        return false;
    const Point first = coefficients[0];
    const Point once = length * coefficients[1];
    const Point twice = length * length * coefficients[2];
    const Point thrice = length * length * length * coefficients[3];
    Piece piece{{}, start, end};
    for (const Point& point :
         {first, first + 1.0 / 3.0 * once, first + 2.0 / 3.0 * once + 1.0 / 3.0 * twice, first + once + twice + thrice})
        piece.points.push_back(WithWeight(point, 1.0));
    return Append({piece}, curve);
}

bool AddSpline(std::span<const double> knots, std::span<const double> weights, const std::vector<Point>& points,
               double start, double end, std::vector<Spline>& splines, Curve& curve)
{
    constexpr std::size_t highestDegree = 25;
    const std::size_t degree = knots.size() - points.size() - 1;
    if (degree == 0 || degree > highestDegree || points.size() <= degree || !std::ranges::is_sorted(knots) ||
        !std::ranges::all_of(knots, [](double knot) { return std::isfinite(knot); }))
        return false;
    if (!(start < end))
    {
        start = knots.front();
        end = knots.back();
    }
    if (!(std::max(start, knots[degree]) < std::min(end, knots[points.size()])))
        return false;
    Spline spline{{knots.begin(), knots.end()}, {}, start, end};
    spline.points.resize(points.size());
    std::ranges::transform(points, weights, spline.points.begin(), WithWeight);
    if (IsSound(spline.points))
    {
        splines.push_back(std::move(spline));
        return true;
    }
    Curve pieces;
    AddPieces(spline, pieces);
    return Append(std::move(pieces), curve);
}

void AddPieces(const Spline& spline, Curve& curve)
{
    for (std::size_t last = DegreeOf(spline); last < spline.points.size(); ++last)
    {
        const Span span(spline, last);
        if (!span.IsEmpty())
            curve.push_back({HullOf(spline, last, span), span.from, span.to});
    }
}

Curve Transformed(const Curve& curve, const Transform& transform)
{
    Curve result = curve;
    for (Piece& piece : result)
        piece.points = Transformed(std::move(piece.points), transform);
    return result;
}

Curve Clipped(const Curve& curve, double start, double end)
{
    Curve clipped;
    for (const Piece& piece : curve)
    {
        const double from = std::max(start, piece.start);
        const double to = std::min(end, piece.end);
        if (!(from < to))
            continue;
        // A share of the whole, and then one of what is left of it.
        const double share = ShareAt(piece, to);
        Piece part{piece.points, from, to, piece.isAngular};
        Split(part.points, share);
        part.points = Split(part.points, ShareAt(piece, from) / share);
        if (part.isAngular)
            Balance(part.points);
        clipped.push_back(std::move(part));
    }
    return clipped;
}

void AddToExtents(const Curve& curve, const Transform& transform, Extents& extents)
{
    for (const Piece& piece : curve)
        AddPiece(Transformed(piece.points, transform), extents);
}

/// A span is within the hull of its control points. First comes what is near those that are farthest out, and then what
/// may still reach beyond that.
void AddToExtents(const Spline& spline, const Transform& transform, Extents& extents)
{
    if (transform != Transform())
    {
        AddToExtents({spline.knots, Transformed(spline.points, transform), spline.start, spline.end}, {}, extents);
        return;
    }
    std::vector<Point> places(spline.points.size());
    std::ranges::transform(spline.points, places.begin(), Projected);
    Extents hull;
    for (const Point& place : places)
        hull.Add(place);
    if (hull.IsEmpty() || (!extents.IsEmpty() && extents.Contains(hull)))
        return;

    const std::size_t degree = DegreeOf(spline);
    const auto add = [&](std::size_t last)
    {
        const Span span(spline, last);
        if (!span.IsEmpty())
            AddPiece(HullOf(spline, last, span), extents);
    };
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const auto [lowest, highest] =
            std::ranges::minmax_element(places, {}, [axis](const Point& place) { return place[axis]; });
        for (const auto& farthest : {lowest, highest})
        {
            const auto index = static_cast<std::size_t>(farthest - places.begin());
            if (extents.IsEmpty() || ShareOutside(extents, *farthest) >= negligible)
                add(std::clamp(index + (degree + 1) / 2, degree, places.size() - 1));
        }
    }
    std::size_t inside = 0; // so many control points, up to here
    for (std::size_t last = 0; last < places.size(); ++last)
    {
        const double outside = extents.IsEmpty() ? 1.0 : ShareOutside(extents, places[last]);
        inside = outside < negligible ? inside + 1 : 0;
        if (outside > 0.0 && outside < negligible)
            extents.Add(places[last]);
        if (last >= degree && inside <= degree)
            add(last);
    }
}

std::vector<Sample> SamplesOf(const Piece& piece, double error, double turn)
{
    return Sampler(piece, error, turn).Samples(piece.points);
}

std::vector<Point> PolylineOf(const Piece& piece, const Transform& transform, double error)
{
    std::vector<Point> points;
    for (const Sample& sample :
         Sampler(piece, error, std::numeric_limits<double>::infinity()).Samples(Transformed(piece.points, transform)))
        points.push_back(sample.point);
    return points;
}

bool AddOffset(const Curve& base, const Offset& offset, double error, Curve& curve, std::vector<Point>& hull)
{
    constexpr double fine = 1e-4;
    constexpr std::size_t mostSamples = 200'000;
    const Point normal = Normalized(offset.normal);
    const double range = offset.secondPlace - offset.firstPlace;
    const auto distanceAt = [&](double place)
    {
        const double share = range != 0.0 ? std::clamp((place - offset.firstPlace) / range, 0.0, 1.0) : 0.0;
        return (1.0 - share) * offset.first + share * offset.second;
    };
    if (base.empty() || normal == Point{})
        return false;
    Extents box;
    AddToExtents(base, {}, box);
    error = std::min(error, fine * Length(box.High() - box.Low()));
    const double largest = std::max(std::abs(offset.first), std::abs(offset.second));
    Curve pieces;
    double length = 0.0;
    for (const Piece& piece : base)
    {
        // A turn of t between two samples bends what is beside them by distance t^2 / 8.
        const std::vector<Sample> samples = SamplesOf(piece, error / 2.0, 2.0 * std::sqrt(error / largest));
        if (pieces.size() + samples.size() > mostSamples)
            return false;
        std::vector<double> distances;
        for (std::size_t i = 0; i < samples.size(); ++i)
        {
            length += i == 0 ? 0.0 : Length(samples[i].point - samples[i - 1].point);
            distances.push_back(distanceAt(offset.byLength ? length : samples[i].parameter));
        }
        if (distances.front() == distances.back() && IsCircular(piece, normal))
        {
            pieces.push_back(ArcBeside(piece, samples.front(), samples.back(), normal, distances.front()));
            continue;
        }
        for (std::size_t i = 1; i < samples.size(); ++i)
        {
            if (!AddLine(Moved(samples[i - 1], normal, distances[i - 1]), Moved(samples[i], normal, distances[i]),
                         pieces))
                return false;
        }
        if (piece.points.size() > 2)
            AddCorners(piece, normal, std::max(std::abs(distances.front()), std::abs(distances.back())), hull);
    }
    return Append(std::move(pieces), curve);
}

}

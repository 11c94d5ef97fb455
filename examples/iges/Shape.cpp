#include "examples/iges/Shape.h"

#include <cmath>
#include <limits>

namespace iges
{

namespace
{

constexpr const wchar_t* noCurve = L"The curve's numbers make no curve, and it is not drawn.";

/// What the parameters of one entity are, by the types.
class Reader
{
public:
    Reader(const Numbers& numbers, Shape& shape) : m_numbers(numbers), m_shape(shape) {}

    const wchar_t* Points(std::size_t start, std::size_t count, std::vector<Point>& points) const;
    const wchar_t* CircularArc();
    const wchar_t* ConicArc(int form);
    const wchar_t* CopiousData(int form);
    const wchar_t* Line();
    const wchar_t* ParametricSpline();
    const wchar_t* SplineCurve();
    const wchar_t* SplineSurface();

private:
    /// The points count, as those of a curve that cannot be made.
    const wchar_t* Instead(const std::vector<Point>& points);

    const Numbers& m_numbers;
    Shape& m_shape;
};

const wchar_t* Reader::Points(std::size_t start, std::size_t count, std::vector<Point>& points) const
{
    const std::size_t there = m_numbers.Has(start, 0) ? std::min(count, (m_numbers.Size() - start) / 3) : 0;
    points.resize(there);
    for (Point& point : points)
    {
        point = m_numbers.PointAt(start);
        start += 3;
    }
    return there == count ? nullptr : endsEarly;
}

const wchar_t* Reader::Instead(const std::vector<Point>& points)
{
    m_shape.hull.insert(m_shape.hull.end(), points.begin(), points.end());
    return noCurve;
}

/// Z of its plane, centre, start and end in it.
const wchar_t* Reader::CircularArc()
{
    if (!m_numbers.Has(1, 7))
        return endsEarly;
    const double z = m_numbers.At(1);
    const Point centre = {m_numbers.At(2), m_numbers.At(3), z};
    const Point start = {m_numbers.At(4), m_numbers.At(5), z};
    const Point end = {m_numbers.At(6), m_numbers.At(7), z};
    return AddArc(centre, start, end, m_shape.curve) ? nullptr : Instead({start, end});
}

/// The six coefficients, Z of its plane, start and end in it.
const wchar_t* Reader::ConicArc(int form)
{
    constexpr int parabola = 3;
    if (!m_numbers.Has(1, 11))
        return endsEarly;
    std::array<double, 6> equation;
    for (std::size_t i = 0; i < equation.size(); ++i)
        equation[i] = m_numbers.At(i + 1);
    const double z = m_numbers.At(7);
    const Point start = {m_numbers.At(8), m_numbers.At(9), z};
    const Point end = {m_numbers.At(10), m_numbers.At(11), z};
    return AddConic(equation, form == parabola, start, end, m_shape.curve) ? nullptr : Instead({start, end});
}

/// Pairs with one Z for all of them, triples, or triples with a direction each. The form says what is drawn with them:
/// points, a line through all, or one from each second point to the next.
const wchar_t* Reader::CopiousData(int form)
{
    const int kind = m_numbers.IntegerAt(1);
    std::size_t count = 0;
    if (kind < 1 || kind > 3 || !m_numbers.CountAt(2, count))
        return endsEarly;
    const std::size_t stride = kind == 1 ? 2 : kind == 2 ? 3 : 6;
    std::vector<Point> points;
    std::size_t at = kind == 1 ? 4 : 3;
    for (; count > 0 && m_numbers.Has(at, stride); --count, at += stride)
    {
        points.push_back(m_numbers.PointAt(at));
        if (kind == 1)
            points.back()[2] = m_numbers.At(3);
    }
    const bool isPath = (form >= 11 && form <= 13) || form == 63;
    const bool isWitnessLine = form == 40; // its first point is what it is of
    const bool isDashes = form == 20 || form == 21 || (form >= 31 && form <= 38) || isWitnessLine;
    if (!isPath && !isDashes)
        m_shape.points = std::move(points);
    else
    {
        const std::size_t step = isPath ? 1 : 2;
        for (std::size_t i = isWitnessLine ? 1 : 0; i + 1 < points.size(); i += step)
            AddLine(points[i], points[i + 1], m_shape.curve);
        m_shape.hull = std::move(points);
    }
    return count == 0 ? nullptr : endsEarly;
}

const wchar_t* Reader::Line()
{
    std::vector<Point> ends;
    if (const wchar_t* const trouble = Points(1, 2, ends))
        return trouble;
    return AddLine(ends[0], ends[1], m_shape.curve) ? nullptr : Instead(ends);
}

/// Type, smoothness, dimensions, number N of segments, N + 1 places where they meet, and four coefficients for each
/// axis of each.
const wchar_t* Reader::ParametricSpline()
{
    std::size_t count = 0;
    if (!m_numbers.CountAt(4, count))
        return endsEarly;
    const wchar_t* trouble = nullptr;
    std::size_t at = 5 + count + 1;
    for (std::size_t segment = 0; segment < count; ++segment, at += 12)
    {
        if (!m_numbers.Has(at, 12))
            return endsEarly;
        std::array<Point, 4> coefficients;
        for (std::size_t i = 0; i < 4; ++i)
            coefficients[i] = {m_numbers.At(at + i), m_numbers.At(at + 4 + i), m_numbers.At(at + 8 + i)};
        if (!AddCubic(coefficients, m_numbers.At(5 + segment), m_numbers.At(6 + segment), m_shape.curve))
            trouble = noCurve;
    }
    return trouble;
}

/// Upper index K, degree M, four properties, K + M + 2 knots, K + 1 weights, K + 1 points, and where it begins and
/// ends.
const wchar_t* Reader::SplineCurve()
{
    std::size_t k = 0;
    std::size_t m = 0;
    if (!m_numbers.CountAt(1, k) || !m_numbers.CountAt(2, m))
        return endsEarly;
    const std::size_t knots = k + m + 2;
    const std::size_t at = 7 + knots + k + 1;
    std::vector<Point> points;
    if (const wchar_t* const trouble = Points(at, k + 1, points))
    {
        Instead(points);
        return trouble;
    }
    const std::size_t behind = at + 3 * points.size();
    return AddSpline(m_numbers.Range(7, knots), m_numbers.Range(7 + knots, k + 1), points, m_numbers.At(behind),
                     m_numbers.At(behind + 1), m_shape.splines, m_shape.curve)
               ? nullptr
               : Instead(points);
}

/// As for a curve, each in two directions, with five properties.
const wchar_t* Reader::SplineSurface()
{
    std::size_t k1 = 0;
    std::size_t k2 = 0;
    std::size_t m1 = 0;
    std::size_t m2 = 0;
    if (!m_numbers.CountAt(1, k1) || !m_numbers.CountAt(2, k2) || !m_numbers.CountAt(3, m1) ||
        !m_numbers.CountAt(4, m2))
        return endsEarly;
    const std::size_t points = (k1 + 1) * (k2 + 1);
    return Points(10 + (k1 + m1 + 2) + (k2 + m2 + 2) + points, points, m_shape.hull);
}

}

Curve CurvesOf(const Shape& shape)
{
    Curve curves = shape.curve;
    for (const Spline& spline : shape.splines)
        AddPieces(spline, curves);
    return curves;
}

int Numbers::IntegerAt(std::size_t index) const
{
    const double number = At(index);
    return std::abs(number) <= std::numeric_limits<int>::max() ? static_cast<int>(number) : 0;
}

bool Numbers::CountAt(std::size_t index, std::size_t& count) const
{
    const int value = IntegerAt(index);
    count = value < 0 ? 0 : static_cast<std::size_t>(value);
    return Has(index, 1) && value >= 0 && count < m_numbers.size();
}

const wchar_t* AddShape(const Numbers& numbers, int form, Shape& shape)
{
    Reader reader(numbers, shape);
    switch (numbers.IntegerAt(0))
    {
    case 100:
        return reader.CircularArc();
    case 104:
        return reader.ConicArc(form);
    case 106:
        return reader.CopiousData(form);
    case 110:
        return reader.Line();
    case 112:
        return reader.ParametricSpline();
    case 116:
        return reader.Points(1, 1, shape.points);
    case 122:
        return reader.Points(2, 1, shape.hull);
    case 126:
        return reader.SplineCurve();
    case 128:
        return reader.SplineSurface();
    case 502:
        return reader.Points(2, static_cast<std::size_t>(std::max(numbers.IntegerAt(1), 0)), shape.hull);
    default:
        return nullptr;
    }
}

/// Base, kind of distance, a function for it, kind of its places, first and second distance, each with its place,
/// normal of the base's plane, and where on the base it begins and ends.
const wchar_t* AddOffsetShape(const Numbers& numbers, const Curve& base, double error, Shape& shape)
{
    if (!numbers.Has(1, 12))
        return endsEarly;
    enum Kind : int
    {
        even = 1,
        changing = 2,
    };
    const int kind = numbers.IntegerAt(2);
    if (kind != even && kind != changing)
        return L"An offset that a function gives is not drawn.";
    Offset offset;
    offset.normal = numbers.PointAt(10);
    offset.first = offset.second = numbers.At(6);
    if (kind == changing)
    {
        offset.firstPlace = numbers.At(7);
        offset.second = numbers.At(8);
        offset.secondPlace = numbers.At(9);
        offset.byLength = numbers.IntegerAt(5) == 1;
    }
    const double start = numbers.At(13);
    const double end = numbers.At(14);
    const Curve whole = start < end ? Clipped(base, start, end) : base;
    return AddOffset(whole, offset, error, shape.curve, shape.hull) ? nullptr : noCurve;
}

}

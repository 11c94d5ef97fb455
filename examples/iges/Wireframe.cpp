#include "examples/iges/Wireframe.h"

#include <algorithm>
#include <cmath>

namespace iges
{

namespace
{

/// Nothing that is drawn overflows.
bool CanBeDrawn(const Point& point)
{
    constexpr double large = 1e100;
    return std::ranges::all_of(point, [](double coordinate) { return std::abs(coordinate) < large; });
}

}

void Wireframe::Add(const Shape& shape, const Transform& transform)
{
    for (const Point& point : shape.points)
    {
        const Point moved = transform(point);
        if (IsFull())
            return;
        if (CanBeDrawn(moved))
        {
            m_points.push_back(moved);
            --m_pointsLeft;
        }
    }
    bool mayGoOn = false;
    for (const Piece& piece : CurvesOf(shape))
    {
        if (IsFull())
            return;
        AddPolyline(PolylineOf(piece, transform, m_error), mayGoOn);
        mayGoOn = true;
    }
}

void Wireframe::AddPolyline(const std::vector<Point>& points, bool mayGoOn)
{
    constexpr double share = 1e-3;
    if (!std::ranges::all_of(points, CanBeDrawn))
        return;
    mayGoOn = mayGoOn && !m_polylines.empty() && Length(points.front() - m_polylines.back().back()) <= share * m_error;
    const std::size_t count = points.size() - (mayGoOn ? 1 : 0);
    if (count > m_pointsLeft)
    {
        m_pointsLeft = 0;
        return;
    }
    m_pointsLeft -= count;
    if (!mayGoOn)
        m_polylines.emplace_back();
    m_polylines.back().insert(m_polylines.back().end(), points.end() - static_cast<std::ptrdiff_t>(count),
                              points.end());
}

void Wireframe::AddCopies(const Places& places, const Transform& transform, const ShowCopy& show)
{
    const Transform common = transform.After(places.Common());
    places.ForEach(
        [&](const Point& place)
        {
            Transform copy = common;
            copy.translation = copy.translation + transform.Rotated(place);
            return show(*this, copy) && !IsFull();
        });
}

}

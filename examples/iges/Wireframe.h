#pragma once

// A part as points and polylines.
//
//     Wireframe wireframe(0.01);
//     part.Show(number, numbers, wireframe);
//     Draw(wireframe.Polylines());

#include "examples/iges/Part.h"

#include <cstddef>

namespace iges
{

class Wireframe final : public Receiver
{
public:
    static constexpr std::size_t mostPoints = 1'000'000;

    /// No curve is farther than `error`, above 0, from its polyline. What is beyond `most` points is left out.
    explicit Wireframe(double error, std::size_t most = mostPoints) : m_error(error), m_pointsLeft(most) {}

    double Error() const override { return m_error; }
    void Add(const Shape& shape, const Transform& transform) override;
    void AddCopies(const Places& places, const Transform& transform, const ShowCopy& show) override;

    const std::vector<Point>& Points() const { return m_points; }
    /// Of two points at least, each; curves that meet are one.
    const std::vector<std::vector<Point>>& Polylines() const { return m_polylines; }
    bool IsFull() const { return m_pointsLeft == 0; }

private:
    void AddPolyline(const std::vector<Point>& points, bool mayGoOn);

    double m_error;
    std::size_t m_pointsLeft;
    std::vector<Point> m_points;
    std::vector<std::vector<Point>> m_polylines;
};

}

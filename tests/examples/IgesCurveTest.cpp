#include "examples/iges/Curve.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace
{

/// Any degree, knots that may be the same, weights that may be large, and sometimes just a part of it.
class SplineMaker
{
public:
    iges::Spline Make()
    {
        const std::size_t degree = Count(1, 9);
        const std::size_t count = degree + Count(1, 60);
        std::vector<double> knots = {0.0};
        while (knots.size() < count + degree + 1)
            knots.push_back(knots.back() + static_cast<double>(Count(0, 3)));
        if (knots[degree] == knots[count])
            return Make();
        std::vector<double> weights;
        std::vector<iges::Point> points;
        for (std::size_t i = 0; i < count; ++i)
        {
            weights.push_back(static_cast<double>(Count(1, 8)));
            points.push_back({Coordinate(), Coordinate(), 7.0}); // in a plane, as most are
        }
        const bool isPart = Count(0, 1) == 1;
        const double start = isPart ? 0.8 * knots[degree] + 0.2 * knots[count] : 0.0;
        const double end = isPart ? 0.5 * knots[degree] + 0.5 * knots[count] : 0.0;
        std::vector<iges::Spline> splines;
        iges::Curve none;
        EXPECT_TRUE(iges::AddSpline(knots, weights, points, start, end, splines, none));
        EXPECT_TRUE(none.empty());
        return splines.at(0);
    }

private:
    std::size_t Count(std::size_t least, std::size_t most)
    {
        return std::uniform_int_distribution<std::size_t>(least, most)(m_random);
    }
    double Coordinate() { return std::uniform_real_distribution<double>(-100.0, 100.0)(m_random); }

    std::mt19937 m_random{4711};
};

iges::Curve PiecesOf(const iges::Spline& spline)
{
    iges::Curve pieces;
    iges::AddPieces(spline, pieces);
    return pieces;
}

TEST(IgesCurveTest, ASplineHasTheExtentsOfItsPieces)
{
    constexpr double tolerance = 1e-10;
    SplineMaker maker;
    iges::Transform turned;
    turned.rotation = {{{0.0, -0.6, 0.8}, {1.0, 0.0, 0.0}, {0.0, 0.8, 0.6}}};
    turned.translation = {1.0, 2.0, 3.0};
    for (int i = 0; i < 700; ++i)
    {
        const iges::Spline spline = maker.Make();
        const iges::Transform transform = i % 2 == 0 ? iges::Transform() : turned;
        iges::Extents whole;
        if (i % 3 == 0)
            whole.Add({0.0, 0.0, 0.0});
        iges::Extents pieces = whole;
        iges::AddToExtents(spline, transform, whole);
        iges::AddToExtents(PiecesOf(spline), transform, pieces);
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            ASSERT_NEAR(whole.axes[axis].minimum, pieces.axes[axis].minimum, tolerance) << i;
            ASSERT_NEAR(whole.axes[axis].maximum, pieces.axes[axis].maximum, tolerance) << i;
        }
    }
}

/// By the definition of B-splines, which is slow and another way.
double Basis(const std::vector<double>& knots, std::size_t i, std::size_t degree, double at)
{
    if (degree == 0)
        return knots[i] <= at && at < knots[i + 1] ? 1.0 : 0.0;
    const auto share = [](double part, double whole) { return whole > 0.0 ? part / whole : 0.0; };
    return share(at - knots[i], knots[i + degree] - knots[i]) * Basis(knots, i, degree - 1, at) +
           share(knots[i + degree + 1] - at, knots[i + degree + 1] - knots[i + 1]) *
               Basis(knots, i + 1, degree - 1, at);
}

/// In its own parameter from 0 to 1.
std::array<double, 4> PointOf(const iges::Piece& piece, double share)
{
    std::vector<std::array<double, 4>> points = piece.points;
    for (; points.size() > 1; points.pop_back())
    {
        for (std::size_t i = 0; i + 1 < points.size(); ++i)
        {
            for (std::size_t axis = 0; axis < 4; ++axis)
                points[i][axis] += share * (points[i + 1][axis] - points[i][axis]);
        }
    }
    return points.front();
}

TEST(IgesCurveTest, ThePiecesOfASplineAreOnIt)
{
    SplineMaker maker;
    for (int i = 0; i < 12; ++i)
    {
        const iges::Spline spline = maker.Make();
        const std::size_t degree = spline.knots.size() - spline.points.size() - 1;
        const iges::Curve pieces = PiecesOf(spline);
        ASSERT_FALSE(pieces.empty());
        EXPECT_EQ(pieces.front().start, std::max(spline.start, spline.knots[degree]));
        EXPECT_EQ(pieces.back().end, std::min(spline.end, spline.knots[spline.points.size()]));
        for (const iges::Piece& piece : pieces)
        {
            ASSERT_EQ(piece.points.size(), degree + 1);
            for (const double share : {0.0, 0.25, 0.75})
            {
                const std::array<double, 4> point = PointOf(piece, share);
                const double at = piece.start + share * (piece.end - piece.start);
                std::array<double, 4> sum = {};
                for (std::size_t k = 0; k < spline.points.size(); ++k)
                {
                    const double basis = Basis(spline.knots, k, degree, at);
                    for (std::size_t axis = 0; axis < 4; ++axis)
                        sum[axis] += basis * spline.points[k][axis];
                }
                for (std::size_t axis = 0; axis < 4; ++axis)
                    ASSERT_NEAR(point[axis], sum[axis], 1e-9) << i;
            }
        }
    }
}

}

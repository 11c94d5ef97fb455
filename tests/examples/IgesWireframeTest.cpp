#include "examples/iges/Wireframe.h"

#include "tests/support/IgesText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace
{

using iges::operator-;
using iges::operator*;

iges::Wireframe DrawnOf(const std::string& bytes, double error, std::size_t most = iges::Wireframe::mostPoints)
{
    CTextInputOutputFile silent;
    silent.SetIssueMessages(false);
    const iges::File file(bytes.data(), bytes.size(), &silent);
    iges::Part part(file);
    iges::Wireframe wireframe(error, most);
    for (const iges::Entry& entry : file.Directory())
    {
        if (part.Has(entry.number))
            part.Show(entry.number, part.NumbersOf(entry), wireframe);
    }
    return wireframe;
}

iges::Wireframe DrawnOf(int type, const std::vector<std::string>& record, double error, int form = 0)
{
    support::IgesText part;
    part.Entity(type, record, 0, "00000000", form);
    return DrawnOf(part.Bytes(), error);
}

double DistanceFrom(const std::vector<iges::Point>& polyline, const iges::Point& point)
{
    double nearest = std::numeric_limits<double>::infinity();
    for (std::size_t i = 1; i < polyline.size(); ++i)
    {
        const iges::Point way = polyline[i] - polyline[i - 1];
        const double square = iges::Dot(way, way);
        const double share =
            square == 0.0 ? 0.0 : std::clamp(iges::Dot(point - polyline[i - 1], way) / square, 0.0, 1.0);
        nearest = std::min(nearest, iges::Length(point - polyline[i - 1] - share * way));
    }
    return nearest;
}

struct CurveCase
{
    const char* name;
    int type;
    std::vector<std::string> record;
    double start;
    double end;
    iges::Point (*at)(double);
    double error;
    std::size_t most; ///< as many points should do
};

class IgesCurveTest : public testing::TestWithParam<CurveCase>
{
};

TEST_P(IgesCurveTest, IsDrawnWithinTheErrorByFewPoints)
{
    const CurveCase& test = GetParam();
    const iges::Wireframe wireframe = DrawnOf(test.type, test.record, test.error);
    ASSERT_EQ(wireframe.Polylines().size(), 1u);
    const std::vector<iges::Point>& polyline = wireframe.Polylines()[0];
    EXPECT_LE(polyline.size(), test.most);
    EXPECT_LT(iges::Length(polyline.front() - test.at(test.start)), 1e-9);
    EXPECT_LT(iges::Length(polyline.back() - test.at(test.end)), 1e-9);
    constexpr int steps = 1000;
    std::vector<iges::Point> fine;
    for (int i = 0; i <= steps; ++i)
    {
        fine.push_back(test.at(test.start + (test.end - test.start) * i / steps));
        EXPECT_LE(DistanceFrom(polyline, fine.back()), test.error) << i;
    }
    // Its points are on the curve, as exactly as the comparison is.
    for (const iges::Point& point : polyline)
        EXPECT_LT(DistanceFrom(fine, point), 2e-3 * test.error + 1e-5);
}

// A circle of radius r needs about pi sqrt(r / 2 e) chords; three times as many are allowed.
INSTANTIATE_TEST_SUITE_P(
    Curves, IgesCurveTest,
    testing::Values(CurveCase{"Line",
                              110,
                              {"110,1.,2.,3.,4.,5.,6.;"},
                              0,
                              3,
                              [](double u) {
                                  return iges::Point{1 + u, 2 + u, 3 + u};
                              },
                              0.1,
                              2},
                    CurveCase{"Circle",
                              100,
                              {"100,7.,1.,0.,3.,0.,3.,0.;"},
                              0,
                              2 * std::numbers::pi,
                              [](double u) {
                                  return iges::Point{1 + 2 * std::cos(u), 2 * std::sin(u), 7};
                              },
                              1e-3,
                              300},
                    CurveCase{"QuarterOfACircle",
                              100,
                              {"100,0.,0.,0.,5.,0.,0.,5.;"},
                              0,
                              std::numbers::pi / 2,
                              [](double u) {
                                  return iges::Point{5 * std::cos(u), 5 * std::sin(u), 0};
                              },
                              0.1,
                              12},
                    CurveCase{"Ellipse",
                              104,
                              {"104,9.,0.,25.,0.,0.,-225.,0.,5.,0.,-5.,0.;"},
                              0,
                              std::numbers::pi,
                              [](double u) {
                                  return iges::Point{5 * std::cos(u), 3 * std::sin(u), 0};
                              },
                              1e-2,
                              80},
                    CurveCase{"Hyperbola",
                              104,
                              {"104,1.,0.,-1.,0.,0.,-1.,0.,1.,0.,1.25,0.75;"},
                              0,
                              std::numbers::ln2,
                              [](double u) {
                                  return iges::Point{std::cosh(u), std::sinh(u), 0};
                              },
                              1e-3,
                              20},
                    CurveCase{"Parabola",
                              104,
                              {"104,1.,0.,0.,0.,-1.,0.,0.,-1.,1.,2.,4.;"},
                              -1,
                              2,
                              [](double u) {
                                  return iges::Point{u, u * u, 0};
                              },
                              1e-2,
                              40},
                    CurveCase{"ParametricSpline",
                              112,
                              {"112,3,1,3,1,0.,2.,0.,1.,0.,0.,0.,0.,0.,1.,1.,0.,2.,0.;"},
                              0,
                              2,
                              [](double u) {
                                  return iges::Point{u, u * u * u, 1 + 2 * u * u};
                              },
                              1e-2,
                              60},
                    CurveCase{"SplineCurve",
                              126,
                              {"126,2,2,0,0,1,0,0.,0.,0.,1.,1.,1.,1.,1.,1.,", "0.,0.,0.,1.,2.,0.,2.,0.,0.,0.,1.;"},
                              0,
                              1,
                              [](double u) {
                                  return iges::Point{2 * u, 4 * u * (1 - u), 0};
                              },
                              1e-3,
                              70},
                    CurveCase{"PartOfASplineCurve",
                              126,
                              {"126,2,2,0,0,1,0,0.,0.,0.,1.,1.,1.,1.,1.,1.,", "0.,0.,0.,1.,2.,0.,2.,0.,0.,0.25,0.5;"},
                              0.25,
                              0.5,
                              [](double u) {
                                  return iges::Point{2 * u, 4 * u * (1 - u), 0};
                              },
                              1e-3,
                              30}),
    [](const auto& test) { return std::string(test.param.name); });

class IgesOffsetCurveTest : public testing::TestWithParam<double>
{
};

TEST_P(IgesOffsetCurveTest, IsWithinTheErrorOfWhatIsBesideTheBase)
{
    constexpr double error = 1e-3;
    const double distance = GetParam();
    support::IgesText part;
    part.Entity(104, {"104,9.,0.,25.,0.,0.,-225.,0.,5.,0.,-5.,0.;"}, 0, "00010600", 1);
    part.Entity(130, {"130,1,1,0,0,0," + std::to_string(distance) + ",0.,0.,0.,0.,0.,1.,0.,0.;"});
    part.Entity(308, {"308,0,1HX,1,3;"}, 0, "00000200");
    part.Entity(408, {"408,5,0.,0.,0.,10.;"}); // ten times as large, and not ten times as coarse
    const iges::Wireframe wireframe = DrawnOf(part.Bytes(), error);
    ASSERT_EQ(wireframe.Polylines().size(), 1u);
    constexpr int steps = 500;
    for (int i = 0; i <= steps; ++i)
    {
        // The inner normal of (5 cos t, 3 sin t) is along (-3 cos t, -5 sin t).
        const double t = std::numbers::pi * i / steps;
        const iges::Point normal = iges::Normalized({-3 * std::cos(t), -5 * std::sin(t), 0});
        const iges::Point beside = iges::Point{5 * std::cos(t), 3 * std::sin(t), 0} - -distance * normal;
        EXPECT_LE(DistanceFrom(wireframe.Polylines()[0], 10.0 * beside), error) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(Distances, IgesOffsetCurveTest, testing::Values(0.5, 3.0, -2.0));

TEST(IgesOffsetCurveTest, ChangesWithTheParameterOrTheLength)
{
    for (const char* const kind : {"1", "2"})
    {
        support::IgesText part;
        part.Entity(100, {"100,0.,0.,0.,2.,0.,-2.,0.;"}, 0, "00010600");
        const std::string end = std::string(kind) == "1" ? "6.2831853071795864" : "3.1415926535897932";
        part.Entity(130, {std::string("130,1,2,0,0,") + kind + ",0.,0.,0.5," + end + ",", "0.,0.,1.,0.,0.;"});
        const iges::Wireframe wireframe = DrawnOf(part.Bytes(), 1e-3);
        ASSERT_EQ(wireframe.Polylines().size(), 1u);
        for (double t = 0.0; t < 3.14; t += 0.01)
        {
            const double radius = 2.0 - 0.5 * t / std::numbers::pi;
            EXPECT_LE(DistanceFrom(wireframe.Polylines()[0], {radius * std::cos(t), radius * std::sin(t), 0}), 1e-3)
                << t;
        }
    }
}

struct DrawnCase
{
    int form;
    std::size_t points;
    std::vector<std::size_t> polylines; ///< how many points each has
};

class IgesDrawnDataTest : public testing::TestWithParam<DrawnCase>
{
};

TEST_P(IgesDrawnDataTest, IsPointsAPathOrDashesByItsForm)
{
    const iges::Wireframe wireframe = DrawnOf(106, {"106,1,5,0.,1.,2.,4.,2.,4.,5.,1.,7.,9.,9.;"}, 0.1, GetParam().form);
    EXPECT_EQ(wireframe.Points().size(), GetParam().points);
    std::vector<std::size_t> sizes;
    for (const std::vector<iges::Point>& polyline : wireframe.Polylines())
        sizes.push_back(polyline.size());
    EXPECT_EQ(sizes, GetParam().polylines);
    constexpr int witnessLine = 40; // its first point is what it is of
    if (!sizes.empty())
    {
        EXPECT_EQ(wireframe.Polylines()[0].front(),
                  GetParam().form == witnessLine ? (iges::Point{4, 2, 0}) : (iges::Point{1, 2, 0}));
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, IgesDrawnDataTest,
                         testing::Values(DrawnCase{1, 5, {}}, DrawnCase{11, 0, {5}}, DrawnCase{63, 0, {5}},
                                         DrawnCase{20, 0, {2, 2}}, DrawnCase{31, 0, {2, 2}}, DrawnCase{40, 0, {2, 2}}));

TEST(IgesWireframeTest, DrawsEachCopyAtItsPlace)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,0.,0.;"}, 0, "00010000");
    part.Entity(412, {"412,1,2.,10.,20.,30.,2,2,5.,7.,0.,1,1,4;"});
    part.Entity(124, {"124,0.,-1.,0.,0.,1.,0.,0.,0.,0.,0.,1.,0.;"});
    part.Entity(414, {"414,1,2,0.,0.,0.,3.,0.,3.1415926535897932,0;"}, 5);
    const iges::Wireframe wireframe = DrawnOf(part.Bytes(), 0.1);
    const std::vector<iges::Point> expected = {{12, 20, 30}, {12, 27, 30}, {17, 20, 30}, {0, 4, 0}, {0, -2, 0}};
    ASSERT_EQ(wireframe.Points().size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_LT(iges::Length(wireframe.Points()[i] - expected[i]), 1e-12) << i;
    EXPECT_FALSE(wireframe.IsFull());
}

TEST(IgesWireframeTest, SurfacesAndVerticesAreNotDrawn)
{
    EXPECT_TRUE(DrawnOf(502, {"502,1,1.,2.,3.;"}, 0.1).Points().empty());
    EXPECT_TRUE(DrawnOf(122, {"122,5,1.,2.,3.;"}, 0.1).Points().empty());
}

TEST(IgesWireframeTest, OfABillionCopiesItTakesAsManyAsItMay)
{
    support::IgesText part;
    part.Entity(110, {"110,0.,0.,0.,1.,0.,0.;"}, 0, "00010000");
    part.Entity(412, {"412,1,1.,0.,0.,0.,100000,10000,5.,7.,0.,0;"});
    const iges::Wireframe wireframe = DrawnOf(part.Bytes(), 0.1, 1000);
    EXPECT_EQ(wireframe.Polylines().size(), 500u);
    EXPECT_TRUE(wireframe.IsFull());
}

TEST(IgesWireframeTest, ABillionCopiesOfNothingEnd)
{
    support::IgesText part;
    part.Entity(308, {"308,0,1HX,0;"}, 0, "00000200");
    part.Entity(412, {"412,1,1.,0.,0.,0.,100000,10000,5.,7.,0.,0;"});
    const iges::Wireframe wireframe = DrawnOf(part.Bytes(), 0.1);
    EXPECT_TRUE(wireframe.Polylines().empty());
}

TEST(IgesWireframeTest, APointThatIsTooFarOrNoneIsNotDrawn)
{
    support::IgesText part;
    part.Entity(116, {"116,1.D300,0.,0.;"});
    part.Entity(116, {"116,1.x,0.,0.;"});
    part.Entity(116, {"116,1.,2.,3.;"});
    EXPECT_EQ(DrawnOf(part.Bytes(), 0.1).Points(), (std::vector<iges::Point>{{1, 2, 3}}));
}

}

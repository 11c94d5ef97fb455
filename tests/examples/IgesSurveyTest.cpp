#include "examples/iges/Survey.h"

#include "tests/support/IgesText.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thorough.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace
{

struct Surveyed
{
    iges::Extents extents;
    std::uint64_t integers = 0;
    std::uint64_t reals = 0;
    std::uint64_t texts = 0;
    StatSeries lengths;
    std::vector<std::wstring> errors;
};

/// Surveys a text that ends where its memory ends.
Surveyed SurveyOf(const std::string& bytes, std::int64_t mostFields = 30'000'000)
{
    support::Messages messages;
    const std::vector<char> text(bytes.begin(), bytes.end());
    const iges::File file(text.data(), text.size(), &messages.file);
    iges::Part part(file, mostFields);
    iges::Survey survey(file, part);
    for (const iges::Record& record : file.Records())
        survey.Read(record);
    const iges::Findings& found = survey.Found();
    return {found.extents, found.integers, found.reals, found.texts, found.recordLengths, messages.Take()};
}

void ExpectBox(const Surveyed& surveyed, const iges::Point& low, const iges::Point& high)
{
    ASSERT_FALSE(surveyed.extents.IsEmpty());
    for (std::size_t i = 0; i < 3; ++i)
    {
        EXPECT_NEAR(surveyed.extents.axes[i].minimum, low[i], 1e-12) << "xyz"[i];
        EXPECT_NEAR(surveyed.extents.axes[i].maximum, high[i], 1e-12) << "xyz"[i];
    }
}

std::string SampleBytes() { return support::TemporaryFolder::BytesOf(UTILITY_SAMPLES "/sample.igs"); }

TEST(IgesSurveyTest, CountsFieldsByKind)
{
    support::IgesText part;
    part.Entity(406, {"406,2,7HBRACKET,1.5,,2Hxy;"});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    EXPECT_EQ(surveyed.integers, 2u);
    EXPECT_EQ(surveyed.reals, 1u);
    EXPECT_EQ(surveyed.texts, 2u);
    EXPECT_TRUE(surveyed.extents.IsEmpty());
    EXPECT_TRUE(surveyed.errors.empty());
}

TEST(IgesSurveyTest, KnownExtentsArePartOfEachFinding)
{
    support::IgesText part;
    part.Entity(110, {"110,1.0,2.0,3.0,9.0,2.0,3.0;"});
    const std::string bytes = part.Bytes();
    support::Messages messages;
    const iges::File file(bytes.data(), bytes.size(), &messages.file);
    iges::Part entities(file, 1'000);
    iges::Extents known;
    known.Add({0.0, 0.0, 0.0});
    known.Add({5.0, 5.0, 5.0});
    iges::Survey survey(file, entities, known);
    survey.Read(file.Records()[0]);
    ExpectBox({survey.Take().extents, 0, 0, 0, {}, {}}, {0, 0, 0}, {9, 5, 5});
    ExpectBox({survey.Take().extents, 0, 0, 0, {}, {}}, {0, 0, 0}, {5, 5, 5});
}

TEST(IgesSurveyTest, CountsTheFieldsOfEachRecord)
{
    support::IgesText part;
    part.Entity(406, {"406,2,7HBRACKET,1.5,,2Hxy;"});
    part.Entity(116, {"116,1.,2.,3.;"});
    const StatSeries lengths = SurveyOf(part.Bytes()).lengths;
    EXPECT_EQ(lengths.count, 2u);
    EXPECT_EQ(lengths.minimum, 4.0);
    EXPECT_EQ(lengths.maximum, 6.0);
    EXPECT_EQ(lengths.sum, 10.0);
}

struct BoxCase
{
    const char* name;
    int type;
    std::vector<std::string> lines;
    iges::Point low;
    iges::Point high;
};

class IgesExtentsTest : public testing::TestWithParam<BoxCase>
{
};

TEST_P(IgesExtentsTest, AreThoseOfThePoints)
{
    support::IgesText part;
    part.Entity(GetParam().type, GetParam().lines);
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, GetParam().low, GetParam().high);
    EXPECT_TRUE(surveyed.errors.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Types, IgesExtentsTest,
    testing::Values(
        BoxCase{"Point", 116, {"116,1.,-2.,3.,0;"}, {1, -2, 3}, {1, -2, 3}},
        BoxCase{"Line", 110, {"110,1,2,3,-1.,5.,3.;"}, {-1, 2, 3}, {1, 5, 3}},
        BoxCase{"HalfArc", 100, {"100,7.,1.,1.,3.,1.,-1.,1.;"}, {-1, 1, 7}, {3, 3, 7}},
        BoxCase{"ThreeQuarterArc", 100, {"100,0.,0.,0.,1.,0.,0.,-1.;"}, {-1, -1, 0}, {1, 1, 0}},
        BoxCase{"QuarterArc", 100, {"100,0.,0.,0.,1.,0.,0.,1.;"}, {0, 0, 0}, {1, 1, 0}},
        BoxCase{"Circle", 100, {"100,0.,5.,0.,6.,0.,6.,0.;"}, {4, -1, 0}, {6, 1, 0}},
        BoxCase{"CopiousPairs", 106, {"106,1,2,9.,1.,2.,3.,-4.;"}, {1, -4, 9}, {3, 2, 9}},
        BoxCase{"CopiousTriples", 106, {"106,2,2,1.,2.,3.,4.,5.,6.;"}, {1, 2, 3}, {4, 5, 6}},
        BoxCase{"CopiousSextuples", 106, {"106,3,2,1.,2.,3.,9.,9.,9.,4.,5.,6.,9.,9.,9.;"}, {1, 2, 3}, {4, 5, 6}},
        BoxCase{"TabulatedCylinder", 122, {"122,5,1.,2.,3.;"}, {1, 2, 3}, {1, 2, 3}},
        BoxCase{"SplineCurve",
                126,
                {"126,1,1,0,0,1,0,0.,0.,1.,1.,1.,1.,", "-7.,1.,2.,3.,4.,5.,0.,1.,0.,0.,1.;"},
                {-7, 1, 2},
                {3, 4, 5}},
        BoxCase{"SplineSurface",
                128,
                {"128,1,1,1,1,0,0,1,0,0,0.,0.,1.,1.,0.,0.,1.,1.,1.,1.,1.,1.,",
                 "0.,0.,0.,1.,0.,0.,0.,1.,0.,1.,1.,8.,0.,1.,0.,1.;"},
                {0, 0, 0},
                {1, 1, 8}},
        // x^2 / 25 + y^2 / 9 = 1 is 9 x^2 + 25 y^2 - 225 = 0.
        BoxCase{"Ellipse", 104, {"104,9.,0.,25.,0.,0.,-225.,2.,5.,0.,5.,0.;"}, {-5, -3, 2}, {5, 3, 2}},
        BoxCase{"QuarterEllipse", 104, {"104,9.,0.,25.,0.,0.,-225.,0.,5.,0.,0.,3.;"}, {0, 0, 0}, {5, 3, 0}},
        BoxCase{"ThreeQuarterEllipse", 104, {"104,9.,0.,25.,0.,0.,-225.,0.,0.,3.,5.,0.;"}, {-5, -3, 0}, {5, 3, 0}},
        // The signs of an equation do not matter.
        BoxCase{"EllipseOfTheOtherSign", 104, {"104,-9.,0.,-25.,0.,0.,225.,0.,5.,0.,0.,3.;"}, {0, 0, 0}, {5, 3, 0}},
        // (x - 1)^2 / 4 + (y + 2)^2 = 1.
        BoxCase{"MovedEllipse", 104, {"104,1.,0.,4.,-2.,16.,13.,0.,3.,-2.,3.,-2.;"}, {-1, -3, 0}, {3, -1, 0}},
        // Of x^2 + xy + y^2 = 3 the gradient is along x where x + 2y = 0: 3/4 x^2 = 3.
        BoxCase{"TurnedEllipse", 104, {"104,1.,1.,1.,0.,0.,-3.,0.,1.,1.,1.,1.;"}, {-2, -2, 0}, {2, 2, 0}},
        // x^2 / 9 - y^2 / 16 = 1, whose vertex is at 3.
        BoxCase{"Hyperbola",
                104,
                {"104,16.,0.,-9.,0.,0.,-144.,0.,5.,-5.3333333333333333,", "5.,5.3333333333333333;"},
                {3, -16.0 / 3, 0},
                {5, 16.0 / 3, 0}},
        BoxCase{"HyperbolaOnTheLeft",
                104,
                {"104,16.,0.,-9.,0.,0.,-144.,0.,-3.,0.,-5.,5.3333333333333333;"},
                {-5, 0, 0},
                {-3, 16.0 / 3, 0}},
        // x y = 1, the other way round.
        BoxCase{"TurnedHyperbola", 104, {"104,0.,1.,0.,0.,0.,-1.,0.,4.,0.25,0.5,2.;"}, {0.5, 0.25, 0}, {4, 2, 0}},
        BoxCase{"Parabola", 104, {"104,1.,0.,0.,0.,-1.,0.,0.,-1.,1.,2.,4.;"}, {-1, 0, 0}, {2, 4, 0}},
        // With p = x + y and q = x - y it is p^2 + q = 0, so that x = (p - p^2) / 2 and y = (p + p^2) / 2.
        BoxCase{"TurnedParabola", 104, {"104,1.,2.,1.,1.,-1.,0.,0.,-1.,0.,0.,1.;"}, {-1, -0.125, 0}, {0.125, 1, 0}},
        // x = s, y = s - s^2, z = 3 s^2 - 2 s^3 on 0..1, and then on 0..2 along x alone.
        BoxCase{"ParametricSpline",
                112,
                {"112,3,1,3,2,0.,1.,3.,0.,1.,0.,0.,0.,1.,-1.,0.,0.,0.,3.,-2.,", "1.,1.,0.,0.,0.,0.,0.,0.,1.,0.,0.,0.,",
                 "3.,1.,0.,0.,0.,0.,0.,0.,1.,0.,0.,0.;"},
                {0, 0, 0},
                {3, 0.25, 1}},
        // The control polygon is 2 high, the curve half of it.
        BoxCase{"SplineCurveBelowItsControlPoints",
                126,
                {"126,2,2,0,0,1,0,0.,0.,0.,1.,1.,1.,1.,1.,1.,", "0.,0.,0.,1.,2.,0.,2.,0.,0.,0.,1.;"},
                {0, 0, 0},
                {2, 1, 0}},
        // y = 3 * 2 s (1 - s) / (1 + 4 s (1 - s)), at s = 1/2.
        BoxCase{"RationalSplineCurve",
                126,
                {"126,2,2,0,0,0,0,0.,0.,0.,1.,1.,1.,1.,3.,1.,", "0.,0.,0.,1.,2.,0.,2.,0.,0.,0.,1.;"},
                {0, 0, 0},
                {2, 1.5, 0}},
        BoxCase{"HalfOfASplineCurve",
                126,
                {"126,2,2,0,0,1,0,0.,0.,0.,1.,1.,1.,1.,1.,1.,", "0.,0.,0.,1.,2.,0.,2.,0.,0.,0.5,1.;"},
                {1, 0, 0},
                {2, 1, 0}},
        // A uniform quadratic goes from the middle of its control polygon's first leg to that of the last one.
        BoxCase{"SplineCurveWithUniformKnots",
                126,
                {"126,2,2,0,0,1,0,0.,1.,2.,3.,4.,5.,1.,1.,1.,", "0.,0.,0.,1.,2.,0.,2.,0.,0.,2.,3.;"},
                {0.5, 1, 0},
                {1.5, 1.5, 0}},
        BoxCase{"Vertices", 502, {"502,2,1.,2.,3.,4.,5.,6.;"}, {1, 2, 3}, {4, 5, 6}},
        BoxCase{"EmptyCoordinateIsZero", 116, {"116,1.,,3.;"}, {1, 0, 3}, {1, 0, 3}}),
    [](const auto& test) { return std::string(test.param.name); });

struct FormCase
{
    int form;
    std::string record;
};

class IgesCopiousDataTest : public testing::TestWithParam<FormCase>
{
};

TEST_P(IgesCopiousDataTest, HasTheExtentsOfItsPointsWhateverIsDrawnThroughThem)
{
    support::IgesText part;
    part.Entity(106, {GetParam().record}, 0, "00000000", GetParam().form);
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, {1, 2, 3}, {4, 5, 3});
    EXPECT_TRUE(surveyed.errors.empty());
}

const char* const pairs = "106,1,4,3.,1.,2.,4.,2.,4.,5.,1.,2.;";
const char* const triples = "106,2,4,1.,2.,3.,4.,2.,3.,4.,5.,3.,1.,2.,3.;";
const char* const sextuples = "106,3,2,1.,2.,3.,9.,9.,9.,4.,5.,3.,9.,9.,9.;";

INSTANTIATE_TEST_SUITE_P(Forms, IgesCopiousDataTest,
                         testing::Values(FormCase{1, pairs}, FormCase{2, triples}, FormCase{3, sextuples},
                                         FormCase{11, pairs}, FormCase{12, triples}, FormCase{13, sextuples},
                                         FormCase{20, pairs}, FormCase{31, pairs}, FormCase{40, pairs},
                                         FormCase{63, pairs}));

struct OffsetCase
{
    const char* name;
    int baseType;
    std::string base;
    std::string distances; ///< kind, function, coordinate, taper, first, its place, second, its place
    iges::Point low;
    iges::Point high;
};

class IgesOffsetTest : public testing::TestWithParam<OffsetCase>
{
};

TEST_P(IgesOffsetTest, StandsBesideItsBaseCurve)
{
    support::IgesText part;
    part.Entity(GetParam().baseType, {GetParam().base}, 0, "00010600"); // construction: not drawn itself
    part.Entity(130, {"130,1," + GetParam().distances + ",", "0.,0.,1.,0.,0.;"});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, GetParam().low, GetParam().high);
    EXPECT_TRUE(surveyed.errors.empty());
}

// A positive distance is to the left, seen from the tip of the normal.
INSTANTIATE_TEST_SUITE_P(
    Bases, IgesOffsetTest,
    testing::Values(
        OffsetCase{"Line", 110, "110,0.,0.,0.,3.,4.,0.;", "1,0,0,0,5.,0.,0.,0.", {-4, 3, 0}, {-1, 7, 0}},
        OffsetCase{"LineOnTheRight", 110, "110,0.,0.,0.,3.,4.,0.;", "1,0,0,0,-5.,0.,0.,0.", {4, -3, 0}, {7, 1, 0}},
        // From 1 to the left at the start to 3 at the end.
        OffsetCase{"LineWithATaper", 110, "110,0.,0.,0.,10.,0.,0.;", "2,0,0,1,1.,0.,3.,10.", {0, 1, 0}, {10, 3, 0}},
        OffsetCase{"LineWithATaperOfItsParameter",
                   110,
                   "110,0.,0.,0.,10.,0.,0.;",
                   "2,0,0,2,1.,0.,3.,1.",
                   {0, 1, 0},
                   {10, 3, 0}},
        OffsetCase{"CircleInwards", 100, "100,0.,0.,0.,5.,0.,5.,0.;", "1,0,0,0,2.,0.,0.,0.", {-3, -3, 0}, {3, 3, 0}},
        OffsetCase{"QuarterOutwards", 100, "100,0.,0.,0.,5.,0.,0.,5.;", "1,0,0,0,-2.,0.,0.,0.", {0, 0, 0}, {7, 7, 0}},
        // Beyond its centre an arc goes on on the other side.
        OffsetCase{
            "QuarterThroughItsCentre", 100, "100,0.,0.,0.,5.,0.,0.,5.;", "1,0,0,0,7.,0.,0.,0.", {-2, -2, 0}, {0, 0, 0}},
        // All others: the box of the base, grown by the distance across the normal.
        OffsetCase{"Ellipse",
                   104,
                   "104,9.,0.,25.,0.,0.,-225.,0.,5.,0.,5.,0.;",
                   "1,0,0,0,-2.,0.,0.,0.",
                   {-7, -5, 0},
                   {7, 5, 0}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(IgesSurveyTest, AnOffsetCurveMayBeAPartOfItsBase)
{
    support::IgesText part;
    part.Entity(110, {"110,0.,0.,0.,8.,0.,0.;"}, 0, "00010600");
    part.Entity(130, {"130,1,1,0,0,0,2.,0.,0.,0.,0.,0.,1.,0.25,0.5;"});
    ExpectBox(SurveyOf(part.Bytes()), {2, 2, 0}, {4, 2, 0});
}

TEST(IgesSurveyTest, AnOffsetCurveMayBeAPartOfAnArcOrAnEllipseByTheAngle)
{
    support::IgesText part;
    // From 0 to 60 degrees, and on an ellipse from 0 to 30.
    part.Entity(100, {"100,0.,0.,0.,2.,0.,-2.,0.;"}, 0, "00010600");
    part.Entity(130, {"130,1,1,0,0,0,-2.,0.,0.,0.,0.,0.,1.,0.,1.0471975511965977;"});
    ExpectBox(SurveyOf(part.Bytes()), {2, 0, 0}, {4, 2 * std::sqrt(3.0), 0});
    support::IgesText ellipse;
    ellipse.Entity(104, {"104,9.,0.,25.,0.,0.,-225.,0.,5.,0.,5.,0.;"}, 0, "00010600");
    ellipse.Entity(130, {"130,1,1,0,0,0,0.,0.,0.,0.,0.,0.,1.,0.,0.52359877559829887;"});
    ExpectBox(SurveyOf(ellipse.Bytes()), {2.5 * std::sqrt(3.0), 0, 0}, {5, 1.5, 0});
}

TEST(IgesSurveyTest, TheAngleOfAnArcIsCountedFromZeroOn)
{
    support::IgesText part;
    // The arc begins at 270 degrees, and its part ends at 300.
    part.Entity(100, {"100,0.,0.,0.,0.,-2.,2.,0.;"}, 0, "00010600");
    part.Entity(130, {"130,1,1,0,0,0,0.,0.,0.,0.,0.,0.,1.,4.71238898038469,", "5.2359877559829888;"});
    ExpectBox(SurveyOf(part.Bytes()), {0, -2, 0}, {1, -std::sqrt(3.0), 0});
}

TEST(IgesSurveyTest, TheBaseOfAnOffsetCurveMayBeComposite)
{
    support::IgesText part;
    part.Entity(110, {"110,0.,0.,0.,8.,0.,0.;"}, 0, "00010600");
    part.Entity(110, {"110,8.,0.,0.,8.,6.,0.;"}, 0, "00010600");
    part.Entity(102, {"102,2,1,3;"}, 0, "00010600");
    part.Entity(130, {"130,5,1,0,0,0,1.,0.,0.,0.,0.,0.,1.,0.,0.;"});
    // Each of its lines stands beside itself.
    ExpectBox(SurveyOf(part.Bytes()), {0, 0, 0}, {8, 6, 0});
}

TEST(IgesSurveyTest, AnOffsetCurveWithoutABaseIsSaid)
{
    support::IgesText part;
    part.Entity(130, {"130,1,1,0,0,0,2.,0.,0.,0.,0.,0.,1.,0.,0.;"}); // of itself
    const Surveyed surveyed = SurveyOf(part.Bytes());
    EXPECT_TRUE(surveyed.extents.IsEmpty());
    EXPECT_EQ(surveyed.errors, std::vector<std::wstring>{L"The base of the offset curve is no curve."});
}

/// A part with a subfigure at 5 of a point (3, 4, 5) and of a line along x from 0 to 2.
support::IgesText WithSubfigure()
{
    support::IgesText part;
    part.Entity(116, {"116,3.,4.,5.;"}, 0, "00010000");
    part.Entity(110, {"110,0.,0.,0.,2.,0.,0.;"}, 0, "00010000");
    part.Entity(308, {"308,0,4HBOLT,2,1,3;"}, 0, "00000200");
    return part;
}

TEST(IgesSubfigureTest, WithoutAnInstanceIsNotThere)
{
    const Surveyed surveyed = SurveyOf(WithSubfigure().Bytes());
    EXPECT_TRUE(surveyed.extents.IsEmpty());
    EXPECT_TRUE(surveyed.errors.empty());
}

TEST(IgesSubfigureTest, IsWhereItsInstancesAre)
{
    support::IgesText part = WithSubfigure();
    part.Entity(408, {"408,5,10.,20.,30.;"});
    part.Entity(408, {"408,5,100.,0.,0.,2.;"});
    // From (10, 20, 30) and (13, 24, 35) to (100, 0, 0), (104, 0, 0) and (106, 8, 10).
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, {10, 0, 0}, {106, 24, 35});
    EXPECT_TRUE(surveyed.errors.empty());
}

TEST(IgesSubfigureTest, IsScaledThenTransformedThenMoved)
{
    support::IgesText part = WithSubfigure();
    part.Entity(124, {"124,0.,-1.,0.,1000.,1.,0.,0.,0.,0.,0.,1.,0.;"}); // a quarter turn about z, then along x
    part.Entity(408, {"408,5,10.,20.,30.,2.;"}, 7);
    // (0, 0, 0), (4, 0, 0) and (6, 8, 10), then (1000, 0, 0), (1000, 4, 0) and (992, 6, 10).
    ExpectBox(SurveyOf(part.Bytes()), {1002, 20, 30}, {1010, 26, 40});
}

TEST(IgesSubfigureTest, MayBeOfSubfigures)
{
    support::IgesText part = WithSubfigure();
    part.Entity(408, {"408,5,10.,0.,0.,1.;"}, 0, "00010000");
    part.Entity(408, {"408,5,20.,0.,0.,1.;"}, 0, "00010000");
    part.Entity(308, {"308,1,3HROW,2,7,9;"}, 0, "00000200");
    part.Entity(408, {"408,11,0.,100.,0.,3.;"});
    ExpectBox(SurveyOf(part.Bytes()), {30, 100, 0}, {69, 112, 15});
}

TEST(IgesSubfigureTest, HasWhatItsCompositesAndGroupsHave)
{
    support::IgesText part;
    part.Entity(110, {"110,0.,0.,0.,2.,0.,0.;"}, 0, "00010000");
    part.Entity(102, {"102,1,1;"}, 0, "00010000");
    part.Entity(116, {"116,0.,5.,0.;"}, 0, "00010000");
    part.Entity(402, {"402,1,5;"}, 0, "00010000", 7);
    part.Entity(308, {"308,0,1HX,2,3,7;"}, 0, "00000200");
    part.Entity(408, {"408,9,1.,1.,1.;"});
    ExpectBox(SurveyOf(part.Bytes()), {1, 1, 1}, {3, 6, 1});
}

TEST(IgesSubfigureTest, MovesWithAMemberWhatDependsOnThat)
{
    support::IgesText part;
    part.Entity(124, {"124,1.,0.,0.,10.,0.,1.,0.,0.,0.,0.,1.,0.;"});
    part.Entity(110, {"110,0.,0.,0.,2.,0.,0.;"}, 0, "00010000");
    part.Entity(110, {"110,0.,0.,0.,0.,2.,0.;"}, 0, "00000000"); // independent
    part.Entity(102, {"102,2,3,5;"}, 1, "00010000");
    part.Entity(308, {"308,0,1HX,1,7;"}, 0, "00000200");
    part.Entity(408, {"408,9,100.,0.,0.;"});
    ExpectBox(SurveyOf(part.Bytes()), {100, 0, 0}, {112, 2, 0});
}

TEST(IgesSubfigureTest, LeavesOutItsAnnotation)
{
    support::IgesText part;
    part.Entity(116, {"116,3.,4.,5.;"}, 0, "00010200");
    part.Entity(116, {"116,300.,4.,5.;"}, 0, "00010100");
    part.Entity(308, {"308,0,1HX,2,1,3;"}, 0, "00000200");
    part.Entity(408, {"408,5,0.,0.,0.;"});
    ExpectBox(SurveyOf(part.Bytes()), {3, 4, 5}, {3, 4, 5});
}

struct ArrayCase
{
    const char* name;
    int type;
    std::string record;
    iges::Point low;
    iges::Point high;
};

class IgesArrayTest : public testing::TestWithParam<ArrayCase>
{
};

TEST_P(IgesArrayTest, HasTheExtentsOfItsCopies)
{
    support::IgesText part = WithSubfigure();
    part.Entity(GetParam().type, {GetParam().record});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, GetParam().low, GetParam().high);
    EXPECT_TRUE(surveyed.errors.empty());
}

// One copy is from (0, 0, 0) to (3, 4, 5). A rectangular array's second place is above the first one, as many as it has
// rows.
INSTANTIATE_TEST_SUITE_P(
    Arrays, IgesArrayTest,
    testing::Values(
        ArrayCase{"Rectangular", 412, "412,5,1.,10.,0.,7.,4,3,5.,20.,0.,0;", {10, 0, 7}, {28, 44, 12}},
        ArrayCase{"OfOnePlace", 412, "412,5,1.,10.,0.,7.,1,1,5.,20.,0.,0;", {10, 0, 7}, {13, 4, 12}},
        ArrayCase{"ToTheLeftAndDown", 412, "412,5,1.,0.,0.,0.,4,3,-5.,-20.,0.,0;", {-15, -40, 0}, {3, 4, 5}},
        ArrayCase{"Scaled", 412, "412,5,2.,10.,0.,7.,4,3,5.,20.,0.,0;", {10, 0, 7}, {31, 48, 17}},
        // Turned by a quarter about its corner: (x, y) is (10 - y, x).
        ArrayCase{"Turned", 412, "412,5,1.,10.,0.,7.,4,3,5.,20.,1.5707963267948966,0;", {-34, 0, 7}, {10, 18, 12}},
        ArrayCase{"ABillionPlaces", 412, "412,5,1.,0.,0.,0.,100000,10000,1.,1.,0.,0;", {0, 0, 0}, {100002, 10003, 5}},
        // Place 2 is up, 4 is to the right of the first.
        ArrayCase{"ListedPlaces", 412, "412,5,1.,0.,0.,0.,4,3,5.,20.,0.,2,0,2,4;", {0, 0, 0}, {8, 24, 5}},
        // The first column and the top of the others.
        ArrayCase{
            "AllButListedPlaces", 412, "412,5,1.,0.,0.,0.,4,3,5.,20.,0.,6,1,1,2,3,6,9,12;", {5, 0, 0}, {18, 24, 5}},
        ArrayCase{"ABillionPlacesButTwo",
                  412,
                  "412,5,1.,0.,0.,0.,1,1000000000,5.,1.,0.,2,1,1,1000000000;",
                  {0, 1, 0},
                  {3, 1000000002, 5}},
        // At 0, 90, 180 and 270 degrees around (100, 0), 10 away.
        ArrayCase{"Circular", 414, "414,5,4,100.,0.,1.,10.,0.,1.5707963267948966,0;", {90, -10, 1}, {113, 14, 6}},
        ArrayCase{
            "CircularListed", 414, "414,5,4,100.,0.,1.,10.,0.,1.5707963267948966,1,0,2;", {100, 10, 1}, {103, 14, 6}},
        ArrayCase{"CircularAllButListed",
                  414,
                  "414,5,4,100.,0.,1.,10.,0.,1.5707963267948966,1,1,3;",
                  {100, -10, 1},
                  {113, 14, 6}},
        // The half circle.
        ArrayCase{"ABillionPlacesAround",
                  414,
                  "414,5,1000000001,0.,0.,0.,10.,0.,3.1415926535897932D-9,0;",
                  {-10, 0, 0},
                  {13, 14, 5}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(IgesArrayTest, MayBeOfAnEntityAndOfAnArray)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,1.,1.;"}, 0, "00010000");
    part.Entity(412, {"412,1,1.,0.,0.,0.,100000,100000,1.,1.,0.,0;"}, 0, "00010000");
    part.Entity(412, {"412,3,1.,0.,0.,5.,100000,100000,1.,1.,0.,0;"});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, {1, 1, 6}, {199999, 199999, 6});
    EXPECT_TRUE(surveyed.errors.empty());
}

struct BadPlacementCase
{
    const char* name;
    int type;
    std::string record;
    std::wstring error;
};

class IgesBadPlacementTest : public testing::TestWithParam<BadPlacementCase>
{
};

TEST_P(IgesBadPlacementTest, IsSaid)
{
    support::IgesText part = WithSubfigure();
    part.Entity(GetParam().type, {GetParam().record});
    part.Entity(116, {"116,1.,1.,1.;"});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, {1, 1, 1}, {1, 1, 1});
    EXPECT_EQ(surveyed.errors, std::vector<std::wstring>{GetParam().error});
}

const std::wstring endsEarly = L"The record ends before the numbers that it announces.";
const std::wstring noPlaces = L"The array has no places.";
const std::wstring noEntity = L"There is nothing to place.";

INSTANTIATE_TEST_SUITE_P(
    Placements, IgesBadPlacementTest,
    testing::Values(BadPlacementCase{"NoSubfigure", 408, "408,99,0.,0.,0.;", noEntity},
                    BadPlacementCase{"NoPlace", 408, "408,5,0.;", endsEarly},
                    BadPlacementCase{"NoColumns", 412, "412,5,1.,0.,0.,0.,0,3,5.,20.,0.,0;", noPlaces},
                    BadPlacementCase{"FewerRowsThanNone", 412, "412,5,1.,0.,0.,0.,3,-3,5.,20.,0.,0;", noPlaces},
                    BadPlacementCase{"NoneAround", 414, "414,5,-4,0.,0.,0.,1.,0.,1.,0;", noPlaces},
                    BadPlacementCase{"ListThatEnds", 412, "412,5,1.,0.,0.,0.,3,3,5.,20.,0.,7,0,1;", endsEarly},
                    BadPlacementCase{"CountThatLies", 414, "414,5,4,0.,0.,0.,1.,0.,1.,2147483647,1,1;", endsEarly}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(IgesSubfigureTest, ThatContainsItselfEnds)
{
    support::IgesText part;
    part.Entity(408, {"408,3,1.,0.,0.;"}, 0, "00010000");
    part.Entity(308, {"308,1,4HSELF,2,1,7;"}, 0, "00000200");
    part.Entity(408, {"408,3,0.,0.,0.;"});
    part.Entity(116, {"116,0.,0.,0.;"}, 0, "00010000");
    const Surveyed surveyed = SurveyOf(part.Bytes());
    EXPECT_EQ(surveyed.errors, std::vector<std::wstring>{L"The subfigure contains itself, or is nested too deep."});
    EXPECT_FALSE(surveyed.extents.IsEmpty());
}

TEST(IgesSubfigureTest, CompositesThatContainEachOtherEnd)
{
    support::IgesText part;
    part.Entity(102, {"102,2,3,3;"}, 0, "00010000");
    part.Entity(102, {"102,2,1,1;"}, 0, "00010000");
    part.Entity(308, {"308,0,1HX,2,1,3;"}, 0, "00000200");
    part.Entity(408, {"408,5,0.,0.,0.;"});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    EXPECT_TRUE(surveyed.extents.IsEmpty());
    EXPECT_TRUE(surveyed.errors.empty());
}

TEST(IgesSubfigureTest, TenToTheTwentiethCopiesEnd)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,1.,1.;"}, 0, "00010000");
    part.Entity(308, {"308,0,1HX,1,1;"}, 0, "00000200");
    for (int level = 0; level < 20; ++level)
    {
        std::string members;
        const int inner = 3 + 22 * level;
        for (int i = 0; i < 10; ++i)
        {
            const int number = part.Entity(408, {"408," + std::to_string(inner) + "," + std::to_string(i) + ".,0.,0.;"},
                                           0, "00010000");
            members += "," + std::to_string(number);
        }
        part.Entity(308, {"308,0,1HX,10" + members + ";"}, 0, "00000200");
    }
    part.Entity(408, {"408,443,0.,0.,0.;"});
    const Surveyed surveyed = SurveyOf(part.Bytes(), 1'000'000);
    EXPECT_FALSE(surveyed.extents.IsEmpty());
    EXPECT_EQ(surveyed.errors, std::vector<std::wstring>{L"There are more copies than are followed."});
}

TEST(IgesSurveyTest, TheTransformationOfAnEntityMovesWhatDependsOnIt)
{
    support::IgesText part;
    part.Entity(124, {"124,1.,0.,0.,10.,0.,1.,0.,0.,0.,0.,1.,0.;"});
    part.Entity(110, {"110,0.,0.,0.,2.,0.,0.;"}, 1, "00010000");
    part.Entity(110, {"110,0.,0.,0.,0.,2.,0.;"}, 0, "00000000"); // named by it, but independent
    part.Entity(102, {"102,2,3,5;"}, 1);
    ExpectBox(SurveyOf(part.Bytes()), {0, 0, 0}, {22, 2, 0});
}

class IgesBadCurveTest : public testing::TestWithParam<const char*>
{
};

TEST_P(IgesBadCurveTest, CountsByItsPointsAndIsSaid)
{
    support::IgesText part;
    const std::string record = GetParam();
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < record.size(); at += 64)
        lines.push_back(record.substr(at, 64));
    part.Entity(std::stoi(record), lines);
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, {0, 0, 0}, {2, 3, 0});
    EXPECT_EQ(surveyed.errors, std::vector<std::wstring>{L"The curve's numbers make no curve, and it is not drawn."});
}

INSTANTIATE_TEST_SUITE_P(
    Curves, IgesBadCurveTest,
    testing::Values("126,2,2,0,0,1,0,0.,0.,1.,0.,1.,1.,1.,1.,1.,0.,0.,0.,1.,3.,0.,2.,0.,0.,0.,1.;", // knots
                    "126,2,2,0,0,1,0,0.,0.,0.,0.,0.,0.,1.,1.,1.,0.,0.,0.,1.,3.,0.,2.,0.,0.,0.,1.;", // all the same
                    "126,2,2,0,0,1,0,0.,0.,0.,1.,1.,1.,1.,0.,1.,0.,0.,0.,1.,3.,0.,2.,0.,0.,0.,1.;", // weights
                    "126,2,2,0,0,1,0,0.,0.,0.,1.,1.,1.,1.,-1.,1.,0.,0.,0.,1.,3.,0.,2.,0.,0.,0.,1.;",
                    "104,0.,0.,0.,0.,0.,0.,0.,0.,0.,2.,3.;",     // no equation
                    "104,1.,0.,1.,0.,0.,1.,0.,0.,0.,2.,3.;",     // no real point
                    "104,1.,0.,0.,-2.,0.,0.,0.,0.,0.,2.,3.;",    // two lines
                    "104,1.,0.,-1.,0.,0.,-1.,0.,0.,0.,2.,3.;")); // between the branches

TEST(IgesSurveyTest, OfAParametricSplineEachSegmentIsMeasuredThatHasALength)
{
    support::IgesText part;
    part.Entity(112, {"112,3,1,3,3,0.,1.,1.,2.,0.,1.,0.,0.,0.,0.,0.,0.,0.,0.,0.,0.,",
                      "9.,1.,0.,0.,9.,0.,0.,0.,9.,0.,0.,0.,", "1.,1.,0.,0.,0.,5.,0.,0.,0.,0.,0.,0.;"});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, {0, 0, 0}, {2, 5, 0});
    EXPECT_EQ(surveyed.errors, std::vector<std::wstring>{L"The curve's numbers make no curve, and it is not drawn."});
}

TEST(IgesSurveyTest, TwentyThousandCompositesInEachOtherAreReadToTheirEnd)
{
    support::IgesText part;
    part.Entity(110, {"110,0.,0.,0.,2.,0.,0.;"}, 0, "00010000");
    int number = 1;
    for (int depth = 0; depth < 20'000; ++depth)
        number = part.Entity(102, {"102,1," + std::to_string(number) + ";"}, 0, "00010000");
    const int figure = part.Entity(308, {"308,0,1HX,1," + std::to_string(number) + ";"}, 0, "00000200");
    part.Entity(408, {"408," + std::to_string(figure) + ",5.,0.,0.;"});
    ExpectBox(SurveyOf(part.Bytes()), {5, 0, 0}, {7, 0, 0});
}

TEST(IgesSurveyTest, EntitiesThatDependOnEachOtherAreSaid)
{
    support::IgesText part;
    part.Entity(102, {"102,1,3;"}, 0, "00010000");
    part.Entity(102, {"102,2,1,5;"}, 0, "00010000");
    part.Entity(110, {"110,0.,0.,0.,1.,0.,0.;"}, 0, "00010000");
    const Surveyed surveyed = SurveyOf(part.Bytes());
    EXPECT_TRUE(surveyed.extents.IsEmpty());
    EXPECT_EQ(surveyed.errors, std::vector<std::wstring>(
                                   3, L"The transformation cannot be read, and the extents go without this entity."));
}

TEST(IgesSurveyTest, ABadFieldInACurveLeavesItsOtherPoints)
{
    support::IgesText part;
    part.Entity(126, {"126,2,2,0,0,1,0,0.,0.,0.,1.,1.,1.,1.,1.,1.,", "0.,0.,0.,1.x,2.,0.,2.,3.,0.,0.,1.;"});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, {0, 0, 0}, {2, 3, 0});
    ASSERT_EQ(surveyed.errors.size(), 3u);
    EXPECT_EQ(surveyed.errors[2], L"The curve's numbers make no curve, and it is not drawn.");
}

TEST(IgesSurveyTest, AnOffsetByFarMoreThanItsBaseDoesNotFillTheMemory)
{
    support::IgesText part;
    // 2,000 pieces of a parabola.
    constexpr int count = 2000;
    std::string knots;
    std::string weights;
    std::string points;
    for (int i = 0; i < count + 3; ++i)
        knots += std::to_string(i) + ".,";
    for (int i = 0; i < count; ++i)
    {
        weights += "1.,";
        points += std::to_string(i) + "." + "," + std::to_string(i % 2) + ".,0.,";
    }
    const std::string record =
        "126," + std::to_string(count - 1) + ",2,0,0,1,0," + knots + weights + points + "0.,9999.;";
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < record.size(); at += 64)
        lines.push_back(record.substr(at, 64));
    part.Entity(126, lines, 0, "00010600");
    part.Entity(130, {"130,1,1,0,0,0,1.D90,0.,0.,0.,0.,0.,1.,0.,0.;"});
    EXPECT_EQ(SurveyOf(part.Bytes()).errors,
              std::vector<std::wstring>{L"The curve's numbers make no curve, and it is not drawn."});
}

TEST(IgesSurveyTest, ThousandsOfOffsetsOfAnEndlessCompositeAreReadToTheirEnd)
{
    support::IgesText part;
    constexpr int count = 2000;
    std::vector<std::string> members = {"102," + std::to_string(count)};
    for (int i = 0; i < count; ++i)
        members.push_back("," + std::to_string(part.Entity(110, {"110,0.,0.,0.,1.,0.,0.;"}, 0, "00010600")));
    members.push_back(";");
    const std::string composite = std::to_string(part.Entity(102, members, 0, "00010600"));
    for (int i = 0; i < count; ++i)
        part.Entity(130, {"130," + composite + ",1,0,0,0,1.,0.,0.,0.,0.,0.,1.,0.,0.;"});
    const Surveyed surveyed = SurveyOf(part.Bytes(), 1'000'000);
    ExpectBox(surveyed, {0, 1, 0}, {1, 1, 0});
    EXPECT_FALSE(surveyed.errors.empty());
}

TEST(IgesSurveyTest, HugeNumbersAreMeasured)
{
    support::IgesText part;
    part.Entity(126, {"126,2,2,0,0,1,0,0.,0.,0.,1.,1.,1.,1.,1.,1.,", "-1.D308,0.,0.,1.D308,2.,0.,1.D308,0.,0.,0.,1.;"});
    part.Entity(100, {"100,0.,0.,0.,1.D308,0.,1.D308,0.;"});
    part.Entity(104, {"104,1.D-308,0.,1.D308,0.,0.,-1.D308,0.,1.D308,0.,1.D308,0.;"});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    // They are too large for curves, which count by their points then.
    EXPECT_EQ(surveyed.errors.size(), 3u);
    EXPECT_EQ(surveyed.extents.Low(), (iges::Point{-1e308, 0, 0}));
    EXPECT_EQ(surveyed.extents.High(), (iges::Point{1e308, 2, 0}));
}

TEST(IgesSurveyTest, TransformationsAreApplied)
{
    support::IgesText part;
    // A quarter turn about z, and one unit up; then the other one, ten along x.
    part.Entity(124, {"124,1.,0.,0.,10.,0.,1.,0.,0.,0.,0.,1.,0.;"});
    part.Entity(124, {"124,0.,-1.,0.,0.,1.,0.,0.,0.,0.,0.,1.,1.;"}, 1);
    part.Entity(116, {"116,2.,3.,4.;"}, 3);
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, {7, 2, 5}, {7, 2, 5});
    EXPECT_TRUE(surveyed.errors.empty());
}

TEST(IgesSurveyTest, AnArcIsMeasuredWhereItIsAfterItsTransformation)
{
    support::IgesText part;
    part.Entity(124, {"124,0.8,-0.6,0.,0.,0.6,0.8,0.,0.,0.,0.,1.,0.;"});
    part.Entity(100, {"100,0.,0.,0.,5.,0.,0.,5.;"}, 1);
    // From (4, 3) by the top of the circle to (-3, 4).
    ExpectBox(SurveyOf(part.Bytes()), {-3, 3, 0}, {4, 5, 0});
}

TEST(IgesSurveyTest, TransformationsThatNameEachOtherEnd)
{
    support::IgesText part;
    part.Entity(124, {"124,1.,0.,0.,10.,0.,1.,0.,0.,0.,0.,1.,0.;"}, 1);
    part.Entity(116, {"116,2.,3.,4.;"}, 1);
    const Surveyed surveyed = SurveyOf(part.Bytes());
    EXPECT_TRUE(surveyed.extents.IsEmpty());
    // Both entities name it.
    EXPECT_EQ(surveyed.errors.size(), 2u);
}

TEST(IgesSurveyTest, ATransformationThatIsNoneIsSaid)
{
    support::IgesText part;
    part.Entity(116, {"116,2.,3.,4.;"}, 1);
    EXPECT_EQ(SurveyOf(part.Bytes()).errors.size(), 1u);
}

TEST(IgesSurveyTest, WhatIsNoGeometryIsNotMeasured)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,1.,1.;"});
    part.Entity(116, {"116,50.,50.,50.;"}, 0, "00010500");
    part.Entity(110, {"110,90.,90.,90.,91.,91.,91.;"}); // the axis of 7
    part.Entity(120, {"120,5,1,0.,1.;"});
    part.Entity(102, {"102,1,11;"}); // the parametric curve of 13
    part.Entity(110, {"110,70.,70.,0.,71.,71.,0.;"});
    part.Entity(142, {"142,1,1,9,1,1;"});
    part.Entity(110, {"110,60.,60.,0.,61.,61.,0.;"}); // of 17
    part.Entity(141, {"141,1,2,1,1,1,1,1,15;"});
    part.Entity(110, {"110,80.,80.,0.,81.,81.,0.;"}); // of 21
    part.Entity(508, {"508,1,0,1,1,1,1,0,19;"});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    ExpectBox(surveyed, {1, 1, 1}, {1, 1, 1});
    EXPECT_TRUE(surveyed.errors.empty());
}

class IgesCountTest : public testing::TestWithParam<const char*>
{
};

TEST_P(IgesCountTest, ThatRunsPastTheRecordIsSaid)
{
    support::IgesText part;
    const std::string record = GetParam();
    part.Entity(std::stoi(record), {record});
    part.Entity(116, {"116,1.,1.,1.;"});
    const Surveyed surveyed = SurveyOf(part.Bytes());
    EXPECT_EQ(surveyed.errors, std::vector<std::wstring>{L"The record ends before the numbers that it announces."});
    EXPECT_FALSE(surveyed.extents.IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Records, IgesCountTest,
                         testing::Values("116,1.,2.;", "110,1.,2.,3.,4.,5.;", "100,0.,0.,0.;", "106,2,3,1.,2.,3.;",
                                         "106,1,2147483647,0.,1.,2.;", "106,9,1,0.,0.,0.;", "122,1;",
                                         "126,5,3,0,0,1,0,0.,0.;", "126,2147483647,3,0,0,1,0,0.,0.;",
                                         "126,-1,3,0,0,1,0,0.,0.;", "128,2147483647,2147483647,1,1,0,0,1,0,0;",
                                         "502,2,1.,2.,3.;"));

TEST(IgesSurveyTest, OfACountThatIsTooLargeThePointsThatThereAreCount)
{
    support::IgesText part;
    part.Entity(502, {"502,3,1.,2.,3.,4.,5.,6.;"});
    ExpectBox(SurveyOf(part.Bytes()), {1, 2, 3}, {4, 5, 6});
}

TEST(IgesSurveyTest, ABadCoordinateLeavesItsPointOut)
{
    support::IgesText part;
    part.Entity(502, {"502,2,1.,2.,3.,4.,5x,6.;"});
    ExpectBox(SurveyOf(part.Bytes()), {1, 2, 3}, {1, 2, 3});
}

TEST(IgesSurveyTest, ABadFieldIsSaidWithItsLineAndColumn)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,1.,1.;"});
    part.Entity(110, {"110,0.,0.,0.,", "1.,  x,1.;"});
    const std::string bytes = part.Bytes();
    const auto line =
        1 + std::count(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(bytes.find("1.,  x")), '\n');
    const Surveyed surveyed = SurveyOf(bytes);
    ASSERT_GE(surveyed.errors.size(), 2u);
    EXPECT_EQ(surveyed.errors[1], L"Field 6 is bad, in line " + std::to_wstring(line) + L", column 6.");
}

TEST(IgesSurveyTest, ARecordThatFitsNoEntryIsSaid)
{
    support::IgesText part;
    part.Entity(116, {"110,0.,0.,0.,1.,1.,1.;"});
    part.Parameters("116,1.,1.,1.;", 5);
    const Surveyed surveyed = SurveyOf(part.Bytes());
    EXPECT_EQ(surveyed.errors, (std::vector<std::wstring>{L"The record is of another type than the directory entry.",
                                                          L"There is no such directory entry."}));
    EXPECT_EQ(surveyed.reals, 9u);
}

TEST(IgesSurveyTest, ASecondRecordOfAnEntryIsSaid)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,1.,1.;"});
    part.Entity(116, {"116,1.,1.,1.;"});
    part.Parameters("116,2.,2.,2.;", 1);
    EXPECT_EQ(SurveyOf(part.Bytes()).errors,
              std::vector<std::wstring>{L"The directory entry has another record already."});
}

TEST(IgesSurveyTest, TheSampleCutAtEveryLengthIsReadToItsEnd)
{
    const std::string sample = SampleBytes();
    ASSERT_FALSE(sample.empty());
    EXPECT_TRUE(SurveyOf(sample).errors.empty());
    EXPECT_TRUE(SurveyOf(sample.substr(0, sample.size() - 1)).errors.empty());
    std::uint64_t fields = 0;
    for (std::size_t length = 0; length + 1 < sample.size(); ++length)
    {
        const Surveyed surveyed = SurveyOf(sample.substr(0, length));
        // Nothing that was read is lost by what is missing behind it.
        const std::uint64_t read = surveyed.integers + surveyed.reals + surveyed.texts;
        EXPECT_GE(read, fields) << length;
        fields = read;
        EXPECT_TRUE(length < 73 || !surveyed.errors.empty()) << length;
    }
}

TEST(IgesSurveyTest, TheSampleWithAnyByteReplacedIsReadToItsEnd)
{
    std::string sample = SampleBytes();
    ASSERT_FALSE(sample.empty());
    const auto reals = static_cast<double>(SurveyOf(sample).reals);
    constexpr double longestRecord = 34.0;
    // A line has 81 bytes, so that every tenth byte is in every column by and by.
    const std::size_t step = support::Thorough() ? 1 : 10;
    for (std::size_t at = 0; at < sample.size(); at += step)
    {
        const char good = sample[at];
        // Without its end a line swallows the next one.
        const char section = sample[std::min((at + 1) / 81 * 81 + 72, sample.size() - 1)];
        for (const char bad : {'\0', '\xFF', '\n', ';', '9'})
        {
            sample[at] = bad;
            // A byte costs no more than its record, unless it is a delimiter's.
            const auto left = static_cast<double>(SurveyOf(sample).reals);
            if (section != 'G')
            {
                EXPECT_NEAR(left, reals, section == 'P' ? longestRecord : 0.0) << at;
            }
        }
        sample[at] = good;
    }
}

/// As by threads that each take so many records.
Surveyed SurveyAhead(const std::string& bytes, std::size_t batch, std::int64_t mostFields)
{
    support::Messages messages;
    const iges::File file(bytes.data(), bytes.size(), &messages.file);
    iges::Part part(file, mostFields);
    iges::Survey whole(file, part);
    std::vector<const iges::Record*> late;
    std::vector<iges::Findings> found;
    iges::Survey ahead(file, part);
    for (std::size_t i = 0; i < file.Records().size(); ++i)
    {
        if (!ahead.ReadAhead(file.Records()[i]))
            late.push_back(&file.Records()[i]);
        if (i % batch == batch - 1)
            found.push_back(ahead.Take());
    }
    found.push_back(ahead.Take());
    for (const iges::Findings& findings : found)
        whole.Add(findings);
    for (const iges::Record* const record : late)
        whole.Measure(*record);
    const iges::Findings& all = whole.Found();
    return {all.extents, all.integers, all.reals, all.texts, all.recordLengths, messages.Take()};
}

TEST(IgesSurveyTest, WhatIsReadAheadIsTheSameWhereverItIsCut)
{
    const std::string bytes = SampleBytes();
    const Surveyed whole = SurveyOf(bytes);
    for (const std::size_t batch : {1U, 2U, 3U, 100U})
    {
        const Surveyed cut = SurveyAhead(bytes, batch, 30'000'000);
        ExpectBox(cut, whole.extents.Low(), whole.extents.High());
        EXPECT_EQ(cut.integers, whole.integers);
        EXPECT_EQ(cut.reals, whole.reals);
        EXPECT_EQ(cut.texts, whole.texts);
        EXPECT_EQ(cut.lengths.count, whole.lengths.count);
        EXPECT_EQ(cut.lengths.minimum, whole.lengths.minimum);
        EXPECT_EQ(cut.lengths.maximum, whole.lengths.maximum);
        EXPECT_EQ(cut.lengths.sum, whole.lengths.sum);
    }
}

TEST(IgesSurveyTest, WhatMayBeReadAgainEndsAtTheSameEntityWhereverItIsCut)
{
    support::IgesText part = WithSubfigure();
    for (int i = 0; i < 20; ++i)
        part.Entity(408, {"408,5," + std::to_string(i) + ".,0.,0.;"});
    constexpr std::int64_t forTen = 3200;
    const Surveyed whole = SurveyOf(part.Bytes(), forTen);
    EXPECT_GT(whole.errors.size(), 5u);
    EXPECT_LT(whole.errors.size(), 15u);
    for (const std::size_t batch : {1U, 4U, 100U})
    {
        const Surveyed cut = SurveyAhead(part.Bytes(), batch, forTen);
        ExpectBox(cut, whole.extents.Low(), whole.extents.High());
        EXPECT_EQ(cut.errors, whole.errors);
    }
}

}

#include "examples/iges/Survey.h"

#include "tests/support/IgesText.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thorough.h"

#include <gtest/gtest.h>

#include <algorithm>

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
Surveyed SurveyOf(const std::string& bytes)
{
    support::Messages messages;
    const std::vector<char> text(bytes.begin(), bytes.end());
    const iges::File file(text.data(), text.size(), &messages.file);
    iges::Survey survey(file);
    for (const iges::Record& record : file.Records())
        survey.Read(record);
    return {survey.ExtentsOfGeometry(), survey.Integers(), survey.Reals(), survey.Texts(),
            survey.RecordLengths(),     messages.Take()};
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
        BoxCase{"Vertices", 502, {"502,2,1.,2.,3.,4.,5.,6.;"}, {1, 2, 3}, {4, 5, 6}},
        BoxCase{"EmptyCoordinateIsZero", 116, {"116,1.,,3.;"}, {1, 0, 3}, {1, 0, 3}}),
    [](const auto& test) { return std::string(test.param.name); });

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

}

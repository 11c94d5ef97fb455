#include "examples/iges/Picture.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iterator>

namespace
{

const iges::IsStopped never = [] { return false; };

/// A corner of the unit cube's edges, and its far corner as a point.
iges::Wireframe Corner()
{
    iges::Wireframe wireframe(0.25);
    iges::Shape shape;
    shape.points = {{1, 1, 1}};
    iges::AddLine({1, 0, 0}, {0, 0, 0}, shape.curve);
    iges::AddLine({0, 0, 0}, {0, 1, 0}, shape.curve);
    iges::AddLine({0, 0, 0}, {0, 0, 1}, shape.curve);
    wireframe.Add(shape, {});
    return wireframe;
}

std::string TextOf(void (*write)(const iges::Wireframe&, const std::wstring&, const iges::TextSink&),
                   const iges::Wireframe& wireframe, const std::wstring& title)
{
    std::string text;
    write(wireframe, title, [&](const std::string& piece) { text += piece; });
    return text;
}

std::ptrdiff_t FilesIn(const support::TemporaryFolder& folder)
{
    return std::distance(boost::filesystem::directory_iterator(folder.Path()), boost::filesystem::directory_iterator());
}

// The corner's projections are between (0, -2 / sqrt 6) and (sqrt 2, 1 / sqrt 6): the width decides, so that sqrt 2 is
// 960, and a third of the height of 3 / sqrt 6 is 960 / sqrt 12.
TEST(IgesPictureTest, IsAnIsometricViewThatFitsThePage)
{
    EXPECT_EQ(
        TextOf(iges::WritePicture, Corner(), L"a<b>&\"c\"\x1F"),
        "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 1000 871\">\n"
        "<title>a&lt;b&gt;&amp;\"c\" </title>\n"
        "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n"
        "<g fill=\"none\" stroke=\"#134\" stroke-width=\"1.5\" stroke-linecap=\"round\" stroke-linejoin=\"round\">\n"
        "<path d=\"M500 851.38L20 574.26L500 297.13h0\"/>\n"
        "<path d=\"M20 574.26L20 20h0\"/>\n"
        "</g>\n"
        "<g stroke=\"#134\" stroke-width=\"4\" stroke-linecap=\"round\">\n"
        "<path d=\"M980 20h0\"/>\n"
        "</g>\n"
        "</svg>\n");
}

TEST(IgesPictureTest, OfNothingIsEmpty)
{
    const std::string text = TextOf(iges::WritePicture, iges::Wireframe(1.0), L"");
    EXPECT_EQ(text.find("<path"), std::string::npos);
    EXPECT_NE(text.find("viewBox=\"0 0 40 40\""), std::string::npos);
    EXPECT_TRUE(text.ends_with("</svg>\n"));
}

TEST(IgesPictureTest, OfOnePointIsADot)
{
    iges::Wireframe wireframe(1.0);
    wireframe.Add({{{5, 6, 7}}, {}, {}, {}}, {});
    EXPECT_NE(TextOf(iges::WritePicture, wireframe, L"").find("<path d=\"M20 20h0\"/>"), std::string::npos);
}

TEST(IgesSceneTest, HasTheLinesAndPointsInTheUnitOfThePart)
{
    EXPECT_EQ(TextOf(iges::WriteScene, Corner(), L"a \"part\" \\\n"),
              "#VRML V2.0 utf8\n"
              "WorldInfo { title \"a \\\"part\\\" \\\\ \" info \"curves are within 0.25\" }\n"
              "Background { skyColor 1 1 1 }\n"
              "Shape {\nappearance Appearance { material Material { emissiveColor 0 0 0 } }\n"
              "geometry IndexedLineSet {\ncoord Coordinate { point [\n"
              "1 0 0\n0 0 0\n0 1 0\n0 0 0\n0 0 1\n"
              "] }\ncoordIndex [\n0 1 2 -1\n3 4 -1\n] } }\n"
              "Shape {\nappearance Appearance { material Material { emissiveColor 0 0 0 } }\n"
              "geometry PointSet {\ncoord Coordinate { point [\n1 1 1\n] } } }\n");
}

TEST(IgesSceneTest, HasCoordinatesAHundredTimesAsFineAsItsCurves)
{
    iges::Wireframe wireframe(0.002);
    wireframe.Add({{{1.0 / 3, 2.0 / 3, 1000}}, {}, {}, {}}, {});
    EXPECT_NE(TextOf(iges::WriteScene, wireframe, L"").find("\n0.33333 0.66667 1000\n"), std::string::npos);
}

TEST(IgesSaveTest, APictureTakesThePlaceOfTheOlderOne)
{
    const support::TemporaryFolder folder;
    const boost::filesystem::path path = folder.File("part.svg", std::string(5000, 'x'));
    EXPECT_TRUE(iges::SavePicture(path, Corner(), L"part", never));
    EXPECT_EQ(folder.BytesOf(path), TextOf(iges::WritePicture, Corner(), L"part"));
    EXPECT_EQ(FilesIn(folder), 1);
}

TEST(IgesSaveTest, APlainSceneEndsInEightZeros)
{
    const support::TemporaryFolder folder;
    EXPECT_TRUE(iges::SaveScene(folder / "part.wrl", Corner(), L"part", never));
    EXPECT_EQ(folder.BytesOf(folder / "part.wrl"), TextOf(iges::WriteScene, Corner(), L"part") + std::string(8, '\0'));
}

TEST(IgesSaveTest, ACompressedSceneHasTheLengthOfItsTextAtTheEnd)
{
    const support::TemporaryFolder folder;
    EXPECT_TRUE(iges::SaveScene(folder / "part.wrl.gz", Corner(), L"part", never));
    const std::string bytes = folder.BytesOf(folder / "part.wrl.gz");
    const std::size_t length = TextOf(iges::WriteScene, Corner(), L"part").size();
    ASSERT_GT(bytes.size(), 18u);
    EXPECT_EQ(bytes.substr(0, 3), "\x1F\x8B\x08");
    EXPECT_EQ(bytes.substr(bytes.size() - 4),
              (std::string{static_cast<char>(length), static_cast<char>(length >> 8), 0, 0}));
}

/// Asks to stop from the n-th time on.
iges::IsStopped StopAt(int& left)
{
    return [&left] { return --left < 0; };
}

TEST(IgesSaveTest, WhatIsGivenUpLeavesTheOlderFileAndNothingElse)
{
    const support::TemporaryFolder folder;
    const boost::filesystem::path picture = folder.File("part.svg", "old");
    const boost::filesystem::path scene = folder.File("part.wrl", "old");
    int given = 0;
    for (int times = 0; times < 10; ++times)
    {
        int left = times;
        given += !iges::SavePicture(picture, Corner(), L"part", StopAt(left));
        EXPECT_EQ(folder.BytesOf(picture) == "old", given > times) << times;
        EXPECT_EQ(FilesIn(folder), 2);
        if (given <= times)
            break;
    }
    EXPECT_GE(given, 2); // within the text, and behind it
    int left = 0;
    EXPECT_FALSE(iges::SaveScene(scene, Corner(), L"part", StopAt(left)));
    EXPECT_EQ(folder.BytesOf(scene), "old");
    EXPECT_EQ(FilesIn(folder), 2);
}

TEST(IgesSaveTest, AFolderThatIsMissingIsSaid)
{
    const support::TemporaryFolder folder;
    try
    {
        iges::SavePicture(folder.Path() / "missing" / "part.svg", Corner(), L"part", never);
        ADD_FAILURE();
    }
    catch (CException* failure)
    {
        failure->Delete();
    }
}

}

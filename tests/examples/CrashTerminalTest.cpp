#include "examples/crash/Source.h"
#include "examples/crash/Terminal.h"

#include "examples/Console.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using crash::Frame;
using crash::SourceLine;

namespace
{

struct CrashSourceTest : testing::Test
{
    Frame FrameAt(const boost::filesystem::path& path, const char* line)
    {
        Frame frame;
        frame.path = console::Utf8(path);
        frame.line = line;
        return frame;
    }

    const support::TemporaryFolder folder;
};

}

TEST_F(CrashSourceTest, LinesAreThoseAroundThePlace)
{
    const boost::filesystem::path path = folder.File("mill.cpp", "one\r\n\ttwo\nthree\x1B\nfour");
    const auto lines = [&](const char* line, unsigned long distance)
    { return crash::Sources(distance).LinesAround(FrameAt(path, line)); };
    EXPECT_EQ(lines("2", 0), (std::vector<SourceLine>{{2, "    two", true}}));
    EXPECT_EQ(lines("1", 1), (std::vector<SourceLine>{{1, "one", true}, {2, "    two", false}}));
    EXPECT_EQ(lines("4", 1), (std::vector<SourceLine>{{3, "three␛", false}, {4, "four", true}}));
    for (const char* const none : {"0", "5", "", "two", "-1", "99999999999999999999999"})
        EXPECT_EQ(lines(none, 1), std::vector<SourceLine>{}) << none;
    EXPECT_EQ(lines("4294967295", 4294967295), std::vector<SourceLine>{});
}

TEST_F(CrashSourceTest, NothingButSourcesIsOpened)
{
    crash::Sources sources(0);
    for (const char* const name : {"passwd", "key.pem", "settings.db"})
        EXPECT_TRUE(sources.LinesAround(FrameAt(folder.File(name, "secret"), "1")).empty()) << name;
    create_directory(folder / "folder.cpp");
    EXPECT_TRUE(sources.LinesAround(FrameAt(folder / "folder.cpp", "1")).empty());
    EXPECT_TRUE(sources.LinesAround(FrameAt(folder / "missing.cpp", "1")).empty());
    EXPECT_TRUE(sources.LinesAround(FrameAt(folder.File("empty.cpp", ""), "1")).empty());
}

TEST_F(CrashSourceTest, SourceOnAnotherMachineOrADeviceIsNotLookedFor)
{
    const std::string path = console::Utf8(folder.File("mill.cpp", "one"));
    const bool hasDrives = path[0] != '/';
    crash::Sources sources(0);
    Frame frame;
    frame.line = "1";
    frame.path = path;
    EXPECT_EQ(sources.LinesAround(frame).size(), 1U);
    // Other names of that file, of the kinds that other machines and devices have.
    const std::vector<std::string> names =
        hasDrives ? std::vector<std::string>{R"(\\?\)" + path, "//?/" + path, R"(\\.\)" + path, R"(\??\)" + path,
                                             path.substr(2)}
                  : std::vector<std::string>{'/' + path};
    for (const std::string& name : names)
    {
        frame.path = name;
        EXPECT_TRUE(sources.LinesAround(frame).empty()) << name;
    }
}

TEST_F(CrashSourceTest, LongLineIsCutButNotWithinACharacter)
{
    const std::string text(499, 'x');
    const boost::filesystem::path path =
        folder.File("mill.cpp", text + "y\r\n" + text + "yz\n" + text + "Ü\n" + std::string(1000, '\x80'));
    crash::Sources sources(3);
    std::vector<std::string> lines;
    for (const SourceLine& line : sources.LinesAround(FrameAt(path, "1")))
        lines.push_back(line.text);
    EXPECT_EQ(lines, (std::vector<std::string>{text + 'y', text + "y…", text + "…", "…"}));
}

TEST_F(CrashSourceTest, NoMoreIsReadThanAReportCanNeed)
{
    constexpr int lineCount = 1 << 16;
    std::string text;
    for (int i = 0; i < lineCount; ++i)
        text += std::string(255, 'x') + '\n';
    const boost::filesystem::path path = folder.File("large.cpp", text);
    const boost::filesystem::path larger = folder.File("larger.cpp", text + "\n");
    crash::Sources sources(0);
    EXPECT_TRUE(sources.LinesAround(FrameAt(larger, "1")).empty());
    int found = 0;
    for (int i = 1; i <= 100; ++i)
    {
        const std::string line = std::to_string(i);
        found += !sources.LinesAround(FrameAt(path, line.c_str())).empty();
    }
    EXPECT_EQ(found, 16);
    EXPECT_EQ(sources.LinesAround(FrameAt(path, "1")).size(), 1U) << "what was read is known";
}

TEST_F(CrashSourceTest, TerminalShowsTheReport)
{
    crash::Report report;
    report.code = "c0000005";
    report.description = "ACCESS_VIOLATION";
    report.address = "00007FF612341234";
    report.program = "/opt/mill";
    report.path = "/opt/mill.bin";
    report.modules = {{"/opt/mill.bin", "00007FF612340000", "2000", "1.2.3.4", "20260131-235959"}};
    const boost::filesystem::path path = folder.File("mill.cpp", "void Feed()\n    tool->Feed();\n");
    report.stack = {{"0x00007ff612341234",
                     "0x1",
                     "Feed()",
                     "0x1a",
                     console::Utf8(path),
                     "2",
                     {{"tool", "0x60", "", "11", "Tool", "", "0x0000000012345678"}},
                     {{"count", "0x88", "0x148", "16", "", "6", "-3"}, {"text", "0x80", "", "15", "", "", ""}}},
                    {"0x2", "0x3", "start", "0x0", "", "", {}, {}}};
    EXPECT_EQ(TerminalText(report, {"a line", "another"}),
              "mill: ACCESS_VIOLATION (c0000005) at 00007FF612341234\n"
              "  program  /opt/mill.bin\n"
              "\nstack\n"
              "  #0  Feed() +0x1a\n"
              "      " +
                  console::Utf8(path) +
                  ":2  [mill.bin]\n"
                  "      | tool->Feed();\n"
                  "        tool: Tool = 0x…12345678\n"
                  "        count: int = -3 (RAX)\n"
                  "        text: array\n"
                  "  #1  start +0x0\n"
                  "  The report ends here: it is not whole.\n"
                  "\nmodules\n"
                  "  00007FF612340000  20260131-235959  /opt/mill.bin, version 1.2.3.4\n"
                  "\nlog\n  a line\n  another\n");
}

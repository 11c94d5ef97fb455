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
    { return LinesAround(FrameAt(path, line), distance); };
    EXPECT_EQ(lines("2", 0), (std::vector<SourceLine>{{2, "    two", true}}));
    EXPECT_EQ(lines("1", 1), (std::vector<SourceLine>{{1, "one", true}, {2, "    two", false}}));
    EXPECT_EQ(lines("4", 1), (std::vector<SourceLine>{{3, "three␛", false}, {4, "four", true}}));
    for (const char* const none : {"0", "5", "", "two", "-1", "99999999999999999999999"})
        EXPECT_EQ(lines(none, 1), std::vector<SourceLine>{}) << none;
    EXPECT_EQ(lines("4294967295", 4294967295), std::vector<SourceLine>{});
}

TEST_F(CrashSourceTest, NothingButSourcesIsOpened)
{
    for (const char* const name : {"passwd", "key.pem", "settings.db"})
        EXPECT_TRUE(LinesAround(FrameAt(folder.File(name, "secret"), "1"), 0).empty()) << name;
    create_directory(folder / "folder.cpp");
    EXPECT_TRUE(LinesAround(FrameAt(folder / "folder.cpp", "1"), 0).empty());
    EXPECT_TRUE(LinesAround(FrameAt(folder / "missing.cpp", "1"), 0).empty());
    EXPECT_TRUE(LinesAround(FrameAt(folder.File("empty.cpp", ""), "1"), 0).empty());
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

#include "examples/crash/Report.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using crash::Frame;
using crash::Module;
using crash::Report;
using crash::Variable;

namespace
{

/// A report as it is written, with every element.
constexpr std::string_view wholeReport =
    "<ExceptionReport>\n"
    "<ExceptionCode>c0000005</ExceptionCode>\n"
    "<ExceptionDescription>ACCESS_VIOLATION</ExceptionDescription>\n"
    "<FaultAddress>00007FF612341234</FaultAddress>\n"
    "<FaultingModule>C:\\Tools &amp; Parts\\mill</FaultingModule>\n"
    "<SystemInformation>\n<OSVersion>\n<Major>10</Major>\n<Minor>0</Minor>\n<Build>19045</Build>\n"
    "<ServicePackMajor>1</ServicePackMajor>\n<ServicePackMinor>2</ServicePackMinor>\n<ProductType>1</ProductType>\n"
    "</OSVersion>\n</SystemInformation>\n"
    "<ProcessInformation>\n<Path>C:\\Tools & Parts\\mill.exe</Path>\n<Modules>\n"
    "<ModuleEntry>\n<Path>C:\\Tools & Parts\\mill.exe</Path>\n<BaseAddress>00007FF612340000</BaseAddress>\n"
    "<Size>2000</Size>\n<VersionInfo>\n<FileVersion>\n<Major>1</Major>\n<Minor>22</Minor>\n<Release>333</Release>\n"
    "<Build>4</Build>\n<BuildTime>20260131-235959</BuildTime>\n</FileVersion>\n</VersionInfo>\n</ModuleEntry>\n"
    "<ModuleEntry>\n<Path>C:\\Windows\\ntdll.dll</Path>\n<BaseAddress>00007FFA00000000</BaseAddress>\n"
    "<Size>1f8000</Size>\n<VersionInfo>\n<FileVersion>\n<BuildTime>19700101-000000</BuildTime>\n</FileVersion>\n"
    "</VersionInfo>\n</ModuleEntry>\n"
    "</Modules>\n</ProcessInformation>\n"
    "<CallStack>\n"
    "<StackEntry>\n<Address>0x00007ff612341234</Address>\n<Frame>0x000000a1b2c3d4e0</Frame>\n"
    "<Symbol>Feed&lt;int&gt;</Symbol>\n<Displacement>0x1a</Displacement>\n"
    "<SourceLocation>\n<Path>C:\\src\\mill.cpp</Path>\n<Line>42</Line>\n</SourceLocation>\n"
    "<Parameters>\n"
    "<Variable>\n<Symbol>tool</Symbol>\n<Flags>0x60</Flags><Tag>11</Tag><Type>Tool</Type><Value>0x00000000deadbeef</"
    "Value>"
    "</Variable>\n"
    "</Parameters>\n"
    "<LocalVariables>\n"
    "<Variable>\n<Symbol>count</Symbol>\n<Flags>0x88</Flags><Register>0x148</Register><Tag>16</Tag><BaseType>6</"
    "BaseType>"
    "<Value>-3</Value>\n</Variable>\n"
    "</LocalVariables>\n"
    "</StackEntry>\n"
    "<StackEntry>\n<Address>0x00007ffa00000010</Address>\n<Frame>0x000000a1b2c3d5e0</Frame>\n"
    "<Symbol>start</Symbol>\n<Displacement>0x0</Displacement>\n</StackEntry>\n"
    "</CallStack>\n"
    "</ExceptionReport>\n";

Report ExpectedReport()
{
    Report report;
    report.code = "c0000005";
    report.description = "ACCESS_VIOLATION";
    report.address = "00007FF612341234";
    report.program = "C:\\Tools & Parts\\mill";
    report.system = "10.0.19045, service pack 1.2";
    report.path = "C:\\Tools & Parts\\mill.exe";
    report.modules = {{"C:\\Tools & Parts\\mill.exe", "00007FF612340000", "2000", "1.22.333.4", "20260131-235959"},
                      {"C:\\Windows\\ntdll.dll", "00007FFA00000000", "1f8000", "", "19700101-000000"}};
    report.stack = {{"0x00007ff612341234",
                     "0x000000a1b2c3d4e0",
                     "Feed<int>",
                     "0x1a",
                     "C:\\src\\mill.cpp",
                     "42",
                     {{"tool", "0x60", "", "11", "Tool", "", "0x00000000deadbeef"}},
                     {{"count", "0x88", "0x148", "16", "", "6", "-3"}}},
                    {"0x00007ffa00000010", "0x000000a1b2c3d5e0", "start", "0x0", "", "", {}, {}}};
    report.isWhole = true;
    return report;
}

std::string Replaced(std::string_view from, std::string_view to, std::string text = std::string(wholeReport))
{
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

}

TEST(CrashReportTest, EveryElementIsRead) { EXPECT_EQ(crash::Read(wholeReport), ExpectedReport()); }

TEST(CrashReportTest, LineEndsMayBeThoseOfWindows)
{
    std::string bytes;
    for (const char c : wholeReport)
        bytes += c == '\n' ? "\r\n" : std::string(1, c);
    EXPECT_EQ(crash::Read(bytes), ExpectedReport());
}

TEST(CrashReportTest, RawPathsOfTheProcessAreReadAsTheyAre)
{
    const char* const name = "/tmp/a&amp;b <Path>\"'</Path> <Size>/mill";
    const std::string bytes = Replaced("C:\\Windows\\ntdll.dll", name);
    EXPECT_EQ(crash::Read(bytes).modules.at(1).path, name);
    Report expected = ExpectedReport();
    expected.modules[1].path = name;
    EXPECT_EQ(crash::Read(bytes), expected);
}

TEST(CrashReportTest, DescriptionsZeroCharactersAreNotShown)
{
    const std::string text = "The system said so.\r\n" + std::string(107, '\0');
    EXPECT_EQ(crash::Read(Replaced("ACCESS_VIOLATION", text)).description, "The system said so.");
    EXPECT_EQ(crash::Read(Replaced("ACCESS_VIOLATION", std::string(128, '\0'))).description, "");
}

TEST(CrashReportTest, ControlCharactersOfTextsAreShownAsPictures)
{
    const std::string value = "a\x1B[31m\n\x7F\x01z";
    const Report report = crash::Read(Replaced("<Value>-3", "<Value>" + value));
    EXPECT_EQ(report.stack[0].locals[0].value, "a␛[31m␊␡␁z");
}

TEST(CrashReportTest, ReferencesAreReplacedOnceAndOthersStay)
{
    const Report report = crash::Read(Replaced("<Value>-3", "<Value>&lt;&gt;&apos;&quot;&#176;&amp;lt;&#27;&;&"));
    EXPECT_EQ(report.stack[0].locals[0].value, "<>'\"°&lt;&#27;&;&");
}

TEST(CrashReportTest, BytesThatAreNoUtf8AreReplaced)
{
    EXPECT_EQ(crash::Shown("Pr\xFC"
                           "fst\xFC"
                           "ck \xE9\x89\x84 \xE9\x89|\xED\xA0\x80"),
              "Pr\uFFFD"
              "fst\uFFFD"
              "ck 鉄 \uFFFD\uFFFD|\uFFFD\uFFFD\uFFFD");
}

TEST(CrashReportTest, CharactersThatTurnTextAroundOrHideAreReplaced)
{
    EXPECT_EQ(crash::Shown("a\u202Eb\u2066c\u200Bd\u2028e\u0085f\uFEFFg"),
              "a\uFFFDb\uFFFDc\uFFFDd\uFFFDe\uFFFDf\uFFFDg");
}

TEST(CrashReportTest, DocumentWithoutAnEndIsReadAsFarAsItGoes)
{
    const std::size_t end = wholeReport.find("<Tag>16");
    const Report report = crash::Read(wholeReport.substr(0, end));
    Report expected = ExpectedReport();
    expected.isWhole = false;
    expected.stack.resize(1);
    expected.stack[0].locals[0].tag = "";
    expected.stack[0].locals[0].baseType = "";
    expected.stack[0].locals[0].value = "";
    EXPECT_EQ(report, expected);
}

TEST(CrashReportTest, ReportMayBeCutAtAnyByte)
{
    const std::size_t end = wholeReport.size() - 1; // the line feed behind the end
    std::size_t told = 0;
    for (std::size_t size = 0; size < end; ++size)
    {
        const Report report = crash::Read(wholeReport.substr(0, size));
        EXPECT_FALSE(report.isWhole) << size;
        // Nothing that was told goes away with more bytes.
        const std::size_t tells = report.modules.size() + report.stack.size();
        EXPECT_GE(tells, told) << size;
        told = tells;
    }
    EXPECT_EQ(told, 4u);
    EXPECT_TRUE(crash::Read(wholeReport.substr(0, end)).isWhole);
}

TEST(CrashReportTest, OtherFilesAreNone)
{
    EXPECT_TRUE(crash::IsReport(wholeReport));
    for (const char* const text : {"", "<ExceptionRepor", "<?xml version=\"1.0\"?><ExceptionReport>", "text"})
        EXPECT_FALSE(crash::IsReport(text)) << text;
}

TEST(CrashReportTest, TimeIsInProportionToTheBytes)
{
    // Beginnings without end: a reader that goes back for each would not come to the end of this test.
    std::string bytes = "<ExceptionReport><CallStack>";
    for (int i = 0; i < 200000; ++i)
        bytes += "<StackEntry><Parameters><Variable></P<";
    EXPECT_EQ(crash::Read(bytes).stack.size(), 1u);
}

struct CrashTypeCase
{
    Variable variable;
    const char* type;
};

class CrashTypeTest : public testing::TestWithParam<CrashTypeCase>
{
};

TEST_P(CrashTypeTest, IsWhatItIsCalledInCpp) { EXPECT_EQ(crash::TypeOf(GetParam().variable), GetParam().type); }

INSTANTIATE_TEST_SUITE_P(Tags, CrashTypeTest,
                         testing::Values(CrashTypeCase{{"", "", "", "11", "Tool", "", ""}, "Tool"},
                                         CrashTypeCase{{"", "", "", "12", "", "", ""}, "enumeration"},
                                         CrashTypeCase{{"", "", "", "13", "", "", ""}, "function"},
                                         CrashTypeCase{{"", "", "", "15", "", "", ""}, "array"},
                                         CrashTypeCase{{"", "", "", "16", "", "", ""}, "pointer"},
                                         CrashTypeCase{{"", "", "", "16", "", "6", ""}, "int"},
                                         CrashTypeCase{{"", "", "", "16", "", "10", ""}, "bool"},
                                         CrashTypeCase{{"", "", "", "16", "", "25", ""}, "base type 25"},
                                         CrashTypeCase{{"", "", "", "", "", "", ""}, ""},
                                         CrashTypeCase{{"", "", "", "1x", "", "", ""}, ""}));

TEST(CrashVariableTest, LowHalfOfAnAddressIsSaidToBeOne)
{
    EXPECT_EQ(crash::ValueOf({"", "", "", "", "", "", "0x00000000deadbeef"}), "0x…deadbeef");
    EXPECT_EQ(crash::ValueOf({"", "", "", "", "", "", "0x00000001deadbeef"}), "0x00000001deadbeef");
    EXPECT_EQ(crash::ValueOf({"", "", "", "", "", "", "-3"}), "-3");
}

TEST(CrashVariableTest, RegisterHasItsName)
{
    const auto name = [](const char* number) { return crash::RegisterOf({"", "", number, "", "", "", ""}); };
    EXPECT_EQ(name("0x148"), "RAX");
    EXPECT_EQ(name("0x157"), "R15");
    EXPECT_EQ(name("0x9a"), "XMM0");
    EXPECT_EQ(name("0xa1"), "XMM7");
    EXPECT_EQ(name("0xfc"), "XMM8");
    EXPECT_EQ(name("0x103"), "XMM15");
    EXPECT_EQ(name("0x1"), "register 1");
    EXPECT_EQ(name(""), "");
    EXPECT_EQ(name("0x"), "");
    EXPECT_EQ(name("0xfffffffffffffffff"), "");
}

TEST(CrashModuleTest, HoldsItsAddresses)
{
    const Report report = crash::Read(wholeReport);
    const crash::ModuleMap modules(report);
    const auto name = [&modules](const char* address)
    {
        const Module* const module = modules.At(address);
        return module == nullptr ? "none" : std::string(crash::NameOf(module->path));
    };
    EXPECT_EQ(name("0x00007ff612340000"), "mill.exe");
    EXPECT_EQ(name("0x00007ff612341fff"), "mill.exe");
    EXPECT_EQ(name("0x00007ff612342000"), "none");
    EXPECT_EQ(name("0x00007ff61233ffff"), "none");
    EXPECT_EQ(name("00007FFA00000001"), "ntdll.dll");
    EXPECT_EQ(name(""), "none");
    EXPECT_EQ(name("0xmill"), "none");
}

TEST(CrashModuleTest, IsFoundAmongManyAsFastAsAmongFew)
{
    constexpr int count = 50000;
    Report report;
    for (int i = 0; i < count; ++i)
        report.modules.push_back({"", std::to_string(i + 1) + "000", "1000", "", ""});
    const crash::ModuleMap modules(report);
    // To go through them for each would not come to the end of this test.
    for (int i = 0; i < count; ++i)
        ASSERT_EQ(modules.At(report.modules[i].base), &report.modules[i]);
}

TEST(CrashModuleTest, HasNoAddressWhereItsOwnAreNoNumbers)
{
    Report report;
    report.modules = {{"", "", "1000", "", ""},
                      {"", "1000", "", "", ""},
                      {"first", "1000", "1000", "", ""},
                      {"second", "1000", "2000", "", ""},
                      {"top", "fffffffffffff000", "1000", "", ""}};
    const crash::ModuleMap modules(report);
    EXPECT_EQ(modules.At("0"), nullptr);
    EXPECT_EQ(modules.At("fff"), nullptr);
    ASSERT_NE(modules.At("1000"), nullptr);
    EXPECT_EQ(modules.At("1000")->path, "first");
    EXPECT_EQ(modules.At("2000"), nullptr);
    ASSERT_NE(modules.At("ffffffffffffffff"), nullptr);
    EXPECT_EQ(modules.At("ffffffffffffffff")->path, "top");
}

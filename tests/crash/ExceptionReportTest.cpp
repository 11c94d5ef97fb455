#include "utility/crash/internal/ExceptionReport.h"

#include "tests/support/ScriptedCrash.h"
#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Paths.h"
#include "utility/platform/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

using support::ScriptedFrame;
using support::ScriptedType;
using utility::platform::SymbolVariable;

namespace
{

#ifdef _WIN32
const std::wstring program = L"C:\\cam\\milling & turning.exe";
const std::wstring programStem = L"C:\\cam\\milling &amp; turning";
#else
const std::wstring program = L"/opt/cam/milling & turning.exe";
const std::wstring programStem = L"/opt/cam/milling &amp; turning";
#endif

const std::wstring emptySystem = L"<SystemInformation>\n</SystemInformation>\n";
const std::wstring noModules =
    L"<ProcessInformation>\n<Path>" + program + L"</Path>\n<Modules>\n</Modules>\n</ProcessInformation>\n";
const std::wstring noCalls = L"<CallStack>\n</CallStack>\n";

/// The bytes of a value, and what is behind it up to the end of the page when it is at its start.
template <class Value>
std::string PageWith(const Value& value)
{
    std::string bytes(4096, '\x5A');
    std::memcpy(bytes.data(), &value, sizeof(value));
    return bytes;
}

template <class Character>
std::string PageWithText(const std::basic_string<Character>& text)
{
    std::string bytes(4096, '\x5A');
    std::memcpy(bytes.data(), text.c_str(), (text.size() + 1) * sizeof(Character));
    return bytes;
}

constexpr std::uint64_t variableAt = 0x10000;

struct ExceptionReportTest : testing::Test
{
    ExceptionReportTest() { process.programPath = program; }

    boost::filesystem::path Write() { return utility::detail::WriteExceptionReport({&record, &context}); }

    std::wstring Report()
    {
        Write();
        return process.Report();
    }

    /// A report with these sections, up to the call stack's end.
    static std::wstring Document(const std::wstring& stack, const std::wstring& process = noModules,
                                 const std::wstring& system = emptySystem,
                                 const std::wstring& description = L"ACCESS_VIOLATION",
                                 const std::wstring& code = L"c0000005")
    {
        return L"<ExceptionReport>\n<ExceptionCode>" + code + L"</ExceptionCode>\n<ExceptionDescription>" +
               description + L"</ExceptionDescription>\n<FaultAddress>00007FFE0012ABCD</FaultAddress>\n" +
               L"<FaultingModule>" + programStem + L"</FaultingModule>\n" + system + process + stack;
    }

    static std::wstring Whole(const std::wstring& stack) { return Document(stack) + L"</ExceptionReport>\n"; }

    /// What is written of a variable with these flags and this type, in a frame whose address is 0x7000.
    std::wstring VariableWith(DWORD flags, const ScriptedType& type, std::uint64_t address = variableAt)
    {
        symbols.types[1] = type;
        symbols.frames = {
            {{0x401000, 0x7000, 0}, {{"f", 0}}, {}, {{{"v", flags | SymbolVariable::isParameter, 0x148, address, 1}}}}};
        const std::wstring report = Report();
        const std::wstring_view before = L"<Parameters>\n<Variable>\n<Symbol>v</Symbol>\n";
        const std::wstring_view behind = L"</Variable>\n</Parameters>\n<LocalVariables>\n</LocalVariables>\n";
        const std::size_t begin = report.find(before);
        const std::size_t end = report.find(behind);
        if (begin == std::wstring::npos || end == std::wstring::npos)
            return L"(incomplete) " + report;
        return report.substr(begin + before.size(), end - begin - before.size());
    }

    std::wstring ValueOf(DWORD base, const std::string& bytes)
    {
        symbols.memory[variableAt] = bytes;
        return VariableWith(0, {16, {}, {}, 4, base});
    }

    support::ScriptedSymbols symbols;
    support::ScriptedProcess process;
    support::ScriptedVersions versions;
    _EXCEPTION_RECORD record = []
    {
        _EXCEPTION_RECORD each = {};
        each.ExceptionCode = 0xC0000005;
        each.ExceptionAddress = reinterpret_cast<void*>(0x7FFE0012ABCD);
        return each;
    }();
    _CONTEXT context = []
    {
        _CONTEXT each = {};
        each.Rip = 0x7FFE0012ABCD;
        return each;
    }();
};

// The document.

TEST_F(ExceptionReportTest, OfASoundSystemHasAnEmptySystemSection)
{
    EXPECT_EQ(Report(), Whole(noCalls));
    EXPECT_EQ(symbols.ends, 1);
}

TEST_F(ExceptionReportTest, DeliberatelyNamesTheProgramWithoutItsExtensionAsTheModuleOfTheFault)
{
    EXPECT_NE(Report().find(L"<FaultingModule>" + programStem + L"</FaultingModule>\n"), std::wstring::npos);
    // That was looked up all the same.
    EXPECT_EQ(process.lookedUp, std::vector<const void*>{record.ExceptionAddress});
}

TEST_F(ExceptionReportTest, DeliberatelyTellsTheVersionOfASystemThatRefusedToTellIt)
{
    process.systemVersion = {10, 2, 0xFFFFFFFF, 3, 65535, 200};
    process.queryResult = -1;
    EXPECT_EQ(Report(), Document(noCalls, noModules,
                                 L"<SystemInformation>\n<OSVersion>\n<Major>10</Major>\n<Minor>2</Minor>\n"
                                 L"<Build>4294967295</Build>\n<ServicePackMajor>3</ServicePackMajor>\n"
                                 L"<ServicePackMinor>65535</ServicePackMinor>\n<ProductType>200</ProductType>\n"
                                 L"</OSVersion>\n</SystemInformation>\n") +
                            L"</ExceptionReport>\n");
}

TEST_F(ExceptionReportTest, HasAnEmptySystemSectionWhereNobodyCanBeAsked)
{
    process.canQuery = false;
    process.queryResult = -1;
    EXPECT_EQ(Report(), Whole(noCalls));
}

TEST_F(ExceptionReportTest, DeliberatelyHasPathsInTheProcessSectionAsTheyAre)
{
    const std::wstring module = L"a&b<c>'d'\"e\".dll";
    process.modules = {{module, 0x7FFE00120000, 0x1F000, 0}};
    EXPECT_EQ(Report(),
              Document(noCalls, L"<ProcessInformation>\n<Path>" + program +
                                    L"</Path>\n<Modules>\n<ModuleEntry>\n<Path>" + module +
                                    L"</Path>\n<BaseAddress>00007FFE00120000</BaseAddress>\n<Size>1f000</Size>\n"
                                    L"<VersionInfo>\n<FileVersion>\n<BuildTime>19700101-000000</BuildTime>\n"
                                    L"</FileVersion>\n</VersionInfo>\n</ModuleEntry>\n</Modules>\n"
                                    L"</ProcessInformation>\n") +
                  L"</ExceptionReport>\n");
}

TEST_F(ExceptionReportTest, TellsTheVersionsOfModulesAndWhenTheyWereMade)
{
    process.modules = {{L"one", 0, 0, 0xFFFFFFFF}, {L"two", 0xFFFFFFFFFFFF0000, 0xABCDEF, 951782400}};
    versions.Set(L"one", 65535, 0, 2, 10);
    EXPECT_EQ(Report(),
              Document(noCalls, L"<ProcessInformation>\n<Path>" + program +
                                    L"</Path>\n<Modules>\n<ModuleEntry>\n<Path>one</Path>\n"
                                    L"<BaseAddress>0000000000000000</BaseAddress>\n<Size>0</Size>\n<VersionInfo>\n"
                                    L"<FileVersion>\n<Major>65535</Major>\n<Minor>0</Minor>\n<Release>2</Release>\n"
                                    L"<Build>10</Build>\n<BuildTime>21060207-062815</BuildTime>\n</FileVersion>\n"
                                    L"</VersionInfo>\n</ModuleEntry>\n<ModuleEntry>\n<Path>two</Path>\n"
                                    L"<BaseAddress>FFFFFFFFFFFF0000</BaseAddress>\n<Size>abcdef</Size>\n"
                                    L"<VersionInfo>\n<FileVersion>\n<BuildTime>20000229-000000</BuildTime>\n"
                                    L"</FileVersion>\n</VersionInfo>\n</ModuleEntry>\n</Modules>\n"
                                    L"</ProcessInformation>\n") +
                  L"</ExceptionReport>\n");
}

TEST_F(ExceptionReportTest, LeavesOutAVersionThatCannotBeReadOrIsTooShort)
{
    process.modules = {{L"one", 0, 0, 0}};
    versions.Set(L"one", 1, 2, 3, 4);
    versions.canRead = false;
    EXPECT_EQ(Report().find(L"<Major>"), std::wstring::npos);
    versions.canRead = true;
    versions.answeredLength = sizeof(VS_FIXEDFILEINFO) - 1;
    EXPECT_EQ(Report().find(L"<Major>"), std::wstring::npos);
}

TEST_F(ExceptionReportTest, LeavesOutThePathOfAProgramThatTheSystemTellsOnlyOnce)
{
    process.lastPathAnswered = 1;
    EXPECT_EQ(Report(), Document(noCalls, L"<ProcessInformation>\n<Modules>\n</Modules>\n</ProcessInformation>\n") +
                            L"</ExceptionReport>\n");
}

TEST_F(ExceptionReportTest, HasTheTimeOfAModuleFromItsFileWhereModulesTellThat)
{
    const support::TemporaryFolder folder;
    std::string bytes(64 + 24, '\0');
    bytes.replace(0, 2, "MZ");
    bytes[24] = 0x40;
    bytes[60] = 0x40;
    bytes.replace(64, 4, std::string("PE\0\0", 4));
    const std::uint32_t stamp = 0x12345678;
    std::memcpy(&bytes[64 + 4 + 4], &stamp, sizeof(stamp));
    process.modules = {{utility::platform::WideFromPath(folder.File("module", bytes)), 0, 0, {}}};
    EXPECT_NE(Report().find(L"<BuildTime>19790905-225136</BuildTime>\n"), std::wstring::npos);
}

TEST_F(ExceptionReportTest, DeliberatelyEndsAtAModuleThatIsNoPortableExecutable)
{
    const support::TemporaryFolder folder;
    for (const std::string& bytes : {std::string("#!/bin/sh"), std::string()})
    {
        support::ScriptedProcess other;
        other.programPath = program;
        const std::wstring path = utility::platform::WideFromPath(folder.File("module", bytes));
        other.modules = {{path, 0, 0, {}}, {L"never reached", 0, 0, 0}};
        versions.Set(path, 1, 2, 3, 4);
        Write();
        const std::wstring report = other.Report();
        EXPECT_TRUE(report.ends_with(L"<Release>3</Release>\n<Build>4</Build>\n")) << report;
    }
    EXPECT_EQ(symbols.ends, 2);
}

TEST_F(ExceptionReportTest, EndsAtAModuleWhoseFileIsGone)
{
    process.modules = {{L"nowhere to be found", 0, 0, {}}};
    EXPECT_TRUE(Report().ends_with(L"<VersionInfo>\n<FileVersion>\n"));
    EXPECT_EQ(symbols.ends, 1);
}

// What happened.

struct KnownException
{
    DWORD code;
    const wchar_t* hexadecimal;
    const wchar_t* text;
};

struct ExceptionDescriptionTest : ExceptionReportTest, testing::WithParamInterface<KnownException>
{
};

TEST_P(ExceptionDescriptionTest, IsTheNameOfTheException)
{
    process.description = L"not to be asked for";
    record.ExceptionCode = GetParam().code;
    EXPECT_EQ(Report(), Document(noCalls, noModules, emptySystem, GetParam().text, GetParam().hexadecimal) +
                            L"</ExceptionReport>\n");
    EXPECT_EQ(process.descriptionsAsked, 0);
}

INSTANTIATE_TEST_SUITE_P(Known, ExceptionDescriptionTest,
                         testing::Values(KnownException{0x80000001, L"80000001", L"GUARD_PAGE"},
                                         KnownException{0x80000002, L"80000002", L"DATATYPE_MISALIGNMENT"},
                                         KnownException{0x80000003, L"80000003", L"BREAKPOINT"},
                                         KnownException{0x80000004, L"80000004", L"SINGLE_STEP"},
                                         KnownException{0xC0000005, L"c0000005", L"ACCESS_VIOLATION"},
                                         KnownException{0xC0000006, L"c0000006", L"IN_PAGE_ERROR"},
                                         KnownException{0xC0000008, L"c0000008", L"INVALID_HANDLE"},
                                         KnownException{0xC000001D, L"c000001d", L"ILLEGAL_INSTRUCTION"},
                                         KnownException{0xC0000025, L"c0000025", L"NONCONTINUABLE_EXCEPTION"},
                                         KnownException{0xC0000026, L"c0000026", L"INVALID_DISPOSITION"},
                                         KnownException{0xC000008C, L"c000008c", L"ARRAY_BOUNDS_EXCEEDED"},
                                         KnownException{0xC000008D, L"c000008d", L"FLT_DENORMAL_OPERAND"},
                                         KnownException{0xC000008E, L"c000008e", L"FLT_DIVIDE_BY_ZERO"},
                                         KnownException{0xC000008F, L"c000008f", L"FLT_INEXACT_RESULT"},
                                         KnownException{0xC0000090, L"c0000090", L"FLT_INVALID_OPERATION"},
                                         KnownException{0xC0000091, L"c0000091", L"FLT_OVERFLOW"},
                                         KnownException{0xC0000092, L"c0000092", L"FLT_STACK_CHECK"},
                                         KnownException{0xC0000093, L"c0000093", L"FLT_UNDERFLOW"},
                                         KnownException{0xC0000094, L"c0000094", L"INT_DIVIDE_BY_ZERO"},
                                         KnownException{0xC0000095, L"c0000095", L"INT_OVERFLOW"},
                                         KnownException{0xC0000096, L"c0000096", L"PRIV_INSTRUCTION"},
                                         KnownException{0xC00000FD, L"c00000fd", L"STACK_OVERFLOW"}));

struct OtherExceptionTest : ExceptionReportTest
{
    OtherExceptionTest() { record.ExceptionCode = 0x40000015; }

    std::wstring Described(const std::wstring& description)
    {
        return Document(noCalls, noModules, emptySystem, description, L"40000015") + L"</ExceptionReport>\n";
    }
};

TEST_F(OtherExceptionTest, DeliberatelyHasZeroCharactersBehindTheDescriptionUpTo128)
{
    process.description = L"Something <odd>.\r\n";
    EXPECT_EQ(Report(), Described(L"Something &lt;odd&gt;.\r\n" + std::wstring(128 - 18, L'\0')));
    EXPECT_EQ(process.descriptionsAsked, 1);
}

TEST_F(OtherExceptionTest, DeliberatelyHas128ZeroCharactersWhereTheSystemSaysNothing)
{
    EXPECT_EQ(Report(), Described(std::wstring(128, L'\0')));
    EXPECT_EQ(process.descriptionsAsked, 1);
}

TEST_F(OtherExceptionTest, IsDescribedInABufferThatDoublesUntilItIsLargeEnough)
{
    process.description = std::wstring(257, L'x');
    EXPECT_EQ(Report(), Described(std::wstring(257, L'x') + std::wstring(512 - 257, L'\0')));
    EXPECT_EQ(process.descriptionsAsked, 3);
}

// The calls.

TEST_F(ExceptionReportTest, TellsOfEachCallWhereItIsAndInWhat)
{
    symbols.frames = {{{0x401ABC, 0x7FFC12345678, 0}, {{"std::map<int, T>::f", 0xAB}}, {}, {}},
                      {{0xFFFFFFFFFFFFFFFF, 0, 0}, {{"g", 0}}, {{"a&b.cpp", 4294967295}}, {}}};
    EXPECT_EQ(Report(), Whole(L"<CallStack>\n<StackEntry>\n<Address>0x0000000000401abc</Address>\n"
                              L"<Frame>0x00007ffc12345678</Frame>\n<Symbol>std::map&lt;int, T&gt;::f</Symbol>\n"
                              L"<Displacement>0xab</Displacement>\n</StackEntry>\n<StackEntry>\n"
                              L"<Address>0xffffffffffffffff</Address>\n<Frame>0x0000000000000000</Frame>\n"
                              L"<Symbol>g</Symbol>\n<Displacement>0x0</Displacement>\n<SourceLocation>\n"
                              L"<Path>a&amp;b.cpp</Path>\n<Line>4294967295</Line>\n</SourceLocation>\n"
                              L"</StackEntry>\n</CallStack>\n"));
    EXPECT_EQ(symbols.walked, 0x7FFE0012ABCDU);
}

TEST_F(ExceptionReportTest, IsInItsFileUpToTheFirstLineOfTheStackAndUpToTheLast)
{
    symbols.frames = {{{1, 0, 0}, {{"f", 0}}, {}, {}}};
    const std::wstring report = Report();
    for (const std::wstring line : {L"<CallStack>\n", L"</CallStack>\n"})
        EXPECT_EQ(std::ranges::count(process.Flushes(), report.find(line) + line.size()), 1);
}

TEST_F(ExceptionReportTest, MissesACallWithoutASymbolAltogetherAndHasThoseBehindIt)
{
    symbols.frames = {{{1, 0, 0}, {{"first", 0}}, {}, {}},
                      {{2, 0, 0}, {}, {{"never.cpp", 1}}, {{}}},
                      {{3, 0, 0}, {{"third", 0}}, {}, {}}};
    const std::wstring report = Report();
    EXPECT_EQ(report.find(L"never.cpp"), std::wstring::npos);
    EXPECT_EQ(report.find(L"<Address>0x0000000000000002"), std::wstring::npos);
    EXPECT_LT(report.find(L"first"), report.find(L"third"));
    EXPECT_NE(report.find(L"third"), std::wstring::npos);
}

TEST_F(ExceptionReportTest, MissesACallWhoseProgramCounterIsNull)
{
    symbols.frames = {{{0, 1, 0}, {{"null", 0}}, {}, {}}, {{3, 0, 0}, {{"third", 0}}, {}, {}}};
    const std::wstring report = Report();
    EXPECT_EQ(report.find(L"null"), std::wstring::npos);
    EXPECT_NE(report.find(L"third"), std::wstring::npos);
}

TEST_F(ExceptionReportTest, TellsOfFunctionsThatAreInlinedOneByOne)
{
    symbols.frames = {{{5, 6, 0}, {{"inner", 1}}, {{"inner.h", 1}}, {}}, {{5, 6, 1}, {{"outer", 2}}, {}, {}}};
    EXPECT_EQ(Report(), Whole(L"<CallStack>\n<StackEntry>\n<Address>0x0000000000000005</Address>\n"
                              L"<Frame>0x0000000000000006</Frame>\n<Symbol>inner</Symbol>\n"
                              L"<Displacement>0x1</Displacement>\n<SourceLocation>\n<Path>inner.h</Path>\n"
                              L"<Line>1</Line>\n</SourceLocation>\n</StackEntry>\n<StackEntry>\n"
                              L"<Address>0x0000000000000005</Address>\n<Frame>0x0000000000000006</Frame>\n"
                              L"<Symbol>outer</Symbol>\n<Displacement>0x2</Displacement>\n</StackEntry>\n"
                              L"</CallStack>\n"));
}

TEST_F(ExceptionReportTest, WithoutRegistersIsOfThePresentStackBehindItsFirstCall)
{
    symbols.frames = {{{1, 0, 0}, {{"skipped", 0}}, {}, {}}, {{2, 0, 0}, {{"told", 0}}, {}, {}}};
    utility::detail::WriteExceptionReport({&record, nullptr});
    EXPECT_EQ(process.Report().find(L"skipped"), std::wstring::npos);
    EXPECT_NE(process.Report().find(L"told"), std::wstring::npos);
    EXPECT_NE(symbols.walked, 0U);
}

TEST_F(ExceptionReportTest, HasParametersAndLocalVariablesByTheirFlags)
{
    symbols.types[1].tag = 15;
    symbols.frames = {{{0x401000, 0, 0},
                       {{"f", 0}},
                       {},
                       {{{"a<b>", SymbolVariable::isParameter | SymbolVariable::isFrameRelative, 0, 0, 1},
                         {"local", SymbolVariable::isLocal, 0, 0, 1},
                         {"both", SymbolVariable::isParameter | SymbolVariable::isLocal, 0, 0, 1},
                         {"constant", SymbolVariable::isConstant, 0, 0, 1},
                         {"neither", SymbolVariable::isRegister | 0x200, 0, 0, 1}}}}};
    const auto variable = [](const wchar_t* name, const wchar_t* flags)
    {
        return std::wstring(L"<Variable>\n<Symbol>") + name + L"</Symbol>\n<Flags>0x" + flags +
               L"</Flags><Tag>15</Tag></Variable>\n";
    };
    EXPECT_EQ(Report(),
              Whole(L"<CallStack>\n<StackEntry>\n<Address>0x0000000000401000</Address>\n"
                    L"<Frame>0x0000000000000000</Frame>\n<Symbol>f</Symbol>\n"
                    L"<Displacement>0x0</Displacement>\n<Parameters>\n" +
                    variable(L"a&lt;b&gt;", L"60") + variable(L"both", L"c0") + L"</Parameters>\n<LocalVariables>\n" +
                    variable(L"local", L"80") + variable(L"both", L"c0") + variable(L"constant", L"100") +
                    L"</LocalVariables>\n</StackEntry>\n</CallStack>\n"));
}

// The values.

TEST_F(ExceptionReportTest, HasAClassInOneLine)
{
    symbols.memory[variableAt] = PageWith(std::uint32_t{0xDEADBEEF});
    EXPECT_EQ(VariableWith(0, {11, {}, L"Vector<3>", {}, {}}),
              L"<Flags>0x40</Flags><Tag>11</Tag><Type>Vector&lt;3&gt;</Type><Value>0x00000000deadbeef</Value>");
}

TEST_F(ExceptionReportTest, HasNoValueOfAClassInARegister)
{
    EXPECT_EQ(VariableWith(SymbolVariable::isRegister, {11, {}, L"Pair", {}, {}}),
              L"<Flags>0x48</Flags><Register>0x148</Register><Tag>11</Tag><Type>Pair</Type>");
}

TEST_F(ExceptionReportTest, HasNothingMoreOfAClassWithoutAName)
{
    EXPECT_EQ(VariableWith(0, {11, {}, {}, 4, 6}), L"<Flags>0x40</Flags><Tag>11</Tag>");
}

TEST_F(ExceptionReportTest, HasAnEnumerationAsANumber)
{
    symbols.memory[variableAt] = PageWith(std::int32_t{-7});
    EXPECT_EQ(VariableWith(0, {12, {}, {}, {}, {}}), L"<Flags>0x40</Flags><Tag>12</Tag><Value>-7</Value>\n");
}

TEST_F(ExceptionReportTest, HasTheFirstWordOfAFunction)
{
    symbols.memory[variableAt] = PageWith(std::uint64_t{0xFFFFFFFF00000012});
    EXPECT_EQ(VariableWith(0, {13, {}, {}, {}, {}}),
              L"<Flags>0x40</Flags><Tag>13</Tag><Value>0x0000000000000012</Value>\n");
}

TEST_F(ExceptionReportTest, DeliberatelyHasFourBytesOfAPointer)
{
    symbols.memory[variableAt] = PageWith(std::uint64_t{0x00007F12ABCDEF01});
    symbols.types[2] = {16, {}, {}, 0, {}};
    EXPECT_EQ(VariableWith(0, {14, 2, {}, 8, {}}),
              L"<Flags>0x40</Flags><Tag>16</Tag><Value>0x00000000abcdef01</Value>\n");
}

TEST_F(ExceptionReportTest, HasAPointerToAClassLikeTheClassItself)
{
    symbols.memory[variableAt] = PageWith(std::uint32_t{0x1234});
    symbols.types[2] = {11, {}, L"Part", {}, {}};
    EXPECT_EQ(VariableWith(0, {14, 2, {}, 8, {}}),
              L"<Flags>0x40</Flags><Tag>11</Tag><Type>Part</Type><Value>0x0000000000001234</Value>");
}

TEST_F(ExceptionReportTest, HasAPointerToAFunctionAsItsWord)
{
    symbols.memory[variableAt] = PageWith(std::uint32_t{0xFFFFFFFF});
    symbols.types[2] = {13, {}, {}, {}, {}};
    EXPECT_EQ(VariableWith(0, {14, 2, {}, 8, {}}),
              L"<Flags>0x40</Flags><Tag>13</Tag><Value>0x00000000ffffffff</Value>\n");
}

TEST_F(ExceptionReportTest, DeliberatelyNeverEndsAtAPointerToAPointer)
{
    symbols.types[2] = {14, 3, {}, 8, {}};
    symbols.types[3] = {16, {}, {}, 1, 2};
    symbols.types[1] = {14, 2, {}, 8, {}};
    symbols.frames = {{{1, 0, 0}, {{"f", 0}}, {}, {{{"arguments", SymbolVariable::isParameter, 0, 0, 1}}}}};
    EXPECT_TRUE(Report().ends_with(L"<Parameters>\n<Variable>\n<Symbol>arguments</Symbol>\n"));
    EXPECT_EQ(process.Flushed(), process.Report());
    EXPECT_GT(symbols.questions, symbols.mostQuestions);
    // That was the service's way out. What was opened is closed.
    EXPECT_EQ(symbols.ends, 1);
}

TEST_F(ExceptionReportTest, HasNoValueOfATypeThatIsNotKnown)
{
    EXPECT_EQ(VariableWith(0, {}), L"<Flags>0x40</Flags><Tag>0</Tag>");
}

TEST_F(ExceptionReportTest, HasNoValueOfWhatAPointerOfUnknownKindPointsTo)
{
    EXPECT_EQ(VariableWith(0, {14, 2, {}, 8, {}}), L"<Flags>0x40</Flags><Tag>14</Tag>");
}

TEST_F(ExceptionReportTest, HasNoValueOfAnArray)
{
    EXPECT_EQ(VariableWith(0, {15, {}, L"int[3]", 12, 6}), L"<Flags>0x40</Flags><Tag>15</Tag>");
}

TEST_F(ExceptionReportTest, HasNoValueOfASimpleTypeWithoutALength)
{
    EXPECT_EQ(VariableWith(0, {16, {}, {}, {}, 6}), L"<Flags>0x40</Flags><Tag>16</Tag>");
}

TEST_F(ExceptionReportTest, HasNoValueOfASimpleTypeThatIsNotKnown)
{
    EXPECT_EQ(VariableWith(0, {16, {}, {}, 4, {}}), L"<Flags>0x40</Flags><Tag>16</Tag>");
}

TEST_F(ExceptionReportTest, FindsAVariableOfTheFrameFromTheFramesAddressWhicheverRegisterItGoesBy)
{
    symbols.memory[0x7000 - 0x18] = PageWith(std::int32_t{42});
    const ScriptedType integer{16, {}, {}, 4, 6};
    const std::uint64_t offset = std::uint64_t{0} - 0x18;
    EXPECT_EQ(VariableWith(SymbolVariable::isRegisterRelative, integer, offset),
              L"<Flags>0x50</Flags><Tag>16</Tag><BaseType>6</BaseType><Value>42</Value>\n");
    EXPECT_EQ(VariableWith(SymbolVariable::isFrameRelative, integer, offset),
              L"<Flags>0x60</Flags><Tag>16</Tag><BaseType>6</BaseType><Value>42</Value>\n");
}

TEST_F(ExceptionReportTest, HasARegistersNumberAndItsValue)
{
    symbols.memory[variableAt] = PageWith(std::int32_t{42});
    EXPECT_EQ(VariableWith(SymbolVariable::isRegister, {16, {}, {}, 4, 13}),
              L"<Flags>0x48</Flags><Register>0x148</Register><Tag>16</Tag><BaseType>13</BaseType><Value>42</Value>\n");
}

TEST_F(ExceptionReportTest, EndsAtAVariableThatIsNowhere)
{
    symbols.types[1] = {16, {}, {}, 4, 6};
    symbols.frames = {{{1, 0, 0}, {{"f", 0}}, {}, {{{"v", SymbolVariable::isLocal, 0, 0xBAD, 1}}}}};
    EXPECT_TRUE(Report().ends_with(L"<Tag>16</Tag><BaseType>6</BaseType>"));
    // A second fault may end the process here.
    EXPECT_TRUE(process.Flushed().ends_with(L"<Tag>16</Tag>"));
    EXPECT_EQ(symbols.ends, 1);
}

struct SimpleValue
{
    DWORD base;
    std::uint64_t bytes;
    const wchar_t* text; ///< null if there is no value
};

struct SimpleTypeTest : ExceptionReportTest, testing::WithParamInterface<SimpleValue>
{
};

TEST_P(SimpleTypeTest, IsWrittenAsItsKindIs)
{
    const SimpleValue& value = GetParam();
    EXPECT_EQ(ValueOf(value.base, PageWith(value.bytes)),
              L"<Flags>0x40</Flags><Tag>16</Tag><BaseType>" + std::to_wstring(value.base) + L"</BaseType>" +
                  (value.text != nullptr ? L"<Value>" + std::wstring(value.text) + L"</Value>\n" : L""));
}

INSTANTIATE_TEST_SUITE_P(
    Values, SimpleTypeTest,
    testing::Values(SimpleValue{0, 1, nullptr}, SimpleValue{1, 1, nullptr}, SimpleValue{6, 0x12345678FFFFFFFF, L"-1"},
                    SimpleValue{6, 0x80000000, L"-2147483648"}, SimpleValue{7, 0x12345678FFFFFFFF, L"4294967295"},
                    SimpleValue{8, 0x3FC00000, L"1.5"},
                    // Deliberately four bytes of a double as well: its lower ones.
                    SimpleValue{8, 0x3FF8000000000000, L"0"}, SimpleValue{8, 0x49742408, L"1e+06"},
                    SimpleValue{8, 0xC2F6E979, L"-123.456"}, SimpleValue{9, 1, nullptr},
                    SimpleValue{10, 0xFFFFFFFFFFFFFF00, L"0"}, SimpleValue{10, 0xFFFFFFFFFFFFFF01, L"1"},
                    SimpleValue{10, 0x80, L"1"}, SimpleValue{11, 1, nullptr}, SimpleValue{13, 0xFFFFFFFE, L"-2"},
                    SimpleValue{14, 0xFFFFFFFE, L"4294967294"}, SimpleValue{29, 1, nullptr},
                    SimpleValue{31, 0x80004005, L"-2147467259"}, SimpleValue{32, 1, nullptr}));

TEST_F(ExceptionReportTest, DeliberatelyHasACharacterAndAllBehindItUpToANull)
{
    EXPECT_EQ(ValueOf(2, PageWithText<char>("c & what follows it")),
              L"<Flags>0x40</Flags><Tag>16</Tag><BaseType>2</BaseType><Value>c &amp; what follows it</Value>\n");
}

TEST_F(ExceptionReportTest, DeliberatelyHasAWideCharacterAndAllBehindItUpToANull)
{
    EXPECT_EQ(ValueOf(3, PageWithText<wchar_t>(L"\u00B0 \u4E2D 'x'")),
              L"<Flags>0x40</Flags><Tag>16</Tag><BaseType>3</BaseType><Value>&#176; \u4E2D &apos;x&apos;</Value>\n");
}

TEST_F(ExceptionReportTest, DeliberatelyHasControlCharactersOfATextAsTheyAre)
{
    EXPECT_EQ(ValueOf(2, PageWithText<char>("\x01\x1F\r\n")),
              L"<Flags>0x40</Flags><Tag>16</Tag><BaseType>2</BaseType><Value>\x01\x1F\r\n</Value>\n");
}

TEST_F(ExceptionReportTest, HasTheTextThatABasicStringPointsTo)
{
    symbols.memory[0x200000] = PageWithText<wchar_t>(L"<basic>");
    EXPECT_EQ(ValueOf(30, PageWith(std::uint64_t{0x200000})),
              L"<Flags>0x40</Flags><Tag>16</Tag><BaseType>30</BaseType><Value>&lt;basic&gt;</Value>\n");
}

TEST_F(ExceptionReportTest, HasATextOfSeveralPagesAndReadsNoneBehindItsNull)
{
    const std::size_t length = 2 * 4096 - 1;
    EXPECT_EQ(ValueOf(2, std::string(length, 'x') + '\0'), L"<Flags>0x40</Flags><Tag>16</Tag><BaseType>2</BaseType>"
                                                           L"<Value>" +
                                                               std::wstring(length, L'x') + L"</Value>\n");
}

TEST_F(ExceptionReportTest, HasAWideTextWhoseCharactersAreInTwoPages)
{
    const std::wstring text(3000, L'x');
    std::string bytes(sizeof(wchar_t) * (text.size() + 1), '\0');
    std::memcpy(bytes.data(), text.c_str(), bytes.size());
    bytes.resize((bytes.size() + 8191) / 4096 * 4096 - 1);
    symbols.memory[variableAt + 1] = bytes;
    EXPECT_EQ(VariableWith(0, {16, {}, {}, 4, 3}, variableAt + 1),
              L"<Flags>0x40</Flags><Tag>16</Tag><BaseType>3</BaseType><Value>" + text + L"</Value>\n");
}

TEST_F(ExceptionReportTest, EndsAtATextWithoutAnEnd)
{
    symbols.types[1] = {16, {}, {}, 1, 2};
    symbols.memory[variableAt] = std::string(2 * 4096, 'x');
    symbols.frames = {{{1, 0, 0}, {{"f", 0}}, {}, {{{"v", SymbolVariable::isLocal, 0, variableAt, 1}}}}};
    EXPECT_TRUE(Report().ends_with(L"<BaseType>2</BaseType>"));
}

TEST_F(ExceptionReportTest, HasNarrowTextsAsTheSystemsNarrowEncodingHasThem)
{
    const std::string narrow = "gr\xC3\xB6\xC3\x9F"
                               "e \xFF";
    const std::wstring wide = utility::platform::WideFromCodePage(CP_ACP, narrow);
    symbols.memory[variableAt] = PageWithText(narrow);
    symbols.types[1] = {16, {}, {}, 1, 2};
    symbols.frames = {
        {{1, 0, 0}, {{narrow, 0}}, {{narrow, 7}}, {{{narrow, SymbolVariable::isLocal, 0, variableAt, 1}}}}};
    const std::wstring report = Report();
    EXPECT_NE(report.find(L"<Symbol>" + wide + L"</Symbol>\n<Displacement>"), std::wstring::npos);
    EXPECT_NE(report.find(L"<Path>" + wide + L"</Path>\n<Line>7"), std::wstring::npos);
    EXPECT_NE(report.find(L"<Symbol>" + wide + L"</Symbol>\n<Flags>"), std::wstring::npos);
    EXPECT_NE(report.find(L"<Value>" + wide + L"</Value>\n"), std::wstring::npos);
}

TEST_F(ExceptionReportTest, HasNumbersInTheirFormsWhateverCameBefore)
{
    symbols.memory[variableAt] = PageWith(std::uint32_t{255});
    symbols.types[1] = {16, {}, {}, 4, 7};
    symbols.types[2] = {12, {}, {}, {}, {}};
    symbols.types[3] = {13, {}, {}, {}, {}};
    symbols.frames = {{{16, 17, 0},
                       {{"f", 18}},
                       {{"f.cpp", 19}},
                       {{{"a", SymbolVariable::isLocal, 0, variableAt, 3},
                         {"b", SymbolVariable::isLocal, 0, variableAt, 1},
                         {"c", SymbolVariable::isLocal | SymbolVariable::isRegister, 20, variableAt, 2}}}}};
    const std::wstring report = Report();
    EXPECT_NE(report.find(L"<Displacement>0x12</Displacement>"), std::wstring::npos);
    EXPECT_NE(report.find(L"<Line>19</Line>"), std::wstring::npos);
    EXPECT_NE(report.find(L"<Tag>13</Tag><Value>0x00000000000000ff</Value>"), std::wstring::npos);
    EXPECT_NE(report.find(L"<Tag>16</Tag><BaseType>7</BaseType><Value>255</Value>"), std::wstring::npos);
    EXPECT_NE(report.find(L"<Flags>0x88</Flags><Register>0x14</Register><Tag>12</Tag><Value>255</Value>"),
              std::wstring::npos);
}

// Where it is, and where there is none.

TEST_F(ExceptionReportTest, IsInAFolderOfTheProgramAndItsVersionUnderTheTimeInUtc)
{
    versions.Set(program, 7, 65535, 3, 4);
    const boost::filesystem::path file = Write();
    const boost::filesystem::path folder = boost::filesystem::path("data") / "Selvane Production Software" /
                                           "Exception Reports" / "milling & turning" / "7.65535";
    EXPECT_EQ(process.foldersMade, std::vector{folder});
    EXPECT_EQ(process.opened, std::vector{file});
    EXPECT_EQ(file.parent_path(), folder);
    const std::wstring name = utility::platform::WideFromPath(file.filename());
    EXPECT_EQ(name.size(), std::wstring(L"20260131-235959.xml").size());
    EXPECT_EQ(name.substr(8, 1) + name.substr(15), L"-.xml");
    EXPECT_EQ((name.substr(0, 8) + name.substr(9, 6)).find_first_not_of(L"0123456789"), std::wstring::npos);
    EXPECT_EQ(name.substr(0, 2), L"20");
}

TEST_F(ExceptionReportTest, IsInAFolderOfVersionZeroForAProgramWithoutAVersion)
{
    EXPECT_EQ(Write().parent_path().filename(), "0.0");
}

struct ProgramName
{
    const wchar_t* file;
    const char* folder;
};

struct ProgramNameTest : ExceptionReportTest, testing::WithParamInterface<ProgramName>
{
};

TEST_P(ProgramNameTest, LosesItsExtension)
{
    const auto separator = static_cast<wchar_t>(boost::filesystem::path::preferred_separator);
    process.programPath = (separator + std::wstring(L"opt.d") + separator).append(GetParam().file);
    EXPECT_EQ(Write().parent_path().parent_path().filename(), GetParam().folder);
}

INSTANTIATE_TEST_SUITE_P(Names, ProgramNameTest,
                         testing::Values(ProgramName{L"app", "app"}, ProgramName{L"app.exe", "app"},
                                         ProgramName{L"app.v2", "app"}, ProgramName{L"app.v2.exe", "app.v2"},
                                         ProgramName{L"app.", "app"}, ProgramName{L"my app.exe", "my app"},
                                         // What has a blank in it is no extension.
                                         ProgramName{L"app.my exe", "app.my exe"},
                                         ProgramName{L"app.my.exe ", "app.my.exe "}, ProgramName{L"a", "a"}));

TEST_F(ExceptionReportTest, OfAProgramWithoutANameIsInTheOneOfItsFolder)
{
    const auto separator = static_cast<wchar_t>(boost::filesystem::path::preferred_separator);
    process.programPath = separator + std::wstring(L"opt") + separator + L".exe";
    EXPECT_NE(utility::platform::WideFromPath(Write()).find(std::wstring(L"Exception Reports") + separator + L"opt" +
                                                            separator),
              std::wstring::npos);
}

TEST_F(ExceptionReportTest, TellsItsFileAheadOfAllThatMayHaveNoEnd)
{
    boost::filesystem::path told;
    const auto opened = [&](const boost::filesystem::path& file)
    {
        told = file;
        EXPECT_EQ(process.Report(), L"");
    };
    const boost::filesystem::path file = utility::detail::WriteExceptionReport({&record, &context}, opened);
    EXPECT_EQ(told, file);
    EXPECT_FALSE(file.empty());
    EXPECT_EQ(process.Report(), Whole(noCalls));
}

TEST_F(ExceptionReportTest, IsNotThereWithoutSymbols)
{
    symbols.canBegin = false;
    EXPECT_TRUE(Write().empty());
    EXPECT_EQ(symbols.ends, 0);
    EXPECT_TRUE(process.foldersMade.empty());
}

TEST_F(ExceptionReportTest, IsNotThereWithoutAFolderForData)
{
    process.dataFolder.clear();
    EXPECT_TRUE(Write().empty());
    EXPECT_EQ(symbols.ends, 1);
    EXPECT_TRUE(process.foldersMade.empty());
}

TEST_F(ExceptionReportTest, DeliberatelyKeepsTheSymbolsWhereTheProgramHasNoPath)
{
    process.programPath.clear();
    EXPECT_TRUE(Write().empty());
    EXPECT_EQ(symbols.ends, 0);
    EXPECT_TRUE(process.foldersMade.empty());
}

TEST_F(ExceptionReportTest, IsNotThereWithoutItsFolder)
{
    process.canMakeFolders = false;
    EXPECT_TRUE(Write().empty());
    EXPECT_EQ(symbols.ends, 1);
    EXPECT_TRUE(process.opened.empty());
}

TEST_F(ExceptionReportTest, IsNotThereWhereItsFileCannotBeOpened)
{
    process.canOpen = false;
    EXPECT_TRUE(Write().empty());
    EXPECT_EQ(symbols.ends, 1);
    EXPECT_EQ(process.descriptionsAsked, 0);
}

}

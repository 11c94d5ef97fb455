#include "utility/platform/Symbols.h"

#include "tests/support/posix/FaultedProgram.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Thorough.h"
#include "utility/platform/posix/faults/ReportedProcess.h"
#include "utility/platform/PresentContext.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <elf.h>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <sys/types.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace utility::platform;

namespace
{

/// The symbols of a process, for as long as it lives.
class OpenSymbols
{
public:
    explicit OpenSymbols(pid_t process = 0)
    {
        posix::SetReportedThread(process, process);
        Symbols().Begin();
    }
    OpenSymbols(const OpenSymbols&) = delete;
    OpenSymbols& operator=(const OpenSymbols&) = delete;
    ~OpenSymbols()
    {
        Symbols().End();
        posix::SetReportedThread(0, 0);
    }
};

/// A value, as far as one number tells it.
struct FoundVariable
{
    std::string name;
    DWORD flags = 0;
    DWORD registerNumber = 0;
    DWORD tag = 0;
    DWORD base = 0;
    std::wstring typeName;
    std::uint64_t length = 0;
    std::vector<unsigned char> bytes;
};

struct FoundFrame
{
    StackFrame frame;
    Symbol symbol;
    SourceLine line;
    std::vector<FoundVariable> variables;

    const FoundVariable* Find(std::string_view name) const
    {
        for (const FoundVariable& variable : variables)
        {
            if (variable.name == name)
                return &variable;
        }
        return nullptr;
    }
};

FoundVariable Described(const SymbolVariable& variable, const StackFrame& frame)
{
    FoundVariable found{variable.name, variable.flags, variable.registerNumber, 0, 0, {}, 0, {}};
    Symbols().TypeTag(variable.type, found.tag);
    Symbols().TypeBase(variable.type, found.base);
    Symbols().TypeName(variable.type, found.typeName);
    Symbols().TypeLength(variable.type, found.length);
    const bool isRelative =
        (variable.flags & (SymbolVariable::isFrameRelative | SymbolVariable::isRegisterRelative)) != 0;
    found.bytes.resize(found.length);
    Symbols().Read(variable.address + (isRelative ? frame.frameAddress : 0), found.bytes.data(), found.bytes.size());
    return found;
}

std::vector<FoundFrame> Walk(const _CONTEXT& context)
{
    std::vector<FoundFrame> frames;
    Symbols().BeginWalk(context);
    for (FoundFrame found; Symbols().NextFrame(found.frame); found = {})
    {
        Symbols().FindSymbol(found.frame, found.symbol);
        Symbols().FindLine(found.frame, found.line);
        if (Symbols().EnterScope(found.frame))
        {
            Symbols().EachVariable([&found](const SymbolVariable& variable)
                                   { found.variables.push_back(Described(variable, found.frame)); });
        }
        frames.push_back(found);
    }
    return frames;
}

/// What a debugger told of a frame.
struct ToldFrame
{
    std::string function;
    std::string file;
    int line = 0;
    std::vector<std::pair<std::string, std::string>> values;
};

/// At its commas that are not within brackets or quotes.
std::vector<std::string> Arguments(const std::string& text)
{
    std::vector<std::string> arguments(1);
    int depth = 0;
    char quote = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char c = text[i];
        if (quote != 0)
        {
            arguments.back() += c;
            if (c == '\\')
                arguments.back() += text[++i];
            else if (c == quote)
                quote = 0;
            continue;
        }
        if (c == '"' || c == '\'')
            quote = c;
        depth += (c == '(' || c == '{' || c == '[' || c == '<') - (c == ')' || c == '}' || c == ']' || c == '>');
        if (c == ',' && depth == 0)
        {
            arguments.emplace_back();
            ++i;
            continue;
        }
        arguments.back() += c;
    }
    return arguments;
}

/// Only what has a value.
void AddValue(ToldFrame& frame, const std::string& text, std::string_view separator)
{
    const std::size_t equals = text.find(separator);
    if (equals == std::string::npos)
        return;
    const std::string value = text.substr(equals + separator.size());
    if (value.starts_with('<'))
        return;
    frame.values.emplace_back(text.substr(0, equals), value);
}

std::vector<ToldFrame> AskDebugger(pid_t process)
{
    const std::string command =
        "gdb -nx -batch -iex 'set auto-load python-scripts off' -iex 'set debuginfod enabled off' -ex 'set width 0' "
        "-ex 'set print frame-arguments all' -ex 'set print entry-values no' "
        "-ex 'bt full' -p " +
        std::to_string(process) + " 2>/dev/null";
    std::vector<ToldFrame> frames;
    FILE* const output = ::popen(command.c_str(), "r");
    char buffer[65536];
    while (std::fgets(buffer, sizeof(buffer), output) != nullptr)
    {
        std::string line = buffer;
        line.pop_back();
        const std::size_t at = line.rfind(") at ");
        if (line.starts_with('#') && at != std::string::npos)
        {
            ToldFrame& frame = frames.emplace_back();
            std::string head = line.substr(line.find(' '), at - line.find(' '));
            head.erase(0, head.find_first_not_of(' '));
            if (head.starts_with("0x"))
                head.erase(0, head.find(" in ") + 4);
            const std::size_t arguments = head.find(" (");
            frame.function = head.substr(0, arguments);
            const std::size_t colon = line.rfind(':');
            frame.file = line.substr(at + 5, colon - at - 5);
            frame.line = std::atoi(line.c_str() + colon + 1);
            for (const std::string& argument : Arguments(head.substr(arguments + 2)))
                AddValue(frame, argument, "=");
        }
        else if (!frames.empty() && line.starts_with("        "))
            AddValue(frames.back(), line.substr(8), " = ");
    }
    ::pclose(output);
    return frames;
}

template <class T>
std::optional<T> As(const FoundVariable& variable)
{
    T value{};
    if (variable.bytes.size() < sizeof(value))
        return std::nullopt;
    std::memcpy(&value, variable.bytes.data(), sizeof(value));
    return value;
}

/// Nothing if the text is of no number that can be compared.
std::optional<bool> Agrees(const FoundVariable& variable, const std::string& text)
{
    constexpr DWORD pointerTag = 14;
    constexpr DWORD baseTag = 16;
    if (variable.tag == pointerTag)
    {
        const std::size_t digits = text.starts_with("@0x") ? 3 : 2;
        if (!text.starts_with("@0x") && !text.starts_with("0x"))
            return std::nullopt;
        return As<std::uint64_t>(variable) == std::strtoull(text.c_str() + digits, nullptr, 16);
    }
    if (variable.tag != baseTag || text.starts_with('{'))
        return std::nullopt;
    if (text == "true" || text == "false")
        return As<bool>(variable) == (text == "true");
    constexpr DWORD floating = 8;
    if (variable.base == floating)
    {
        if (variable.length == sizeof(float))
            return As<float>(variable) == std::strtof(text.c_str(), nullptr);
        if (variable.length == sizeof(double))
            return As<double>(variable) == std::strtod(text.c_str(), nullptr);
        return As<long double>(variable) == std::strtold(text.c_str(), nullptr);
    }
    std::uint64_t low = 0;
    std::memcpy(&low, variable.bytes.data(), std::min(sizeof(low), variable.bytes.size()));
    const int spare = 64 - 8 * static_cast<int>(std::min(sizeof(low), variable.bytes.size()));
    const bool isNegative = text.starts_with('-');
    const std::uint64_t told = isNegative ? static_cast<std::uint64_t>(std::strtoll(text.c_str(), nullptr, 10))
                                          : std::strtoull(text.c_str(), nullptr, 10);
    return low << spare == told << spare;
}

/// Variables of a function that is called again and again are compared each time, and counted once.
struct Comparison
{
    std::set<std::string> counted;
    std::size_t given = 0; ///< values that the debugger has
    std::size_t found = 0; ///< those of them that there are
    std::size_t scalars = 0;
    std::string wrong; ///< scalars that are another number
    std::string missing;
};

void Compare(const FoundFrame& ours, const ToldFrame& told, Comparison& comparison)
{
    std::map<std::string, std::size_t> seen;
    for (const auto& [name, text] : told.values)
    {
        const std::size_t index = seen[name]++;
        const bool isNew = comparison.counted.insert(told.function + ' ' + name + ' ' + std::to_string(index)).second;
        comparison.given += isNew;
        std::vector<const FoundVariable*> named;
        for (const FoundVariable& variable : ours.variables)
        {
            if (variable.name == name)
                named.push_back(&variable);
        }
        const std::string place = told.function + ": " + name + " = " + text + '\n';
        if (index >= named.size())
        {
            comparison.missing += place;
            continue;
        }
        comparison.found += isNew;
        std::optional<bool> agrees;
        for (const FoundVariable* const variable : named)
        {
            const std::optional<bool> one = Agrees(*variable, text);
            if (one)
                agrees = agrees.value_or(false) || *one;
        }
        comparison.scalars += isNew && agrees;
        if (agrees == false)
            comparison.wrong += place;
    }
}

/// Compiled without, with little and with much optimisation.
class SymbolsOfStoppedProgram : public testing::TestWithParam<const char*>
{
};

TEST_P(SymbolsOfStoppedProgram, HasEachValueThatADebuggerGives)
{
    if (std::system("gdb --version >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "The machine lacks gdb";
    const support::FaultedProgram program(GetParam());
    ASSERT_TRUE(program.IsStopped());
    const std::vector<ToldFrame> told = AskDebugger(program.Process());
    const OpenSymbols symbols(program.Process());
    const std::vector<FoundFrame> frames = Walk(program.Context());
    ASSERT_EQ(frames.size(), told.size());
    Comparison comparison;
    for (std::size_t i = 0; i < frames.size(); ++i)
    {
        EXPECT_NE(frames[i].symbol.name.find(told[i].function), std::string::npos)
            << i << ": " << frames[i].symbol.name << " is " << told[i].function;
        EXPECT_EQ(frames[i].line.path, told[i].file) << frames[i].symbol.name;
        EXPECT_EQ(static_cast<int>(frames[i].line.line), told[i].line) << frames[i].symbol.name;
        Compare(frames[i], told[i], comparison);
    }
    std::printf("the debugger gives %zu values, %zu are found; of %zu scalars the bytes were compared\n",
                comparison.given, comparison.found, comparison.scalars);
    EXPECT_EQ(comparison.missing, "");
    EXPECT_EQ(comparison.wrong, "");
    EXPECT_GT(comparison.scalars, 60U);
}

INSTANTIATE_TEST_SUITE_P(Levels, SymbolsOfStoppedProgram,
                         testing::Values(UTILITY_STOPPED_PROGRAM, UTILITY_STOPPED_PROGRAM_LITTLE_OPTIMISED,
                                         UTILITY_STOPPED_PROGRAM_OPTIMISED));

/// The stack of the caller, as it is now.
[[gnu::noinline]] std::vector<FoundFrame> WalkHere()
{
    _CONTEXT context = {};
    CapturePresentContext(context);
    const OpenSymbols symbols;
    return Walk(context);
}

// What a sanitizer adds has other functions inlined, and others not.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

TEST(Symbols, WalkOfThisProcessEndsWithMain)
{
    const std::vector<FoundFrame> frames = WalkHere();
    ASSERT_GT(frames.size(), 3U);
    EXPECT_NE(frames.front().symbol.name.find("WalkHere"), std::string::npos) << frames.front().symbol.name;
    EXPECT_EQ(frames.back().symbol.name, "main");
    for (std::size_t i = 1; i < frames.size(); ++i)
        EXPECT_GT(frames[i].frame.frameAddress, frames[i - 1].frame.frameAddress) << i;
}

/// As if `main` had a caller that nobody takes for a part of the system.
TEST(Symbols, WalkGoesNoFartherThanMainWhoeverCalledIt)
{
    const std::vector<FoundFrame> frames = WalkHere();
    ASSERT_GT(frames.size(), 3U);
    const FoundFrame& last = frames.back();
    const std::uint64_t stack[] = {frames[1].frame.programCounter, 0, 0, 0};
    _CONTEXT context = {};
    context.Rip = last.frame.programCounter - last.symbol.displacement;
    context.Rsp = reinterpret_cast<std::uintptr_t>(&stack[0]);
    context.Rbp = reinterpret_cast<std::uintptr_t>(&stack[2]);
    const OpenSymbols symbols;
    const std::vector<FoundFrame> walked = Walk(context);
    ASSERT_EQ(walked.size(), 1U);
    EXPECT_EQ(walked.front().symbol.name, "main");
    // Of any other function the caller is found.
    context.Rip = frames[1].frame.programCounter - frames[1].symbol.displacement;
    EXPECT_EQ(Walk(context).size(), 2U);
}

#endif

TEST(Symbols, WalkOfAThreadEndsAheadOfWhatTheSystemStartsItWith)
{
    std::vector<FoundFrame> frames;
    std::thread([&frames] { frames = WalkHere(); }).join();
    ASSERT_GT(frames.size(), 2U);
    for (const FoundFrame& frame : frames)
    {
        EXPECT_EQ(frame.symbol.name.find("start_thread"), std::string::npos);
        EXPECT_EQ(frame.symbol.name.find("clone"), std::string::npos);
    }
}

std::vector<FoundFrame> framesOfHandler;

TEST(Symbols, WalkGoesOnBehindAHandlerOfASignal)
{
    struct sigaction action = {};
    struct sigaction earlier = {};
    action.sa_handler = [](int) { framesOfHandler = WalkHere(); };
    ::sigaction(SIGUSR1, &action, &earlier);
    ::raise(SIGUSR1);
    ::sigaction(SIGUSR1, &earlier, nullptr);
    ASSERT_FALSE(framesOfHandler.empty());
    EXPECT_EQ(framesOfHandler.back().symbol.name, "main");
    framesOfHandler.clear();
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

TEST(Symbols, FrameThatWasLeftHasNoScopeAndNoSymbol)
{
    _CONTEXT context = {};
    CapturePresentContext(context);
    const OpenSymbols symbols;
    Symbols().BeginWalk(context);
    StackFrame first;
    StackFrame second;
    ASSERT_TRUE(Symbols().NextFrame(first));
    ASSERT_TRUE(Symbols().NextFrame(second));
    Symbol symbol;
    SourceLine line;
    EXPECT_FALSE(Symbols().FindSymbol(first, symbol));
    EXPECT_FALSE(Symbols().FindLine(first, line));
    EXPECT_FALSE(Symbols().EnterScope(first));
    EXPECT_TRUE(Symbols().FindSymbol(second, symbol));
}

#endif

TEST(Symbols, ReadOfWhatIsNotMappedEndsTheReport)
{
    const OpenSymbols symbols;
    int value = 5;
    int read = 0;
    Symbols().Read(reinterpret_cast<std::uintptr_t>(&value), &read, sizeof(read));
    EXPECT_EQ(read, 5);
    EXPECT_THROW(Symbols().Read(0, &read, sizeof(read)), ReportEnd);
    EXPECT_THROW(Symbols().Read(~std::uint64_t(0), &read, sizeof(read)), ReportEnd);
}

TEST(Symbols, RegistersThatPointNowhereAreNoHarm)
{
    const OpenSymbols symbols;
    for (const std::uint64_t wild : {std::uint64_t(0), std::uint64_t(8), std::uint64_t(1) << 63, ~std::uint64_t(0)})
    {
        _CONTEXT context = {};
        context.Rip = context.Rsp = context.Rbp = wild;
        EXPECT_LE(Walk(context).size(), 1U) << wild;
    }
}

TEST(Symbols, ServiceThatHasNotBegunKnowsNothing)
{
    StackFrame frame;
    Symbol symbol;
    DWORD number = 0;
    EXPECT_FALSE(Symbols().NextFrame(frame));
    EXPECT_FALSE(Symbols().FindSymbol(frame, symbol));
    EXPECT_FALSE(Symbols().EnterScope(frame));
    EXPECT_FALSE(Symbols().TypeTag(1, number));
}

/// The variables of the function that has them all.
class SymbolVariables : public testing::Test
{
protected:
    void SetUp() override
    {
        const support::FaultedProgram program(UTILITY_STOPPED_PROGRAM);
        ASSERT_TRUE(program.IsStopped());
        const OpenSymbols symbols(program.Process());
        for (const FoundFrame& frame : Walk(program.Context()))
        {
            if (frame.symbol.name == "shop::Tool::Cut(int, double)")
                m_frame = frame;
        }
    }

    const FoundVariable& Find(const char* name)
    {
        static const FoundVariable none;
        const FoundVariable* const found = m_frame.Find(name);
        EXPECT_NE(found, nullptr) << name;
        return found != nullptr ? *found : none;
    }

    FoundFrame m_frame;
};

TEST_F(SymbolVariables, HaveTheNumbersOfTheirTypes)
{
    const std::pair<const char*, DWORD> tags[] = {
        {"pair", 11},    {"mixed", 11},  {"text", 11},    {"colour", 12},    {"plain", 12},     {"function", 14},
        {"pointer", 14}, {"this", 14},   {"nothing", 14}, {"reference", 14}, {"temporary", 14}, {"member", 14},
        {"wide", 15},    {"narrow", 15}, {"local", 16},   {"constant", 16},  {"isDeep", 16},
    };
    for (const auto& [name, tag] : tags)
        EXPECT_EQ(Find(name).tag, tag) << name;
    const std::pair<const char*, DWORD> bases[] = {
        {"character", 2},
        {"wideCharacter", 3},
        {"local", 6},
        {"signedCharacter", 6},
        {"shortNumber", 6},
        {"longLong", 6},
        {"unsignedNumber", 7},
        {"unsignedCharacter", 7},
        {"unsignedLongLong", 7},
        {"single", 8},
        {"twice", 8},
        {"extended", 8},
        {"isDeep", 10},
        {"longNumber", 13},
        {"unsignedLong", 14},
        {"utf16", 32},
        {"utf32", 33},
        {"constant", 6},
        {"big", 6},
    };
    for (const auto& [name, base] : bases)
        EXPECT_EQ(Find(name).base, base) << name;
    EXPECT_EQ(Find("pair").typeName, L"shop::Pair");
    EXPECT_EQ(Find("numbers").typeName, L"std::array<int, 3>");
    EXPECT_EQ(Find("lambda").typeName, L"<unnamed>");
    EXPECT_EQ(Find("extended").length, sizeof(long double));
    EXPECT_EQ(Find("big").length, 16U);
}

TEST_F(SymbolVariables, TellParametersLocalsAndStaticOnesApart)
{
    EXPECT_EQ(Find("depth").flags, SymbolVariable::isParameter | SymbolVariable::isFrameRelative);
    EXPECT_EQ(Find("this").flags, SymbolVariable::isParameter | SymbolVariable::isFrameRelative);
    EXPECT_EQ(Find("local").flags, SymbolVariable::isLocal | SymbolVariable::isFrameRelative);
    EXPECT_EQ(Find("counter").flags, DWORD(SymbolVariable::isLocal));
}

TEST(SymbolsOfExhaustedStack, ThereIsNothingOfWhatHadNoRoom)
{
    const support::FaultedProgram program(UTILITY_EXHAUSTED_STACK);
    ASSERT_TRUE(program.IsStopped());
    const OpenSymbols symbols(program.Process());
    const std::vector<FoundFrame> frames = Walk(program.Context()); // which reads each variable
    ASSERT_GT(frames.size(), 200U);
    ASSERT_NE(frames[1].Find("depth"), nullptr);
    // The last call may have had room for all but what it was to call next.
    if (const auto* const depth = frames[0].Find("depth"))
    {
        EXPECT_EQ(As<int>(*depth), *As<int>(*frames[1].Find("depth")) + 1);
    }
    ASSERT_NE(frames[1].Find("twice"), nullptr);
    EXPECT_EQ(As<int>(*frames[1].Find("twice")), 2 * *As<int>(*frames[1].Find("depth")));
    EXPECT_EQ(frames.back().symbol.name, "main");
}

/// Where the bytes begin that are not loaded into memory: debugging information, and the names of symbols.
std::size_t EndOfLoaded(const std::string& bytes)
{
    Elf64_Ehdr header;
    std::memcpy(&header, bytes.data(), sizeof(header));
    std::size_t end = 0;
    for (std::size_t i = 0; i < header.e_phnum; ++i)
    {
        Elf64_Phdr segment;
        std::memcpy(&segment, bytes.data() + header.e_phoff + i * sizeof(segment), sizeof(segment));
        if (segment.p_type == PT_LOAD)
            end = std::max<std::size_t>(end, segment.p_offset + segment.p_filesz);
    }
    return end;
}

TEST(SymbolsOfDamagedProgram, WhatIsNotKnownIsLeftOut)
{
    std::ifstream file(UTILITY_STOPPED_PROGRAM_OPTIMISED, std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::size_t begin = EndOfLoaded(whole);
    ASSERT_LT(begin, whole.size());
    const support::TemporaryFolder folder;
    std::mt19937 random(1); // NOLINT: the same each time
    std::size_t variables = 0;
    for (int round = 0; round < support::Cases(400); ++round)
    {
        std::string damaged = whole;
        for (int i = 0; i < 1 << round % 12; ++i)
            damaged[begin + random() % (whole.size() - begin)] = static_cast<char>(random());
        const std::string path = folder.File(std::to_string(round).c_str(), damaged).native();
        ::chmod(path.c_str(), 0700);
        const support::FaultedProgram program(path.c_str());
        ASSERT_TRUE(program.IsStopped());
        const OpenSymbols symbols(program.Process());
        try
        {
            for (const FoundFrame& frame : Walk(program.Context()))
                variables += frame.variables.size();
        }
        catch (const ReportEnd&)
        {
            // An address that is wrong.
        }
    }
    EXPECT_GT(variables, 0U);
}

TEST(SymbolsOfTailCall, ArgumentsOfTheCallThatIsOnTheStackAreNotTakenForItsOwn)
{
    const support::FaultedProgram program(UTILITY_TAIL_CALL_OPTIMISED);
    ASSERT_TRUE(program.IsStopped());
    const OpenSymbols symbols(program.Process());
    const std::vector<FoundFrame> frames = Walk(program.Context());
    ASSERT_GT(frames.size(), 1U);
    EXPECT_NE(frames[0].symbol.name.find("Entered"), std::string::npos);
    EXPECT_NE(frames[1].symbol.name.find("Calling"), std::string::npos);
    EXPECT_EQ(frames[0].Find("value"), nullptr);
}

TEST(SymbolsOfLambda, AreNamedWithTheFunctionThatItIsIn)
{
    const support::FaultedProgram program(UTILITY_STOPPED_PROGRAM);
    ASSERT_TRUE(program.IsStopped());
    const OpenSymbols symbols(program.Process());
    std::set<std::string> names;
    for (const FoundFrame& frame : Walk(program.Context()))
        names.insert(frame.symbol.name);
    EXPECT_EQ(names.count("shop::Tool::Cut(int, double)::{lambda(int)#1}::operator()(int) const"), 1U);
}

TEST(SymbolVariablesInRegisters, HaveTheNumbersOfCodeView)
{
    const support::FaultedProgram program(UTILITY_STOPPED_PROGRAM_OPTIMISED);
    ASSERT_TRUE(program.IsStopped());
    const OpenSymbols symbols(program.Process());
    const std::vector<FoundFrame> frames = Walk(program.Context());
    const FoundVariable* const place = frames.front().Find("place");
    ASSERT_NE(place, nullptr);
    EXPECT_EQ(place->flags, SymbolVariable::isParameter | SymbolVariable::isRegister);
    EXPECT_EQ(place->registerNumber, 332U); // RSI has the second parameter
    EXPECT_EQ(As<std::uint64_t>(*place), 0U);
}

}

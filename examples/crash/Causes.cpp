#include "examples/crash/Causes.h"

#include "utility/Utility.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#undef NDEBUG
#include <cassert>

// Nothing here is a pointer to a pointer, at which a report breaks off.

/// The program that crashes, as far as there is one. It has a name for the sake of the stack that is shown.
namespace milling
{

enum Coolant
{
    coolantOff,
    coolantFlood,
};

struct Tool
{
    float diameter;
    int teeth;
};

struct Move
{
    const Tool* tool;
    int number;
    int feed;
    Coolant coolant;
};

int FeedPerTooth(const Move* move, int spindle)
{
    const int revolutions = spindle / 60;
    const bool isWet = move->coolant == coolantFlood;
    const int teeth = move->tool->teeth * (isWet ? 2 : 1);
    return move->feed / (revolutions * teeth);
}

void Mill(const Tool* tool, int spindle)
{
    Move move = {tool, 7, 500, coolantFlood};
    LogFile(LogSeverityInformation, nullptr) << L"Move " << move.number << L", feed " << move.feed;
    move.number += FeedPerTooth(&move, spindle);
}

}

namespace crash
{

namespace
{

/// A number that the compiler does not know.
int Unknown(int number)
{
    static volatile int kept;
    kept = number;
    return kept;
}

void NullPointer()
{
    LogFile(LogSeverityWarning, nullptr) << L"No tool in place 7";
    milling::Mill(nullptr, Unknown(12000));
}

void Division()
{
    const milling::Tool tool = {12.5F, Unknown(0)};
    LogFile(LogSeverityWarning, nullptr) << L"The tool has " << tool.teeth << L" teeth";
    milling::Mill(&tool, Unknown(12000));
}

void Abort() { std::abort(); }

void Assertion()
{
    const milling::Tool tool = {12.5F, Unknown(0)};
    assert(tool.teeth > 0);
}

void Exception() { throw std::runtime_error("no tool in place 7"); }

int Deeper(int depth)
{
    // It is the memory of the array that is not there, and not that of the variables.
    auto* const large = static_cast<char*>(__builtin_alloca(200000));
    std::memset(large, depth, 200000);
    return depth < Unknown(1000000) ? Deeper(depth + 1) + large[depth] : 0;
}

void Overflow() { Deeper(1); }

void IllegalInstruction() { __builtin_trap(); }

void Heap()
{
    auto* const first = static_cast<char*>(std::malloc(3000));
    auto* const second = static_cast<char*>(std::malloc(3000));
    std::memset(first, 'x', static_cast<std::size_t>(Unknown(3064))); // over the end
    std::free(second);
    std::abort(); // where nobody notices
}

void Caught()
{
    const CSETranslator translator;
    try
    {
        NullPointer();
    }
    catch (CStructuredException* failure)
    {
        wchar_t text[512] = L"";
        failure->GetErrorMessage(text, 512, nullptr);
        failure->Delete();
        std::printf("Caught, and the program goes on: %s\n", from_utf(text, 65001).c_str());
    }
}

}

std::vector<Cause> Causes()
{
    return {{"null", "reads through a null pointer", NullPointer},
            {"divide", "divides by zero", Division},
            {"abort", "calls abort", Abort},
            {"assert", "an assertion fails", Assertion},
            {"throw", "nobody catches an exception", Exception},
            {"overflow", "calls itself without end", Overflow},
            {"illegal", "runs into what is no instruction", IllegalInstruction},
            {"thread", "reads through a null pointer on a second thread", NullPointer, true},
            {"heap", "writes over the end of a block of memory", Heap},
            {"caught", "reads through a null pointer, catches that and goes on", Caught}};
}

}

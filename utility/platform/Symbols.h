#pragma once

#include "utility/platform/ExceptionRecord.h"
#include "utility/platform/Service.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace utility::platform
{

/// A call on the stack.
struct StackFrame
{
    std::uint64_t programCounter = 0;
    std::uint64_t frameAddress = 0;
    /// How many functions that are inlined one in the other lie between this one and the innermost of the same frame.
    unsigned inlined = 0;
};

struct Symbol
{
    std::string name; ///< undecorated, in the encoding of the debugging information (UTF-8 on Linux)
    std::uint64_t displacement = 0;
};

struct SourceLine
{
    std::string path;
    DWORD line = 0;
};

/// A type, by a number that means something to the service alone until its End.
using SymbolType = std::uint64_t;

/// A parameter or a local variable. The numbers are those of dbghelp on every system.
struct SymbolVariable
{
    enum Flags : DWORD
    {
        isRegister = 0x8,
        isRegisterRelative = 0x10,
        isFrameRelative = 0x20,
        isParameter = 0x40,
        isLocal = 0x80,
        isConstant = 0x100,
    };

    std::string name;
    DWORD flags = 0;
    DWORD registerNumber = 0; ///< of CodeView: 328 is RAX, 154 is XMM0
    /// For Read; with isRegisterRelative or isFrameRelative the frame's address has to be added.
    std::uint64_t address = 0;
    SymbolType type = 0;
};

/// The stack of a thread that faulted, and what debugging information tells of it. Between Begin and End one thread may
/// call at a time. On Linux the process may be another one.
class SymbolService
{
public:
    virtual ~SymbolService() = default;

    virtual bool Begin() = 0;
    virtual void End() = 0;

    /// Starts with the function that was running, with these registers.
    virtual void BeginWalk(const _CONTEXT& context) = 0;
    /// The next frame, outward. False at the end.
    virtual bool NextFrame(StackFrame& frame) = 0;

    /// The function of a frame.
    virtual bool FindSymbol(const StackFrame& frame, Symbol& symbol) = 0;
    /// What was running in it.
    virtual bool FindLine(const StackFrame& frame, SourceLine& line) = 0;
    /// Makes its variables those of EachVariable.
    virtual bool EnterScope(const StackFrame& frame) = 0;
    virtual void EachVariable(const std::function<void(const SymbolVariable&)>& visit) = 0;

    // What a type is. False if it is not known, or does not have that.

    /// 11 a class, 12 an enumeration, 13 a function, 14 a pointer or a reference, 15 an array, 16 a base type.
    virtual bool TypeTag(SymbolType type, DWORD& tag) = 0;
    /// What a pointer points to.
    virtual bool TypeOfPointee(SymbolType pointer, SymbolType& pointee) = 0;
    virtual bool TypeName(SymbolType type, std::wstring& name) = 0;
    /// In bytes.
    virtual bool TypeLength(SymbolType type, std::uint64_t& length) = 0;
    /// 2 char, 3 wide char, 6 int, 7 unsigned, 8 float, 10 bool, 13 long, 14 unsigned long, and others.
    virtual bool TypeBase(SymbolType type, DWORD& base) = 0;

    /// Reads memory of the process. What is not there is a second fault: on Windows just that, on Linux a
    /// ReportEnd. On Linux a value that is not in memory has an address all the same, with zeros behind the value up to
    /// the end of its page: a text is read as far as that at once.
    virtual void Read(std::uint64_t address, void* bytes, std::size_t size) = 0;
};

/// Thrown where a report cannot go on, and ends where it stands.
struct ReportEnd
{
};

ServiceSlot<SymbolService>& SymbolsSlot() noexcept;
inline SymbolService& Symbols() noexcept { return SymbolsSlot().Get(); }

}

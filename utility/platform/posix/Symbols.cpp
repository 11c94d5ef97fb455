#include "utility/platform/Symbols.h"

#include "utility/platform/posix/faults/ReportedProcess.h"
#include "utility/platform/posix/faults/ReportRequest.h"
#include "utility/platform/posix/symbols/Types.h"
#include "utility/platform/posix/symbols/Variables.h"
#include "utility/platform/SystemService.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <deque>
#include <memory>
#include <string_view>

// The walk and the variables come from elfutils. What has no address, because it is in a register, in pieces or only
// known, gets one that no process has, and is read from there.

namespace utility::platform
{

namespace
{

using namespace posix;

/// Between the two halves of what an address can be.
constexpr std::uint64_t madeAddresses = 0x4000'0000'0000'0000;
constexpr std::uint64_t madeAddressesEnd = 0x8000'0000'0000'0000;
/// Each is followed by zeros as far as a text may be read.
constexpr std::uint64_t madeSize = 0x100'0000;

/// What calls `main`, or what a thread starts with.
bool IsBelowProgram(std::string_view name)
{
    static constexpr std::string_view names[] = {"__libc_start_call_main",
                                                 "__libc_start_main",
                                                 "__libc_start_main_impl",
                                                 "__libc_start_main_alias_2",
                                                 "start_thread",
                                                 "clone",
                                                 "clone3",
                                                 "__clone3"};
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

/// What there is from Begin to End.
class Session
{
public:
    explicit Session(const Elfutils& elfutils)
        : m_elfutils(elfutils),
          m_program(elfutils),
          m_unwinder(elfutils, m_program),
          m_types(elfutils, m_program.AllUnits())
    {
    }

    void BeginWalk(const _CONTEXT& context)
    {
        m_entries.clear();
        m_frame = m_unwinder.First(Registers(context));
        m_isFirst = true;
        Look();
    }

    bool NextFrame(StackFrame& frame)
    {
        if (!m_frame)
            return false;
        if (m_next == m_depth)
        {
            if (m_isProgramsEnd)
                return false;
            m_frame = m_unwinder.CallerOf(*m_frame);
            m_isFirst = false;
            if (!m_frame)
                return false;
            Look();
            if (m_isBelowProgram)
            {
                m_frame.reset();
                return false;
            }
        }
        frame.programCounter = m_frame->ProgramCounter();
        frame.frameAddress = m_frame->address;
        frame.inlined = m_next++;
        return true;
    }

    bool FindSymbol(const StackFrame& frame, Symbol& symbol)
    {
        if (!IsCurrent(frame))
            return false;
        std::uint64_t begin = 0;
        symbol.name = NameOf(frame.inlined, begin);
        symbol.displacement = frame.programCounter - begin;
        return !symbol.name.empty();
    }

    bool FindLine(const StackFrame& frame, SourceLine& line)
    {
        if (!IsCurrent(frame))
            return false;
        int number = 0;
        line.path = frame.inlined == 0 ? m_program.LineOf(*m_code, number)
                                       : m_program.LineOfCall(*m_code, FunctionOf(frame.inlined - 1), number);
        line.line = static_cast<DWORD>(number);
        return !line.path.empty();
    }

    bool EnterScope(const StackFrame& frame)
    {
        m_scope = nullptr;
        if (!IsCurrent(frame) || m_code->functions.empty())
            return false;
        m_scope = &FunctionOf(frame.inlined);
        m_made.clear();
        return true;
    }

    void EachVariable(const std::function<void(const SymbolVariable&)>& visit)
    {
        if (m_scope == nullptr)
            return;
        Variables(m_elfutils, m_program, m_unwinder, m_entries, *m_frame)
            .Each(*m_scope,
                  [this, &visit](const Variable& variable)
                  {
                      if (!m_isFirst || HasRoom(variable))
                          visit(Described(variable));
                  });
    }

    Types& AllTypes() { return m_types; }

    void ReadMade(std::uint64_t address, void* bytes, std::size_t size) const
    {
        std::memset(bytes, 0, size);
        const std::uint64_t index = (address - madeAddresses) / madeSize;
        const std::uint64_t offset = (address - madeAddresses) % madeSize;
        if (index < m_made.size() && offset < m_made[index].size())
            std::memcpy(bytes, m_made[index].data() + offset,
                        std::min<std::size_t>(size, m_made[index].size() - offset));
    }

private:
    /// What is known of the frame's code.
    void Look()
    {
        m_code = &m_program.CodeAt(m_frame->LookUp());
        m_depth = std::max(1u, static_cast<unsigned>(m_code->functions.size()));
        m_next = 0;
        m_scope = nullptr;
        std::uint64_t begin = 0;
        const std::string name = NameOf(m_depth - 1, begin);
        m_isProgramsEnd = name == "main";
        m_isBelowProgram = !m_isFirst && IsBelowProgram(name);
    }

    bool IsCurrent(const StackFrame& frame) const
    {
        return m_frame && frame.programCounter == m_frame->ProgramCounter() && frame.frameAddress == m_frame->address &&
               frame.inlined < m_depth;
    }

    /// Counted as frames are, from the innermost.
    const Function& FunctionOf(unsigned inlined) const { return m_code->functions[m_depth - 1 - inlined]; }

    std::string NameOf(unsigned inlined, std::uint64_t& begin)
    {
        const bool isOutermost = inlined + 1 == m_depth;
        if (m_code->functions.empty())
            return m_program.SymbolAt(*m_code, begin);
        const Function& function = FunctionOf(inlined);
        begin = m_program.BeginOf(*m_code, function);
        std::string name = m_program.NameOf(function);
        if (isOutermost && !m_program.IsDecorated(function))
        {
            // A function in a function is told with that one by its symbol alone.
            std::uint64_t symbolBegin = 0;
            std::string symbol = m_program.SymbolAt(*m_code, symbolBegin);
            if (symbolBegin == begin && !symbol.empty() && symbol.find(name) != std::string::npos)
                return symbol;
        }
        return name;
    }

    /// An exhausted stack has none for what the function was about to keep there.
    static bool HasRoom(const Variable& variable)
    {
        std::byte first = {};
        return variable.location.kind != Location::Kind::memory || !variable.location.isRelative ||
               ReadReportedProcess(variable.location.number, &first, sizeof(first)) == sizeof(first);
    }

    SymbolVariable Described(const Variable& variable)
    {
        SymbolVariable described;
        described.name = variable.name;
        described.flags = variable.isParameter ? SymbolVariable::isParameter : SymbolVariable::isLocal;
        described.type = m_types.Number(variable.type);
        const Location& location = variable.location;
        switch (location.kind)
        {
        case Location::Kind::memory:
            described.address = location.number;
            if (location.isRelative)
            {
                described.flags |= SymbolVariable::isFrameRelative;
                described.address -= m_frame->address;
            }
            break;
        case Location::Kind::reg:
        {
            described.flags |= SymbolVariable::isRegister;
            described.registerNumber = Registers::CodeView(location.number);
            const std::uint64_t value = *m_frame->registers[location.number];
            const auto* const begin = reinterpret_cast<const std::byte*>(&value);
            described.address = Made({begin, begin + sizeof(value)});
            break;
        }
        case Location::Kind::bytes:
            // A parameter would be one of the local variables as well.
            if (variable.isConstant && !variable.isParameter)
                described.flags |= SymbolVariable::isConstant;
            described.address = Made(location.bytes);
            break;
        }
        return described;
    }

    std::uint64_t Made(std::vector<std::byte> bytes)
    {
        m_made.push_back(std::move(bytes));
        return madeAddresses + (m_made.size() - 1) * madeSize;
    }

    const Elfutils& m_elfutils;
    Program m_program;
    const Unwinder m_unwinder;
    Types m_types;
    EntryValues m_entries;
    std::optional<Frame> m_frame;
    const Code* m_code = nullptr;
    unsigned m_depth = 0; ///< how many functions have this frame
    unsigned m_next = 0;  ///< of them
    bool m_isFirst = true;
    bool m_isProgramsEnd = false;
    bool m_isBelowProgram = false;
    const Function* m_scope = nullptr;
    std::deque<std::vector<std::byte>> m_made;
};

class PosixSymbols final : public SymbolService
{
public:
    /// Without elfutils there is no stack to walk, and the rest of a report is told all the same.
    bool Begin() override
    {
        m_end = Clock::now() + std::chrono::seconds(reportSeconds);
        if (const Elfutils* const elfutils = Elfutils::Loaded())
            m_session = std::make_unique<Session>(*elfutils);
        return true;
    }

    void End() override { m_session.reset(); }

    void BeginWalk(const _CONTEXT& context) override
    {
        if (m_session)
            m_session->BeginWalk(context);
    }

    bool NextFrame(StackFrame& frame) override { return InTime() && m_session->NextFrame(frame); }

    bool FindSymbol(const StackFrame& frame, Symbol& symbol) override
    {
        return InTime() && m_session->FindSymbol(frame, symbol);
    }

    bool FindLine(const StackFrame& frame, SourceLine& line) override
    {
        return InTime() && m_session->FindLine(frame, line);
    }

    bool EnterScope(const StackFrame& frame) override { return InTime() && m_session->EnterScope(frame); }

    void EachVariable(const std::function<void(const SymbolVariable&)>& visit) override
    {
        if (InTime())
            m_session->EachVariable(visit);
    }

    bool TypeTag(SymbolType type, DWORD& tag) override { return InTime() && m_session->AllTypes().Tag(type, tag); }

    bool TypeOfPointee(SymbolType pointer, SymbolType& pointee) override
    {
        return InTime() && m_session->AllTypes().Pointee(pointer, pointee);
    }

    bool TypeName(SymbolType type, std::wstring& name) override
    {
        return InTime() && m_session->AllTypes().Name(type, name);
    }

    bool TypeLength(SymbolType type, std::uint64_t& length) override
    {
        return InTime() && m_session->AllTypes().Length(type, length);
    }

    bool TypeBase(SymbolType type, DWORD& base) override { return InTime() && m_session->AllTypes().Base(type, base); }

    void Read(std::uint64_t address, void* bytes, std::size_t size) override
    {
        if (InTime() && address >= madeAddresses && address < madeAddressesEnd)
            m_session->ReadMade(address, bytes, size);
        else if (ReadReportedProcess(address, bytes, size) != size)
            throw ReportEnd();
    }

private:
    using Clock = std::chrono::steady_clock;

    /// False if there is nothing to ask either.
    bool InTime() const
    {
        if (m_session && Clock::now() >= m_end)
            throw ReportEnd();
        return m_session != nullptr;
    }

    Clock::time_point m_end;
    std::unique_ptr<Session> m_session;
};

}

ServiceSlot<SymbolService>& SymbolsSlot() noexcept { return SystemService<SymbolService, PosixSymbols>::Slot(); }

}

#include "utility/platform/posix/symbols/Unwinder.h"

#include "utility/platform/posix/faults/ReportedProcess.h"
#include "utility/platform/posix/symbols/Expression.h"

#include <cstdlib>
#include <cstring>
#include <memory>

namespace utility::platform::posix
{

namespace
{

constexpr std::size_t framePointer = 6;
constexpr std::uint64_t wordSize = sizeof(std::uint64_t);

/// RBX, RBP and R12 to R15 are the caller's again where a function returns.
bool IsKeptByCallees(std::size_t number)
{
    return number == 3 || number == framePointer || (number >= 12 && number <= 15);
}

std::optional<std::uint64_t> WordAt(std::uint64_t address)
{
    std::uint64_t word = 0;
    if (ReadReportedProcess(address, &word, sizeof(word)) != sizeof(word))
        return std::nullopt;
    return word;
}

/// What expressions of call frame information need: registers, and with them the frame's address.
class RegistersAlone final : public ExpressionFrame
{
public:
    explicit RegistersAlone(const Registers& registers) : m_registers(registers) {}

    std::optional<std::uint64_t> Register(std::uint64_t number) const override { return m_registers[number]; }
    std::optional<std::uint64_t> CallFrameAddress() const override { return m_address; }
    std::optional<std::uint64_t> FrameBase() const override { return std::nullopt; }
    std::optional<std::uint64_t> AtEntry(std::uint64_t) const override { return std::nullopt; }
    std::uint64_t Bias() const override { return 0; }
    std::uint64_t ProgramCounter() const override { return 0; }

    void SetAddress(std::uint64_t address) { m_address = address; }

private:
    const Registers& m_registers;
    std::optional<std::uint64_t> m_address;
};

/// Behind a call of what is no code its return address is on top of the stack.
bool ByWildCall(Frame& frame, const Program& program)
{
    const std::uint64_t stack = frame.registers[Registers::stackPointer].value_or(0);
    const std::optional<std::uint64_t> back = WordAt(stack);
    if (frame.isCall || !back || program.ModuleAt(frame.LookUp()) != nullptr || program.ModuleAt(*back) == nullptr)
        return false;
    frame.address = stack + wordSize;
    frame.caller = frame.registers;
    frame.caller->Set(Registers::programCounter, back);
    frame.caller->Set(Registers::stackPointer, frame.address);
    return true;
}

void ByFramePointer(Frame& frame)
{
    const std::uint64_t stack = frame.registers[Registers::stackPointer].value_or(0);
    const std::uint64_t base = frame.registers[framePointer].value_or(0);
    frame.address = stack;
    if (base < stack || base % wordSize != 0)
        return;
    const std::optional<std::uint64_t> back = WordAt(base + wordSize);
    const std::optional<std::uint64_t> outerBase = WordAt(base);
    if (!back || !outerBase)
        return;
    frame.address = base + 2 * wordSize;
    frame.caller = Registers();
    frame.caller->Set(Registers::programCounter, back);
    frame.caller->Set(Registers::stackPointer, frame.address);
    frame.caller->Set(framePointer, outerBase);
}

}

Frame Unwinder::First(const Registers& registers) const
{
    Frame frame;
    frame.registers = registers;
    FindCaller(frame);
    return frame;
}

std::optional<Frame> Unwinder::CallerOf(const Frame& frame) const
{
    if (!frame.caller || (*frame.caller)[Registers::programCounter].value_or(0) == 0)
        return std::nullopt;
    Frame caller;
    caller.registers = *frame.caller;
    caller.isCall = frame.isCallersCall;
    FindCaller(caller);
    // A handler of a signal can run on a stack of its own; any other caller is farther up, or the stack is damaged.
    if (caller.isCall && caller.address <= frame.address)
        return std::nullopt;
    return caller;
}

void Unwinder::FindCaller(Frame& frame) const
{
    if (Dwfl_Module* const module = m_program.ModuleAt(frame.LookUp()))
    {
        for (const auto information : {m_elfutils.dwfl_module_eh_cfi, m_elfutils.dwfl_module_dwarf_cfi})
        {
            Dwarf_Addr bias = 0;
            Dwarf_CFI* const found = information(module, &bias);
            if (found != nullptr && ByInformation(frame, found, bias))
                return;
        }
    }
    if (!ByWildCall(frame, m_program))
        ByFramePointer(frame);
}

bool Unwinder::ByInformation(Frame& frame, Dwarf_CFI* information, std::uint64_t bias) const
{
    Dwarf_Frame* rules = nullptr;
    if (information == nullptr || m_elfutils.dwarf_cfi_addrframe(information, frame.LookUp() - bias, &rules) != 0)
        return false;
    const std::unique_ptr<Dwarf_Frame, decltype(&std::free)> owner(rules, std::free);

    RegistersAlone environment(frame.registers);
    const Expression expression(m_elfutils, environment);
    Dwarf_Op* operations = nullptr;
    std::size_t count = 0;
    if (m_elfutils.dwarf_frame_cfa(rules, &operations, &count) != 0)
        return false;
    const std::optional<std::uint64_t> address = expression.Compute(operations, count);
    if (!address)
        return false;
    frame.address = *address;
    environment.SetAddress(*address);

    bool isSignal = false;
    const int returnAddress = m_elfutils.dwarf_frame_info(rules, nullptr, nullptr, &isSignal);
    Registers caller;
    caller.Set(Registers::stackPointer, *address);
    for (int number = 0; number < static_cast<int>(Registers::vectors); ++number)
    {
        Dwarf_Op simple[3];
        if (m_elfutils.dwarf_frame_register(rules, number, simple, &operations, &count) != 0)
            continue;
        const auto index = static_cast<std::size_t>(number);
        if (count == 0)
        {
            // Not by what elfutils says of a register without a rule: it takes RAX for RBX.
            if (IsKeptByCallees(index))
                caller.Set(index, frame.registers[index]);
            continue;
        }
        const std::optional<Location> location = expression.Locate(operations, count, wordSize);
        if (!location)
            continue;
        std::uint64_t value = 0;
        if (location->kind == Location::Kind::memory)
            caller.Set(index, WordAt(location->number));
        else if (location->kind == Location::Kind::reg)
            caller.Set(index, frame.registers[location->number]);
        else
        {
            std::memcpy(&value, location->bytes.data(), sizeof(value));
            caller.Set(index, value);
        }
    }
    if (returnAddress != static_cast<int>(Registers::programCounter))
        return false;
    frame.isCallersCall = !isSignal;
    if (caller[Registers::programCounter])
        frame.caller = caller;
    return true;
}

}

#include "utility/platform/Symbols.h"

#include "utility/platform/SystemService.h"

#include <cstring>
#include <dbghelp.h>

namespace utility::platform
{

namespace
{

/// For a module's base and a number in it. A base is a multiple of 64 KB and has 47 bits.
SymbolType TypeIn(std::uint64_t moduleBase, ULONG index) { return moduleBase >> 16 << 32 | index; }
std::uint64_t ModuleOf(SymbolType type) { return type >> 32 << 16; }

/// What is called here is imported with its first call: dbghelp.def lists it.
class WindowsSymbols final : public SymbolService
{
public:
    bool Begin() override
    {
        ::SymSetOptions(::SymGetOptions() | SYMOPT_UNDNAME | SYMOPT_DEFERRED_LOADS | SYMOPT_LOAD_LINES);
        return ::SymInitialize(m_process, nullptr, TRUE) != FALSE;
    }

    void End() override { ::SymCleanup(m_process); }

    void BeginWalk(const _CONTEXT& context) override
    {
        m_context = context;
        m_frame = {};
        m_frame.AddrPC = {context.Rip, 0, AddrModeFlat};
        m_frame.AddrStack = {context.Rsp, 0, AddrModeFlat};
        m_frame.AddrFrame = {context.Rbp, 0, AddrModeFlat};
    }

    bool NextFrame(StackFrame& frame) override
    {
        if (!::StackWalk64(IMAGE_FILE_MACHINE_AMD64, m_process, ::GetCurrentThread(), &m_frame, &m_context, nullptr,
                           &::SymFunctionTableAccess64, &::SymGetModuleBase64, nullptr))
            return false;
        frame = {m_frame.AddrPC.Offset, m_frame.AddrFrame.Offset, 0};
        return true;
    }

    bool FindSymbol(const StackFrame& frame, Symbol& symbol) override
    {
        constexpr ULONG longestName = 2000;
        struct
        {
            SYMBOL_INFO info;
            char moreOfName[longestName];
        } buffer = {};
        static_assert(sizeof(buffer.info) == 88);
        buffer.info.SizeOfStruct = sizeof(buffer.info);
        buffer.info.MaxNameLen = longestName;
        DWORD64 displacement = 0;
        if (!::SymFromAddr(m_process, frame.programCounter, &displacement, &buffer.info))
            return false;
        symbol = {buffer.info.Name, displacement};
        return true;
    }

    bool FindLine(const StackFrame& frame, SourceLine& line) override
    {
        IMAGEHLP_LINE64 found = {};
        static_assert(sizeof(found) == 40);
        found.SizeOfStruct = sizeof(found);
        DWORD displacement = 0;
        if (!::SymGetLineFromAddr64(m_process, frame.programCounter, &displacement, &found))
            return false;
        line = {found.FileName, found.LineNumber};
        return true;
    }

    bool EnterScope(const StackFrame& frame) override
    {
        IMAGEHLP_STACK_FRAME place = {};
        place.InstructionOffset = frame.programCounter;
        return ::SymSetContext(m_process, &place, nullptr) != FALSE;
    }

    void EachVariable(const std::function<void(const SymbolVariable&)>& visit) override
    {
        ::SymEnumSymbols(m_process, 0, nullptr, &Visit, const_cast<void*>(static_cast<const void*>(&visit)));
    }

    bool TypeTag(SymbolType type, DWORD& tag) override { return Ask(type, TI_GET_SYMTAG, &tag); }

    bool TypeOfPointee(SymbolType pointer, SymbolType& pointee) override
    {
        DWORD index = 0;
        if (!Ask(pointer, TI_GET_TYPEID, &index))
            return false;
        pointee = TypeIn(ModuleOf(pointer), index);
        return true;
    }

    bool TypeName(SymbolType type, std::wstring& name) override
    {
        wchar_t* text = nullptr;
        if (!Ask(type, TI_GET_SYMNAME, &text))
            return false;
        name = text;
        ::LocalFree(text);
        return true;
    }

    bool TypeLength(SymbolType type, std::uint64_t& length) override { return Ask(type, TI_GET_LENGTH, &length); }

    bool TypeBase(SymbolType type, DWORD& base) override { return Ask(type, TI_GET_BASETYPE, &base); }

    void Read(std::uint64_t address, void* bytes, std::size_t size) override
    {
        std::memcpy(bytes, reinterpret_cast<const void*>(address), size);
    }

private:
    static BOOL CALLBACK Visit(SYMBOL_INFO* symbol, ULONG /*size*/, void* context)
    {
        (*static_cast<const std::function<void(const SymbolVariable&)>*>(context))(
            {symbol->Name, symbol->Flags, symbol->Register, symbol->Address,
             TypeIn(symbol->ModBase, symbol->TypeIndex)});
        return TRUE;
    }

    bool Ask(SymbolType type, IMAGEHLP_SYMBOL_TYPE_INFO what, void* answer)
    {
        return ::SymGetTypeInfo(m_process, ModuleOf(type), static_cast<ULONG>(type), what, answer) != FALSE;
    }

    const HANDLE m_process = ::GetCurrentProcess();
    CONTEXT m_context = {};
    STACKFRAME64 m_frame = {};
};

}

ServiceSlot<SymbolService>& SymbolsSlot() noexcept { return SystemService<SymbolService, WindowsSymbols>::Slot(); }

}

#include "utility/platform/Symbols.h"

#include "tests/support/windows/ImportedCall.h"
#include "utility/platform/PresentContext.h"

#include <boost/algorithm/string/case_conv.hpp>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <dbghelp.h>
#include <set>
#include <string>

using support::ImportedCall;
using utility::platform::StackFrame;
using utility::platform::Symbol;
using utility::platform::Symbols;

extern "C" decltype(&::StackWalk64) __imp_StackWalk64;
extern "C" decltype(&::SymEnumSymbols) __imp_SymEnumSymbols;
extern "C" decltype(&::SymFromAddr) __imp_SymFromAddr;
extern "C" decltype(&::SymInitialize) __imp_SymInitialize;
extern "C" decltype(&::SymSetContext) __imp_SymSetContext;

namespace
{

/// The libraries that the system loads with this program.
std::set<std::string> ImportedLibraries()
{
    const auto* const begin = reinterpret_cast<const std::byte*>(::GetModuleHandleW(nullptr));
    const auto& dos = *reinterpret_cast<const IMAGE_DOS_HEADER*>(begin);
    const auto& headers = *reinterpret_cast<const IMAGE_NT_HEADERS64*>(begin + dos.e_lfanew);
    const DWORD imports = headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    std::set<std::string> libraries;
    for (auto* each = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(begin + imports); each->Name != 0; ++each)
        libraries.insert(
            boost::algorithm::to_lower_copy(std::string(reinterpret_cast<const char*>(begin + each->Name))));
    return libraries;
}

}

TEST(WindowsSymbolsTest, LibraryIsLoadedByTheFirstUse)
{
    const std::set<std::string> libraries = ImportedLibraries();
    EXPECT_TRUE(libraries.contains("kernel32.dll"));
    EXPECT_FALSE(libraries.contains("dbghelp.dll"));
}

// What the system is asked for: what it answers to that is in the reports of programs that crash.

TEST(WindowsSymbolsTest, OptionsAreAddedToThoseThatTheHostHasAndDeliberatelyStay)
{
    constexpr DWORD added = 0x16; // undecorated names, modules when they are needed, lines
    constexpr DWORD hosts = SYMOPT_NO_PROMPTS;
    ::SymSetOptions(hosts);
    ASSERT_TRUE(Symbols().Begin());
    EXPECT_EQ(::SymGetOptions(), added | hosts);
    Symbols().End();
    EXPECT_EQ(::SymGetOptions(), added | hosts);
}

TEST(WindowsSymbolsTest, ThoseOfThisProcessAreLookedForWhereverTheSystemDoesAndOfEachModule)
{
    const ImportedCall call(__imp_SymInitialize,
                            [](HANDLE process, const char* path, BOOL invades) -> BOOL
                            {
                                EXPECT_EQ(process, ::GetCurrentProcess());
                                EXPECT_EQ(path, nullptr);
                                EXPECT_TRUE(invades);
                                return FALSE;
                            });
    EXPECT_FALSE(Symbols().Begin());
}

TEST(WindowsSymbolsTest, WalkBeginsWithTheRegistersAndGoesOnFromFrameToFrame)
{
    const ImportedCall call(__imp_StackWalk64,
                            [](DWORD machine, HANDLE process, HANDLE thread, STACKFRAME64* frame, void* context,
                               PREAD_PROCESS_MEMORY_ROUTINE64 read, PFUNCTION_TABLE_ACCESS_ROUTINE64 table,
                               PGET_MODULE_BASE_ROUTINE64 base, PTRANSLATE_ADDRESS_ROUTINE64 translate) -> BOOL
                            {
                                EXPECT_EQ(machine, 0x8664U);
                                EXPECT_EQ(process, ::GetCurrentProcess());
                                EXPECT_EQ(thread, ::GetCurrentThread());
                                EXPECT_EQ(static_cast<CONTEXT*>(context)->Rbx, 4U);
                                EXPECT_EQ(read, nullptr);
                                EXPECT_NE(table, nullptr);
                                EXPECT_NE(base, nullptr);
                                EXPECT_EQ(translate, nullptr);
                                for (const ADDRESS64& each : {frame->AddrPC, frame->AddrStack, frame->AddrFrame})
                                    EXPECT_EQ(int{each.Mode}, 3);
                                EXPECT_EQ(frame->AddrStack.Offset, 2U);
                                EXPECT_EQ(frame->AddrReturn.Offset, 0U);
                                return frame->AddrPC.Offset++ < 12 && frame->AddrFrame.Offset == 3;
                            });
    _CONTEXT context = {};
    context.Rip = 10;
    context.Rsp = 2;
    context.Rbp = 3;
    context.Rbx = 4;
    Symbols().BeginWalk(context);
    StackFrame frame;
    for (const std::uint64_t counter : {11U, 12U})
    {
        ASSERT_TRUE(Symbols().NextFrame(frame));
        EXPECT_EQ(frame.programCounter, counter);
        EXPECT_EQ(frame.frameAddress, 3U);
    }
    EXPECT_FALSE(Symbols().NextFrame(frame));
}

TEST(WindowsSymbolsTest, NameOfAFunctionMayHaveTwoThousandCharacters)
{
    const ImportedCall call(__imp_SymFromAddr,
                            [](HANDLE, DWORD64 address, DWORD64* displacement, SYMBOL_INFO* symbol) -> BOOL
                            {
                                EXPECT_EQ(symbol->SizeOfStruct, 88U);
                                EXPECT_EQ(symbol->MaxNameLen, 2000U);
                                std::memset(symbol->Name, 'x', symbol->MaxNameLen);
                                symbol->Name[symbol->MaxNameLen] = '\0';
                                *displacement = 7;
                                return address == 12;
                            });
    Symbol symbol;
    ASSERT_TRUE(Symbols().FindSymbol({12, 0, 0}, symbol));
    EXPECT_EQ(symbol.name, std::string(2000, 'x'));
    EXPECT_EQ(symbol.displacement, 7U);
    EXPECT_FALSE(Symbols().FindSymbol({13, 0, 0}, symbol));
}

TEST(WindowsSymbolsTest, VariablesAreThoseOfTheInstruction)
{
    const ImportedCall enter(__imp_SymSetContext,
                             [](HANDLE, IMAGEHLP_STACK_FRAME* frame, void* context) -> BOOL
                             {
                                 IMAGEHLP_STACK_FRAME expected = {};
                                 expected.InstructionOffset = 12;
                                 EXPECT_EQ(std::memcmp(frame, &expected, sizeof(expected)), 0);
                                 EXPECT_EQ(context, nullptr);
                                 return TRUE;
                             });
    const ImportedCall all(
        __imp_SymEnumSymbols,
        [](HANDLE, DWORD64 module, const char* mask, PSYM_ENUMERATESYMBOLS_CALLBACK visit, void* context) -> BOOL
        {
            EXPECT_EQ(module, 0U);
            EXPECT_EQ(mask, nullptr);
            SYMBOL_INFO symbol = {};
            symbol.Name[0] = 'v';
            symbol.Flags = 0x50;
            symbol.Register = 335;
            symbol.Address = 0x18;
            EXPECT_EQ(visit(&symbol, 4, context), 1) << "it goes on";
            return TRUE;
        });
    ASSERT_TRUE(Symbols().EnterScope({12, 5, 0}));
    int variables = 0;
    Symbols().EachVariable(
        [&](const utility::platform::SymbolVariable& each)
        {
            ++variables;
            EXPECT_EQ(each.name, "v");
            EXPECT_EQ(each.flags, 0x50U);
            EXPECT_EQ(each.registerNumber, 335U);
            EXPECT_EQ(each.address, 0x18U);
        });
    EXPECT_EQ(variables, 1);
}

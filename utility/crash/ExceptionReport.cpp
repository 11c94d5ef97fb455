#include "utility/crash/internal/ExceptionReport.h"

#include "utility/crash/internal/UtcTime.h"
#include "utility/framework/Exception.h"
#include "utility/platform/CrashedProcess.h"
#include "utility/platform/Error.h"
#include "utility/platform/Paths.h"
#include "utility/platform/PresentContext.h"
#include "utility/platform/Symbols.h"
#include "utility/platform/Text.h"
#include "utility/platform/VersionInfo.h"
#include "utility/system/ExeFile.h"
#include "utility/text/XMLEncode.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <iomanip>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

// The report is text, written by hand. Its form is one of its own that programs read: which elements end with a line
// and which do not, and how each number is written, stays as it is.
//
// All that is known of the process comes from two services, and all of its memory that is looked at from one operation
// of theirs, Read: so the process may be another one. Where a report cannot go on it ends, without a word and with what
// stands in the file by then. So all of it goes to the file ahead of what may be a second fault, or have no end.

namespace utility::detail
{

namespace
{

using platform::CrashedProcess;
using platform::Symbols;
using platform::SymbolType;
using platform::SymbolVariable;

// Kinds of types and of simple types, as debugging information of Windows numbers them.
constexpr DWORD classTag = 11;
constexpr DWORD enumerationTag = 12;
constexpr DWORD functionTag = 13;
constexpr DWORD pointerTag = 14;
constexpr DWORD baseTypeTag = 16;

enum BaseType : DWORD
{
    charType = 2,
    wideCharType = 3,
    intType = 6,
    unsignedType = 7,
    floatType = 8,
    boolType = 10,
    longType = 13,
    unsignedLongType = 14,
    basicStringType = 30,
    resultType = 31,
};

// How numbers are written. A stream keeps its base, so that each number has to say its own.

struct Decimal
{
    std::uint64_t number;
};

struct HexPlain
{
    std::uint64_t number;
};

struct Hex16
{
    std::uint64_t number;
};

/// Sixteen upper-case digits.
struct Pointer
{
    std::uint64_t address;
};

std::wostream& operator<<(std::wostream& stream, Decimal form) { return stream << std::dec << form.number; }

std::wostream& operator<<(std::wostream& stream, HexPlain form) { return stream << std::hex << form.number; }

/// Padded with the stream's character for that.
std::wostream& operator<<(std::wostream& stream, Hex16 form)
{
    return stream << std::hex << std::setw(16) << form.number;
}

std::wostream& operator<<(std::wostream& stream, Pointer form)
{
    wchar_t digits[16];
    for (std::size_t at = std::size(digits); at-- > 0; form.address >>= 4)
        digits[at] = L"0123456789ABCDEF"[form.address & 0xF];
    return stream.write(digits, std::size(digits));
}

std::wstring Encoded(std::wstring text) { return XMLEncode(std::move(text), false); }

std::wstring EncodedNarrow(std::string_view text) { return Encoded(platform::WideFromCodePage(CP_ACP, text)); }

std::wstring Timestamp(std::chrono::sys_seconds moment)
{
    const UtcTime utc(moment);
    wchar_t text[128];
    const int length = std::swprintf(text, std::size(text), L"%04d%02u%02u-%02d%02d%02d", utc.year, utc.month, utc.day,
                                     utc.Hours(), utc.Minutes(), utc.Seconds());
    return {text, static_cast<std::size_t>(length)};
}

/// Where the last component of a path begins. A separator at the very end belongs to it.
std::size_t FileNameAt(const std::wstring& path)
{
    const std::size_t last = std::max<std::size_t>(path.size(), 1) - 1;
    return path.substr(0, last).rfind(static_cast<wchar_t>(boost::filesystem::path::preferred_separator)) + 1;
}

/// An extension has no blank in it: "app.for Windows" has none.
void RemoveExtension(std::wstring& path)
{
    const std::size_t dot = path.rfind(L'.');
    if (dot != std::wstring::npos && dot >= FileNameAt(path) && path.find(L' ', dot) == std::wstring::npos)
        path.resize(dot);
}

std::wstring GetExceptionString(DWORD code)
{
    static constexpr struct
    {
        DWORD code;
        const wchar_t* text;
    } known[] = {
        {0x80000001, L"GUARD_PAGE"},
        {0x80000002, L"DATATYPE_MISALIGNMENT"},
        {0x80000003, L"BREAKPOINT"},
        {0x80000004, L"SINGLE_STEP"},
        {0xC0000005, L"ACCESS_VIOLATION"},
        {0xC0000006, L"IN_PAGE_ERROR"},
        {0xC0000008, L"INVALID_HANDLE"},
        {0xC000001D, L"ILLEGAL_INSTRUCTION"},
        {0xC0000025, L"NONCONTINUABLE_EXCEPTION"},
        {0xC0000026, L"INVALID_DISPOSITION"},
        {0xC000008C, L"ARRAY_BOUNDS_EXCEEDED"},
        {0xC000008D, L"FLT_DENORMAL_OPERAND"},
        {0xC000008E, L"FLT_DIVIDE_BY_ZERO"},
        {0xC000008F, L"FLT_INEXACT_RESULT"},
        {0xC0000090, L"FLT_INVALID_OPERATION"},
        {0xC0000091, L"FLT_OVERFLOW"},
        {0xC0000092, L"FLT_STACK_CHECK"},
        {0xC0000093, L"FLT_UNDERFLOW"},
        {0xC0000094, L"INT_DIVIDE_BY_ZERO"},
        {0xC0000095, L"INT_OVERFLOW"},
        {0xC0000096, L"PRIV_INSTRUCTION"},
        {0xC00000FD, L"STACK_OVERFLOW"},
    };
    for (const auto& each : known)
    {
        if (each.code == code)
            return each.text;
    }
    // Deliberately all of the buffer: what the system says is followed by zero characters, or they are all there is.
    std::wstring text(128, L'\0');
    while (!CrashedProcess().DescribeException(code, text) && platform::LastError() == ERROR_INSUFFICIENT_BUFFER)
        text.resize(2 * text.size());
    return text;
}

bool GetFixedFileInfo(const wchar_t* file, VS_FIXEDFILEINFO& info)
{
    const DWORD size = platform::VersionInfo().GetFileVersionInfoSizeW(file);
    if (size == 0)
        return false;
    std::vector<std::byte> block(size);
    void* found = nullptr;
    UINT length = 0;
    if (!platform::VersionInfo().GetFileVersionInfoW(file, size, block.data()) ||
        !platform::VersionInfo().VerQueryValueW(block.data(), L"\\", found, length) || length < sizeof(info))
        return false;
    std::memcpy(&info, found, sizeof(info));
    return true;
}

DWORD HighWord(DWORD number) { return number >> 16; }
DWORD LowWord(DWORD number) { return number & 0xFFFF; }

HINSTANCE GetModuleFromAddress(const void* address) { return CrashedProcess().ModuleAt(address); }

template <class Value>
Value ValueAt(std::uint64_t address)
{
    Value value;
    Symbols().Read(address, &value, sizeof(value));
    return value;
}

/// The text from an address on, up to a null. Nothing is read of a page unless it has some of the text.
template <class Character>
std::basic_string<Character> TextAt(std::uint64_t address)
{
    constexpr std::uint64_t pageSize = 4096;
    std::basic_string<Character> text;
    for (;;)
    {
        const std::uint64_t left = pageSize - address % pageSize;
        // A character that is in two pages is read by itself.
        std::basic_string<Character> more(std::max<std::uint64_t>(left / sizeof(Character), 1), Character());
        Symbols().Read(address, more.data(), more.size() * sizeof(Character));
        address += more.size() * sizeof(Character);
        const std::size_t end = more.find(Character());
        text.append(more, 0, end);
        if (end != std::basic_string<Character>::npos)
            return text;
    }
}

void WriteWord(std::uint64_t address, std::wostream& stream)
{
    stream << L"<Value>0x" << Hex16{ValueAt<std::uint32_t>(address)} << L"</Value>";
}

void WriteBaseType(DWORD type, std::uint64_t address, std::wostream& stream)
{
    const auto write = [&stream](const auto& value) { stream << L"<Value>" << std::dec << value << L"</Value>\n"; };
    switch (type)
    {
    case charType: // Deliberately a text, for which a single character is taken too.
        write(EncodedNarrow(TextAt<char>(address)));
        break;
    case wideCharType: // Deliberately as well.
        write(Encoded(TextAt<wchar_t>(address)));
        break;
    case intType:
    case longType:
    case resultType:
        write(ValueAt<std::int32_t>(address));
        break;
    case unsignedType:
    case unsignedLongType:
        write(ValueAt<std::uint32_t>(address));
        break;
    case floatType: // Deliberately four bytes of a double too.
        write(ValueAt<float>(address));
        break;
    case boolType:
        write(ValueAt<std::uint8_t>(address) != 0 ? 1 : 0);
        break;
    case basicStringType:
        write(Encoded(TextAt<wchar_t>(ValueAt<std::uint64_t>(address))));
        break;
    default:
        break;
    }
}

/// What the variables of a frame are written with.
struct EnumSymbolsContext
{
    const platform::StackFrame* frame;
    std::wostream* stream;
    DWORD mask; ///< of the flags: a variable that has none of these is left out
};

void EnumSymbolsParameters(const SymbolVariable& variable, const EnumSymbolsContext& context)
{
    if ((variable.flags & context.mask) == 0)
        return;
    std::wostream& stream = *context.stream;
    stream << L"<Variable>\n<Symbol>" << EncodedNarrow(variable.name) << L"</Symbol>\n";
    const bool isInRegister = (variable.flags & SymbolVariable::isRegister) != 0;
    std::uint64_t address = variable.address;
    if ((variable.flags & (SymbolVariable::isRegisterRelative | SymbolVariable::isFrameRelative)) != 0)
        address += context.frame->frameAddress;

    stream.flush();
    SymbolType type = variable.type;
    std::uint32_t pointerDepth = 0;
    DWORD tag = 0;
    bool isKnown = Symbols().TypeTag(type, tag);
    while (isKnown && tag == pointerTag)
    {
        ++pointerDepth;
        // Deliberately of the variable's own type, each time: a pointer to a pointer keeps the report from ending.
        Symbols().TypeOfPointee(variable.type, type);
        isKnown = Symbols().TypeTag(type, tag);
    }

    stream << L"<Flags>0x" << HexPlain{variable.flags} << L"</Flags>";
    if (isInRegister)
        stream << L"<Register>0x" << HexPlain{variable.registerNumber} << L"</Register>";
    stream << L"<Tag>" << Decimal{tag} << L"</Tag>";

    stream.flush();
    std::wstring name;
    std::uint64_t length = 0;
    DWORD base = 0;
    switch (isKnown ? tag : 0)
    {
    case classTag:
        if (!Symbols().TypeName(type, name))
            break;
        stream << L"<Type>" << Encoded(std::move(name)) << L"</Type>";
        if (!isInRegister)
            WriteWord(address, stream);
        break;
    case enumerationTag:
        stream << L"<Value>" << std::dec << ValueAt<std::int32_t>(address) << L"</Value>\n";
        break;
    case functionTag:
        WriteWord(address, stream);
        stream << L'\n';
        break;
    case baseTypeTag:
        if (!Symbols().TypeLength(type, length))
            break;
        if (pointerDepth > 0)
        {
            WriteWord(address, stream);
            stream << L'\n';
        }
        else if (Symbols().TypeBase(type, base))
        {
            stream << L"<BaseType>" << Decimal{base} << L"</BaseType>";
            WriteBaseType(base, address, stream);
        }
        break;
    default:
        break;
    }
    stream << L"</Variable>\n";
}

void WriteStackFrame(const platform::StackFrame& frame, std::wostream& stream)
{
    platform::Symbol symbol;
    if (!Symbols().FindSymbol(frame, symbol))
        return;
    // Deliberately kept by the stream from here on.
    stream << std::setfill(L'0');
    stream << L"<StackEntry>\n<Address>0x" << Hex16{frame.programCounter} << L"</Address>\n<Frame>0x"
           << Hex16{frame.frameAddress} << L"</Frame>\n<Symbol>" << EncodedNarrow(symbol.name)
           << L"</Symbol>\n<Displacement>0x" << HexPlain{symbol.displacement} << L"</Displacement>\n";
    platform::SourceLine source;
    if (Symbols().FindLine(frame, source))
    {
        stream << L"<SourceLocation>\n<Path>" << EncodedNarrow(source.path) << L"</Path>\n<Line>"
               << Decimal{source.line} << L"</Line>\n</SourceLocation>\n";
    }
    if (Symbols().EnterScope(frame))
    {
        EnumSymbolsContext context{&frame, &stream, SymbolVariable::isParameter};
        const auto write = [&context](const SymbolVariable& each) { EnumSymbolsParameters(each, context); };
        stream << L"<Parameters>\n";
        Symbols().EachVariable(write);
        stream << L"</Parameters>\n";
        context.mask = SymbolVariable::isLocal | SymbolVariable::isConstant;
        stream << L"<LocalVariables>\n";
        Symbols().EachVariable(write);
        stream << L"</LocalVariables>\n";
    }
    stream << L"</StackEntry>\n";
}

/// Without a context it is the stack of the caller.
void WriteStackTrace(const _CONTEXT* context, std::wostream& stream)
{
    _CONTEXT present = {};
    int toSkip = 0;
    if (context == nullptr)
    {
        platform::CapturePresentContext(present);
        context = &present;
        toSkip = 1;
    }
    stream << L"<CallStack>" << std::endl;
    Symbols().BeginWalk(*context);
    for (platform::StackFrame frame; Symbols().NextFrame(frame);)
    {
        if (toSkip > 0)
            --toSkip;
        else if (frame.programCounter != 0)
            WriteStackFrame(frame, stream);
    }
    stream << L"</CallStack>" << std::endl;
}

void WriteSystemInformation(std::wostream& stream)
{
    stream << L"<SystemInformation>\n";
    platform::SystemVersion version;
    std::int32_t result = 0;
    // Deliberately only what a query that failed has told: on a sound system the version is left out.
    if (CrashedProcess().QueryVersion(version, result) && result != 0)
    {
        stream << L"<OSVersion>\n<Major>" << Decimal{version.major} << L"</Major>\n<Minor>" << Decimal{version.minor}
               << L"</Minor>\n<Build>" << Decimal{version.build} << L"</Build>\n<ServicePackMajor>"
               << Decimal{version.servicePackMajor} << L"</ServicePackMajor>\n<ServicePackMinor>"
               << Decimal{version.servicePackMinor} << L"</ServicePackMinor>\n<ProductType>"
               << Decimal{version.productType} << L"</ProductType>\n</OSVersion>\n";
    }
    stream << L"</SystemInformation>\n";
}

/// When the linker made a module, as its file tells.
DWORD LinkTime(const std::wstring& module)
{
    constexpr std::uint64_t timeAt = 4;
    const CPEExeFile file(module);
    // Deliberately a read behind a null pointer, where a portable executable would have its header: a second fault,
    // which ends the report.
    return file.IsValid() ? file.GetTimeDateStamp() : ValueAt<DWORD>(timeAt);
}

void WriteProcessInformation(std::wostream& stream)
{
    stream << L"<ProcessInformation>\n";
    // Deliberately as it is, here and below: other places encode a path, and its "&" then.
    const std::wstring program = CrashedProcess().ProgramPath();
    if (!program.empty())
        stream << L"<Path>" << program << L"</Path>\n";
    stream << L"<Modules>\n";
    for (const platform::LoadedModule& module : CrashedProcess().Modules())
    {
        stream << L"<ModuleEntry>\n<Path>" << module.path << L"</Path>\n<BaseAddress>" << Pointer{module.base}
               << L"</BaseAddress>\n<Size>" << HexPlain{module.size} << L"</Size>\n<VersionInfo>\n<FileVersion>\n";
        VS_FIXEDFILEINFO version = {};
        if (GetFixedFileInfo(module.path.c_str(), version))
        {
            stream << L"<Major>" << Decimal{HighWord(version.dwFileVersionMS)} << L"</Major>\n<Minor>"
                   << Decimal{LowWord(version.dwFileVersionMS)} << L"</Minor>\n<Release>"
                   << Decimal{HighWord(version.dwFileVersionLS)} << L"</Release>\n<Build>"
                   << Decimal{LowWord(version.dwFileVersionLS)} << L"</Build>\n";
        }
        stream.flush();
        const std::chrono::seconds built(module.time ? *module.time : LinkTime(module.path));
        stream << L"<BuildTime>" << Timestamp(std::chrono::sys_seconds(built))
               << L"</BuildTime>\n</FileVersion>\n</VersionInfo>\n</ModuleEntry>\n";
    }
    stream << L"</Modules>\n</ProcessInformation>\n";
}

void WriteDocument(const _EXCEPTION_POINTERS& fault, const std::wstring& program, std::wostream& stream)
{
    const _EXCEPTION_RECORD& record = *fault.ExceptionRecord;
    const std::wstring description = Encoded(GetExceptionString(record.ExceptionCode));
    // Deliberately the program: the module of the fault is looked up later, and not told.
    const std::wstring module = Encoded(program);
    stream << L"<ExceptionReport>\n<ExceptionCode>" << HexPlain{record.ExceptionCode}
           << L"</ExceptionCode>\n<ExceptionDescription>" << description << L"</ExceptionDescription>\n<FaultAddress>"
           << Pointer{reinterpret_cast<std::uintptr_t>(record.ExceptionAddress)} << L"</FaultAddress>\n";
    static_cast<void>(GetModuleFromAddress(record.ExceptionAddress));
    stream << L"<FaultingModule>" << module << L"</FaultingModule>\n";
    WriteSystemInformation(stream);
    WriteProcessInformation(stream);
    WriteStackTrace(fault.ContextRecord, stream);
    stream << L"</ExceptionReport>\n";
}

/// Where reports of a program go, in the folder for what programs keep of a user: by its name and the first half of
/// its version, so that those of different ones are never mixed.
boost::filesystem::path FolderFor(const std::wstring& program, const VS_FIXEDFILEINFO& version)
{
    const std::wstring numbers =
        std::to_wstring(HighWord(version.dwFileVersionMS)) + L'.' + std::to_wstring(LowWord(version.dwFileVersionMS));
    return boost::filesystem::path("Selvane Production Software") / "Exception Reports" /
           platform::PathFromWide(program.substr(FileNameAt(program))) / platform::PathFromWide(numbers);
}

/// While the symbols are there. `file` becomes the one that was opened, and `keepsSymbols` true if they are to stay.
void WriteReportFile(const _EXCEPTION_POINTERS& fault,
                     const std::function<void(const boost::filesystem::path&)>& opened, boost::filesystem::path& file,
                     bool& keepsSymbols)
{
    const boost::filesystem::path dataFolder = CrashedProcess().LocalDataFolder();
    if (dataFolder.empty())
        return;
    std::wstring program = CrashedProcess().ProgramPath();
    keepsSymbols = program.empty(); // deliberately in this case alone
    if (keepsSymbols)
        return;
    VS_FIXEDFILEINFO version = {};
    GetFixedFileInfo(program.c_str(), version);
    RemoveExtension(program);
    const boost::filesystem::path folder = dataFolder / FolderFor(program, version);
    if (!CrashedProcess().MakeFolders(folder))
        return;
    const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const boost::filesystem::path name = folder / platform::PathFromWide(Timestamp(now) + L".xml");
    const std::unique_ptr<std::wostream> stream = CrashedProcess().OpenReport(name);
    if (stream == nullptr)
        return;
    file = name;
    if (opened)
        opened(file);
    WriteDocument(fault, program, *stream);
}

}

boost::filesystem::path WriteExceptionReport(const _EXCEPTION_POINTERS& fault,
                                             const std::function<void(const boost::filesystem::path&)>& opened) noexcept
{
    boost::filesystem::path file;
    bool keepsSymbols = true;
    try
    {
        keepsSymbols = !Symbols().Begin();
        if (!keepsSymbols)
            WriteReportFile(fault, opened, file, keepsSymbols);
    }
    catch (CException* failure) // of a module's file
    {
        failure->Delete();
    }
    catch (...) // the report ends where it stands
    {
    }
    if (!keepsSymbols)
        Symbols().End();
    return file;
}

}

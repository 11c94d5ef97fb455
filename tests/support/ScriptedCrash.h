#pragma once

#include "tests/support/ForwardingVersionInfo.h"
#include "tests/support/Substitute.h"
#include "utility/platform/CrashedProcess.h"
#include "utility/platform/Error.h"
#include "utility/platform/Symbols.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>
#include <iterator>
#include <locale>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// A crash that a test has made up: a stack with its variables, the memory they are in, the modules. Each stands in for
// the system's service as long as it is there.

namespace support
{

struct ScriptedFrame
{
    utility::platform::StackFrame frame;
    std::optional<utility::platform::Symbol> symbol;
    std::optional<utility::platform::SourceLine> line;
    std::optional<std::vector<utility::platform::SymbolVariable>> variables;
};

struct ScriptedType
{
    std::optional<DWORD> tag;
    std::optional<utility::platform::SymbolType> pointee;
    std::optional<std::wstring> name;
    std::optional<std::uint64_t> length;
    std::optional<DWORD> base;
};

class ScriptedSymbols final : public utility::platform::SymbolService
{
public:
    bool Begin() override
    {
        ++begins;
        return canBegin;
    }

    void End() override { ++ends; }

    void BeginWalk(const _CONTEXT& context) override
    {
        walked = context.Rip;
        m_next = frames.begin();
    }

    bool NextFrame(utility::platform::StackFrame& frame) override
    {
        if (m_next == frames.end())
            return false;
        frame = m_next++->frame;
        return true;
    }

    bool FindSymbol(const utility::platform::StackFrame& frame, utility::platform::Symbol& symbol) override
    {
        return Give(Of(frame).symbol, symbol);
    }

    bool FindLine(const utility::platform::StackFrame& frame, utility::platform::SourceLine& line) override
    {
        return Give(Of(frame).line, line);
    }

    bool EnterScope(const utility::platform::StackFrame& frame) override { return Give(Of(frame).variables, m_scope); }

    void EachVariable(const std::function<void(const utility::platform::SymbolVariable&)>& visit) override
    {
        for (const utility::platform::SymbolVariable& each : m_scope)
            visit(each);
    }

    bool TypeTag(utility::platform::SymbolType type, DWORD& tag) override
    {
        if (++questions > mostQuestions)
            throw utility::platform::ReportEnd();
        return Give(types[type].tag, tag);
    }

    bool TypeOfPointee(utility::platform::SymbolType pointer, utility::platform::SymbolType& pointee) override
    {
        return Give(types[pointer].pointee, pointee);
    }

    bool TypeName(utility::platform::SymbolType type, std::wstring& name) override
    {
        return Give(types[type].name, name);
    }

    bool TypeLength(utility::platform::SymbolType type, std::uint64_t& length) override
    {
        return Give(types[type].length, length);
    }

    bool TypeBase(utility::platform::SymbolType type, DWORD& base) override { return Give(types[type].base, base); }

    void Read(std::uint64_t address, void* bytes, std::size_t size) override
    {
        auto behind = memory.upper_bound(address);
        if (behind == memory.begin() || size > std::prev(behind)->second.size() ||
            address - std::prev(behind)->first > std::prev(behind)->second.size() - size)
            throw utility::platform::ReportEnd();
        --behind;
        std::memcpy(bytes, behind->second.data() + (address - behind->first), size);
    }

    bool canBegin = true;
    std::vector<ScriptedFrame> frames;
    std::map<utility::platform::SymbolType, ScriptedType> types;
    std::map<std::uint64_t, std::string> memory; ///< by the addresses of its pieces
    int mostQuestions = 1000;                    ///< for the tag of a type: one more ends the report

    int begins = 0;
    int ends = 0;
    int questions = 0;
    std::uint64_t walked = 0;

private:
    template <class T>
    static bool Give(const std::optional<T>& known, T& out)
    {
        if (known)
            out = *known;
        return known.has_value();
    }

    const ScriptedFrame& Of(const utility::platform::StackFrame& frame) const
    {
        return *std::ranges::find_if(frames,
                                     [&frame](const ScriptedFrame& each)
                                     {
                                         return each.frame.programCounter == frame.programCounter &&
                                                each.frame.frameAddress == frame.frameAddress &&
                                                each.frame.inlined == frame.inlined;
                                     });
    }

    std::vector<ScriptedFrame>::const_iterator m_next;
    std::vector<utility::platform::SymbolVariable> m_scope;
    Substitute<utility::platform::SymbolService> m_substitute{utility::platform::SymbolsSlot(), *this};
};

class ScriptedProcess final : public utility::platform::CrashedProcessService
{
public:
    std::wstring ProgramPath() override { return ++pathQuestions > lastPathAnswered ? std::wstring() : programPath; }

    std::vector<utility::platform::LoadedModule> Modules() override { return modules; }

    HINSTANCE ModuleAt(const void* address) override
    {
        lookedUp.push_back(address);
        return nullptr;
    }

    bool QueryVersion(utility::platform::SystemVersion& version, std::int32_t& result) override
    {
        version = systemVersion;
        result = queryResult;
        return canQuery;
    }

    boost::filesystem::path LocalDataFolder() override { return dataFolder; }

    bool MakeFolders(const boost::filesystem::path& folder) override
    {
        foldersMade.push_back(folder);
        return canMakeFolders;
    }

    std::unique_ptr<std::wostream> OpenReport(const boost::filesystem::path& file) override
    {
        opened.push_back(file);
        if (!canOpen)
            return nullptr;
        m_text.str({});
        auto stream = std::make_unique<std::wostream>(&m_text);
        stream->imbue(locale);
        return stream;
    }

    std::unique_ptr<std::ostream> MakeLog(const boost::filesystem::path& /*file*/) override { return nullptr; }

    bool DescribeException(DWORD /*code*/, std::wstring& text) override
    {
        ++descriptionsAsked;
        if (description.empty() || description.size() > text.size())
        {
            utility::platform::SetLastError(description.empty() ? failedDescription : ERROR_INSUFFICIENT_BUFFER);
            return false;
        }
        description.copy(text.data(), text.size());
        return true;
    }

    std::wstring Report() const { return m_text.str(); }

    /// What of it was in the file at the latest flush.
    const std::wstring& Flushed() const { return m_text.flushed; }
    /// How much was there at each.
    const std::vector<std::size_t>& Flushes() const { return m_text.flushes; }

    std::wstring programPath;
    int lastPathAnswered = 1000; ///< later questions for the program's path fail
    std::vector<utility::platform::LoadedModule> modules;
    bool canQuery = true;
    utility::platform::SystemVersion systemVersion;
    std::int32_t queryResult = 0;
    boost::filesystem::path dataFolder = "data";
    bool canMakeFolders = true;
    bool canOpen = true;
    std::locale locale = std::locale::classic();
    std::wstring description; ///< of any code; fails if empty
    DWORD failedDescription = ERROR_NOT_SUPPORTED;

    int pathQuestions = 0;
    int descriptionsAsked = 0;
    std::vector<const void*> lookedUp;
    std::vector<boost::filesystem::path> foldersMade;
    std::vector<boost::filesystem::path> opened;

private:
    struct Text final : std::wstringbuf
    {
        int sync() override
        {
            flushed = str();
            flushes.push_back(flushed.size());
            return 0;
        }

        std::wstring flushed;
        std::vector<std::size_t> flushes;
    };

    Text m_text;
    Substitute<utility::platform::CrashedProcessService> m_substitute{utility::platform::CrashedProcessSlot(), *this};
};

/// Fixed version records by the paths of files.
class ScriptedVersions final : public ForwardingVersionInfo
{
public:
    DWORD GetFileVersionInfoSizeW(const wchar_t* path) override
    {
        return files.contains(path) ? static_cast<DWORD>(sizeof(VS_FIXEDFILEINFO)) : 0;
    }

    bool GetFileVersionInfoW(const wchar_t* path, DWORD /*size*/, void* data) override
    {
        std::memcpy(data, &files.at(path), sizeof(VS_FIXEDFILEINFO));
        return canRead;
    }

    bool VerQueryValueW(const void* data, const wchar_t* subBlock, void*& value, UINT& length) override
    {
        value = const_cast<void*>(data);
        length = answeredLength;
        return std::wstring(subBlock) == L"\\";
    }

    void Set(const std::wstring& path, std::uint16_t major, std::uint16_t minor, std::uint16_t release,
             std::uint16_t build)
    {
        VS_FIXEDFILEINFO info = {};
        info.dwFileVersionMS = static_cast<DWORD>(major << 16 | minor);
        info.dwFileVersionLS = static_cast<DWORD>(release << 16 | build);
        files[path] = info;
    }

    std::map<std::wstring, VS_FIXEDFILEINFO> files;
    bool canRead = true;
    UINT answeredLength = sizeof(VS_FIXEDFILEINFO);
};

}

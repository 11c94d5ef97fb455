#include "utility/platform/posix/symbols/Program.h"

#include "utility/platform/posix/faults/ReportedProcess.h"
#include "utility/platform/posix/modules/PlaceOf.h"
#include "utility/platform/posix/symbols/Dies.h"

#include <algorithm>
#include <cstdlib>
#include <cxxabi.h>
#include <dwarf.h>
#include <link.h>
#include <memory>

namespace utility::platform::posix
{

namespace
{

int FindElf(Dwfl_Module* module, void** data, const char* name, Dwarf_Addr base, char** file, Elf** elf)
{
    return Elfutils::Loaded()->dwfl_linux_proc_find_elf(module, data, ReadMappedPath(name).c_str(), base, file, elf);
}

/// Debugging information that is on this machine: a report does not ask servers.
int FindDebugInfo(Dwfl_Module* module, void** data, const char* name, Dwarf_Addr base, const char* file,
                  const char* link, GElf_Word checksum, char** found)
{
    const Elfutils& elfutils = *Elfutils::Loaded();
    const int byId = elfutils.dwfl_build_id_find_debuginfo(module, data, name, base, file, link, checksum, found);
    const char* const servers = std::getenv("DEBUGINFOD_URLS");
    if (byId >= 0 || (servers != nullptr && *servers != '\0'))
        return byId;
    return elfutils.dwfl_standard_find_debuginfo(module, data, name, base, file, link, checksum, found);
}

/// What to report a module takes, where there is no list of files mapped: the linker's own list, of this process alone.
struct LinkerList
{
    const Elfutils& elfutils;
    Dwfl* session;
};

int ReportModule(dl_phdr_info* module, std::size_t, void* data)
{
    const auto& list = *static_cast<LinkerList*>(data);
    std::string path = module->dlpi_name;
    if (path.empty() && program_invocation_name != nullptr)
        path = program_invocation_name;
    list.elfutils.dwfl_report_elf(list.session, path.c_str(), path.c_str(), -1, module->dlpi_addr, true);
    return 0;
}

}

Program::Program(const Elfutils& elfutils)
    : m_elfutils(elfutils),
      m_callbacks{FindElf, FindDebugInfo, nullptr, nullptr},
      m_session(elfutils.dwfl_begin(&m_callbacks)),
      m_units(elfutils)
{
    if (m_session != nullptr)
        Report();
}

Program::~Program()
{
    if (m_session != nullptr)
        m_elfutils.dwfl_end(m_session);
}

void Program::Report() const
{
    m_elfutils.dwfl_report_begin(m_session);
    if (m_elfutils.dwfl_linux_proc_report(m_session, ReportedThreadInProc()) != 0 && IsReportedHere())
    {
        LinkerList list = {m_elfutils, m_session};
        ::dl_iterate_phdr(ReportModule, &list);
    }
    m_elfutils.dwfl_report_end(m_session, nullptr, nullptr);
}

Dwfl_Module* Program::ModuleAt(std::uint64_t address) const
{
    return m_session != nullptr ? m_elfutils.dwfl_addrmodule(m_session, address) : nullptr;
}

const Code& Program::CodeAt(std::uint64_t address)
{
    const auto [found, isNew] = m_codes.try_emplace(address);
    Code& code = found->second;
    if (isNew)
    {
        code.address = address;
        code.module = ModuleAt(address);
        if (code.module != nullptr && FindUnit(code))
            code.functions = m_units.FunctionsAt(code.unit, code.FileAddress());
    }
    return code;
}

bool Program::FindUnit(Code& code)
{
    if (const Dwarf_Die* const unit = m_elfutils.dwfl_module_addrdie(code.module, code.address, &code.bias))
        code.unit = *unit;
    else
    {
        const std::vector<UnitRange>& ranges = RangesOf(code.module, code.bias);
        const auto range =
            std::find_if(ranges.begin(), ranges.end(),
                         [&code](const UnitRange& candidate)
                         { return code.FileAddress() >= candidate.begin && code.FileAddress() < candidate.end; });
        if (range == ranges.end())
            return false;
        code.unit = range->unit;
    }
    // The unit may stand for one in a file of its own.
    std::uint8_t kind = 0;
    Dwarf_Die whole;
    if (m_elfutils.dwarf_cu_info(code.unit.cu, nullptr, &kind, nullptr, &whole, nullptr, nullptr, nullptr) == 0 &&
        kind == DW_UT_skeleton && whole.cu != nullptr)
        code.unit = whole;
    return true;
}

const std::vector<Program::UnitRange>& Program::RangesOf(Dwfl_Module* module, std::uint64_t& bias)
{
    const auto [found, isNew] = m_ranges.try_emplace(module);
    if (isNew)
    {
        for (Dwarf_Die* unit = nullptr; (unit = m_elfutils.dwfl_module_nextcu(module, unit, &bias)) != nullptr;)
        {
            UnitRange range = {0, 0, *unit};
            Dwarf_Addr base = 0;
            for (std::ptrdiff_t i = 0; (i = m_elfutils.dwarf_ranges(unit, i, &base, &range.begin, &range.end)) > 0;)
                found->second.push_back(range);
        }
    }
    else
        m_elfutils.dwfl_module_nextcu(module, nullptr, &bias);
    return found->second;
}

std::string Program::NameOf(const Function& function)
{
    if (const char* const name = LinkageName(function.die))
        return Undecorated(name);
    // What has a place in the program has it where it is declared.
    return m_units.QualifiedName(OriginOf(m_elfutils, function.die));
}

bool Program::IsDecorated(const Function& function) const { return LinkageName(function.die) != nullptr; }

const char* Program::LinkageName(Dwarf_Die die) const
{
    for (const unsigned kind : {DW_AT_linkage_name, DW_AT_MIPS_linkage_name})
    {
        Dwarf_Attribute attribute;
        if (m_elfutils.dwarf_attr_integrate(&die, kind, &attribute) != nullptr)
            return m_elfutils.dwarf_formstring(&attribute);
    }
    return nullptr;
}

std::string Program::SymbolAt(const Code& code, std::uint64_t& begin) const
{
    if (code.module == nullptr)
        return {};
    GElf_Off offset = 0;
    GElf_Sym symbol;
    const char* const name =
        m_elfutils.dwfl_module_addrinfo(code.module, code.address, &offset, &symbol, nullptr, nullptr, nullptr);
    if (name == nullptr)
        return {};
    begin = code.address - offset;
    return Undecorated(name);
}

std::uint64_t Program::BeginOf(const Code& code, const Function& function) const
{
    Dwarf_Die die = function.die;
    Dwarf_Addr begin = 0;
    if (m_elfutils.dwarf_entrypc(&die, &begin) == 0 && begin <= code.FileAddress())
        return begin + code.bias;
    // The rarely used part of a function can stand ahead of it.
    Dwarf_Addr base = 0;
    Dwarf_Addr end = 0;
    for (std::ptrdiff_t i = 0; (i = m_elfutils.dwarf_ranges(&die, i, &base, &begin, &end)) > 0;)
    {
        if (code.FileAddress() >= begin && code.FileAddress() < end)
            return begin + code.bias;
    }
    return code.address;
}

std::string Program::LineOf(const Code& code, int& line) const
{
    Dwarf_Die unit = code.unit;
    Dwarf_Line* const found = unit.cu != nullptr ? m_elfutils.dwarf_getsrc_die(&unit, code.FileAddress()) : nullptr;
    if (found == nullptr || m_elfutils.dwarf_lineno(found, &line) != 0)
        return {};
    return WholePath(m_elfutils.dwarf_linesrc(found, nullptr, nullptr), code.unit);
}

std::string Program::LineOfCall(const Code& code, const Function& inlined, int& line) const
{
    Dwarf_Die die = inlined.die;
    Dwarf_Die unit = code.unit;
    Dwarf_Attribute attribute;
    Dwarf_Word file = 0;
    Dwarf_Word number = 0;
    Dwarf_Files* files = nullptr;
    if (m_elfutils.dwarf_formudata(m_elfutils.dwarf_attr(&die, DW_AT_call_file, &attribute), &file) != 0 ||
        m_elfutils.dwarf_formudata(m_elfutils.dwarf_attr(&die, DW_AT_call_line, &attribute), &number) != 0 ||
        m_elfutils.dwarf_getsrcfiles(&unit, &files, nullptr) != 0)
        return {};
    line = static_cast<int>(number);
    return WholePath(m_elfutils.dwarf_filesrc(files, file, nullptr, nullptr), code.unit);
}

std::string Program::WholePath(const char* path, const Dwarf_Die& unit) const
{
    if (path == nullptr || *path == '/')
        return path != nullptr ? path : "";
    Dwarf_Die die = unit;
    Dwarf_Attribute attribute;
    const char* const folder = m_elfutils.dwarf_formstring(m_elfutils.dwarf_attr(&die, DW_AT_comp_dir, &attribute));
    return folder != nullptr ? std::string(folder) + '/' + path : path;
}

std::string Undecorated(const char* name)
{
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(abi::__cxa_demangle(name, nullptr, nullptr, &status),
                                                           std::free);
    // Text that is no decorated name can be one of a type all the same.
    return text != nullptr && std::string_view(name).substr(0, 2) == "_Z" ? text.get() : name;
}

}

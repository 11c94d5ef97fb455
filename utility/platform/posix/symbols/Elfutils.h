#pragma once

#include <elfutils/libdw.h>
#include <elfutils/libdwfl.h>

namespace utility::platform::posix
{

/// The functions of elfutils, under their own names. The library is loaded where a report is written, and not before.
struct Elfutils
{
// clang-format off
#define UTILITY_ELFUTILS(FUNCTION)                                                                                     \
    FUNCTION(dwarf_aggregate_size) FUNCTION(dwarf_attr) FUNCTION(dwarf_attr_integrate) FUNCTION(dwarf_cfi_addrframe)   \
    FUNCTION(dwarf_child) FUNCTION(dwarf_cu_die) FUNCTION(dwarf_cu_info) FUNCTION(dwarf_diename)                       \
    FUNCTION(dwarf_entrypc) FUNCTION(dwarf_filesrc) FUNCTION(dwarf_formaddr) FUNCTION(dwarf_formblock)                 \
    FUNCTION(dwarf_formref_die) FUNCTION(dwarf_formsdata) FUNCTION(dwarf_formstring) FUNCTION(dwarf_formudata)         \
    FUNCTION(dwarf_frame_cfa) FUNCTION(dwarf_frame_info) FUNCTION(dwarf_frame_register) FUNCTION(dwarf_getlocation)    \
    FUNCTION(dwarf_getlocation_addr) FUNCTION(dwarf_getlocation_attr) FUNCTION(dwarf_getlocation_die)                  \
    FUNCTION(dwarf_getlocation_implicit_value) FUNCTION(dwarf_getsrc_die) FUNCTION(dwarf_getsrcfiles)                  \
    FUNCTION(dwarf_hasattr) FUNCTION(dwarf_haspc) FUNCTION(dwarf_lineno) FUNCTION(dwarf_linesrc)                       \
    FUNCTION(dwarf_ranges) FUNCTION(dwarf_siblingof) FUNCTION(dwarf_tag) FUNCTION(dwfl_addrmodule)                     \
    FUNCTION(dwfl_begin) FUNCTION(dwfl_build_id_find_debuginfo) FUNCTION(dwfl_end) FUNCTION(dwfl_linux_proc_find_elf)  \
    FUNCTION(dwfl_linux_proc_report) FUNCTION(dwfl_module_addrdie) FUNCTION(dwfl_module_addrinfo)                      \
    FUNCTION(dwfl_module_dwarf_cfi) FUNCTION(dwfl_module_eh_cfi) FUNCTION(dwfl_module_nextcu)                          \
    FUNCTION(dwfl_report_begin) FUNCTION(dwfl_report_elf) FUNCTION(dwfl_report_end)                                    \
    FUNCTION(dwfl_standard_find_debuginfo)
// clang-format on
#define UTILITY_MEMBER(function) decltype(&::function) function; // NOLINT(bugprone-macro-parentheses)
    UTILITY_ELFUTILS(UTILITY_MEMBER)
#undef UTILITY_MEMBER

    /// Null where elfutils is not installed.
    static const Elfutils* Loaded();
};

}

#pragma once

// The vocabulary of the system's performance counters: the number that stands for a name, the text that explains a
// number, and the object of a number within a block of raw performance data.
//
//     const CPerfLib english(9, true, false);
//     const DWORD processor = english.GetTitleIndex(L"Processor");
//     if (const _PERF_OBJECT_TYPE* const object = CPerfLib::FindObject(&block, processor))
//         Show(object->NumCounters);
//
// The two tables of a language come from the key of its number, as in SOFTWARE\Microsoft\Windows
// NT\CurrentVersion\Perflib\009, of the machine's hive: its values "Counter" and "Help" are texts in turn, a decimal
// number and what it stands for, up to an empty number. On Linux the hive has them once somebody has put them there:
// export the key on a Windows machine, and `settings import` takes the file (examples/settings.cpp).
//
// A value may be anything: nothing outside its bytes is read. Where it ends within a text, that is the end of the text;
// half a character there, and a number without anything behind it, are left out. Blanks and a sign may stand ahead of a
// number, its digits may be those of the scripts that Windows takes, what is behind them is not looked at, and one
// beyond the range of an int is its limit.
//
// An object belongs to one thread at a time. Where memory runs out std::bad_alloc is thrown, except for the bytes of a
// value as it stands in the registry: for these see the operations.

#include "utility/guards/ResourcePtr.h"
#include "utility/platform/PerformanceData.h"

#include <map>
#include <string>

class UTILITY_API CPerfLib
{
public:
    /// Loads the tables that are asked for. One that cannot be loaded is empty.
    CPerfLib(unsigned short language, bool loadTitles, bool loadHelp);
    /// The tables are copied, or moved.
    CPerfLib(const CPerfLib& other);
    CPerfLib(CPerfLib&& other) noexcept;
    CPerfLib& operator=(const CPerfLib& other);
    CPerfLib& operator=(CPerfLib&& other) noexcept;
    ~CPerfLib();

    /// Adds the counters' names and their numbers, or the numbers and their help. An entry that is there already stays:
    /// a name that occurs twice stands for its first number. False if there is no such table, and deliberately only
    /// then: where memory for it runs out, or it cannot be read any more, the map stays as it was and true is given.
    bool GetPerformanceDataCounterTitles(std::map<std::wstring, int>& titles);
    bool GetPerformanceDataCounterHelp(std::map<int, std::wstring>& help);

    /// The number of a counter or an object by its exact name, of the titles that were loaded; 0, which is none, for
    /// one that is not known.
    DWORD GetTitleIndex(const wchar_t* name) const;

    /// The first object of this number; null if there is none, or no block. The block may hold anything: nothing
    /// outside its TotalByteLength is read, and the search ends at an object without a length or whose title index is
    /// not within it. What is found may be cut off behind its title index, and stands at any address.
    static _PERF_OBJECT_TYPE* FindObject(_PERF_DATA_BLOCK* block, DWORD titleIndex);

private:
    UTILITY_LOCAL resource_ptr<HKEY> OpenPerfLib();

    template <class Insert>
    bool LoadTable(const wchar_t* valueName, Insert insert);

    UTILITY_LOCAL static constexpr wchar_t m_szPerfLibKey[] =
        L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Perflib";

    unsigned short m_nLanguage;
    std::map<std::wstring, int> m_titles;
    std::map<int, std::wstring> m_help;
};

#pragma once

// The resources of a module in the display language: a satellite library beside the module, one for each language, and
// where there is none for the language, the module itself.
//
//     const CResourceCounter resources(module); // takes over one reference to the module
//     const std::wstring text = resource_string(resources.GetResourceDLL(), 8300);
//
// The satellites of /opt/app/Milling.dll are /opt/app/MillingResENG.dll, MillingResDEU.dll and so on, by the three
// letters of the language (Lang::GetLanguageAbbreviatedName). On Linux the names begin with the module's own name too:
// app for the program app, Milling for libMilling.so.0.1; the satellites are the same files as on Windows. One is taken
// if its file version is that of this release, 2022.0. Candidates are that of the language (Lang::GetLanguage) and that
// of the language's default sublanguage, by number: 0x0C07 goes to 0x0407, and 0x0804 to 0x0404.
//
// An object does not change once it is made: any thread may ask it. Nothing is reported, and nothing throws but for
// lack of memory.

#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <memory>
#include <string>

/// Holds a module and the module of its resources.
class UTILITY_API CResourceCounter
{
public:
    /// Takes over one reference to the module. With a null module the satellites are those of the program. The calling
    /// thread's locale and the C library's, that of the whole process, are deliberately those of the language from then
    /// on, satellite or not: printf may write a decimal comma (see startup/LibraryFrame.h).
    explicit CResourceCounter(HINSTANCE hModule);
    CResourceCounter(const CResourceCounter&) = delete;
    CResourceCounter& operator=(const CResourceCounter&) = delete;
    /// Releases the module, then the module of the resources. Where that is the same, it is deliberately released
    /// twice.
    ~CResourceCounter();

    /// The satellite, or else the module itself.
    HINSTANCE GetResourceDLL() const;
    /// The module itself.
    HINSTANCE GetDLL() const;

private:
    struct Release
    {
        UTILITY_LOCAL void operator()(HINSTANCE module) const;
    };
    using ModuleOwner = std::unique_ptr<HINSTANCE__, Release>;

    UTILITY_LOCAL bool LoadLanguageResourceDLL(const wchar_t* filePattern, LCID lcid);
    UTILITY_LOCAL bool LoadSatellite(const wchar_t* filePattern, const std::wstring& abbreviation);

    ModuleOwner m_hResourceDLL;
    ModuleOwner m_hDLL;
};

#include "utility/settings/ResourceCounter.h"

#include "resources/Release.h"
#include "utility/platform/Locale.h"
#include "utility/platform/Modules.h"
#include "utility/settings/Lang.h"
#include "utility/settings/Version.h"

#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>

using utility::platform::Locale;
using utility::platform::Modules;

namespace
{

constexpr DWORD requiredVersion = (DWORD{UTILITY_RELEASE_MAJOR} << 16) | UTILITY_RELEASE_MINOR;
constexpr std::wstring_view placeholder = L"%s";

/// The three letters of a language, none where it is not known.
std::wstring AbbreviationOf(LCID lcid)
{
    wchar_t text[4];
    return Locale().LanguageAbbreviation(lcid, text, static_cast<int>(std::size(text))) != 0 ? text : std::wstring();
}

}

CResourceCounter::CResourceCounter(HINSTANCE hModule) : m_hDLL(hModule)
{
    const std::wstring filePattern = utility::platform::SatelliteStem(Modules().FileName(hModule))
                                         .append(L"Res")
                                         .append(placeholder)
                                         .append(L".dll");
    if (!LoadLanguageResourceDLL(filePattern.c_str(), Lang::GetLanguage()))
        m_hResourceDLL.reset(hModule);
}

CResourceCounter::~CResourceCounter() = default;

HINSTANCE CResourceCounter::GetResourceDLL() const { return m_hResourceDLL.get(); }

HINSTANCE CResourceCounter::GetDLL() const { return m_hDLL.get(); }

void CResourceCounter::Release::operator()(HINSTANCE module) const { Modules().Free(module); }

bool CResourceCounter::LoadLanguageResourceDLL(const wchar_t* filePattern, LCID lcid)
{
    const std::wstring abbreviation = AbbreviationOf(lcid);
    // Deliberately for the language itself only, and not undone where it has no satellite.
    Locale().SetThreadLocale(lcid);
    Locale().SetRuntimeLocale(abbreviation.c_str());
    if (LoadSatellite(filePattern, abbreviation))
        return true;
    // Deliberately by number alone, and also where this is the same language again.
    if (LoadSatellite(filePattern, AbbreviationOf(utility::platform::WithDefaultSublanguage(lcid))))
        return true;
    m_hResourceDLL.reset();
    return false;
}

bool CResourceCounter::LoadSatellite(const wchar_t* filePattern, const std::wstring& abbreviation)
{
    std::wstring path = filePattern;
    path.replace(path.rfind(placeholder), placeholder.size(), abbreviation);
    m_hResourceDLL.reset(Modules().Load(path.c_str()));
    // What is below is no handle but a reason for there being none.
    constexpr std::intptr_t firstHandle = 32;
    if (reinterpret_cast<std::intptr_t>(m_hResourceDLL.get()) < firstHandle)
        return false;
    CVersion version;
    return version.Initialise(path.c_str()) && version.GetFileVersionMS() == requiredVersion;
}

#pragma once

#include "utility/platform/RuntimeLocale.h"
#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

/// What the system knows of locales, by their Windows identifiers. Any thread may call. An operation that fails leaves
/// its reason in LastError(): an unknown locale is 87, a buffer that is too short 122.
///
/// A text goes to a buffer of `size` characters, null-terminated; the result is its length with the terminator, 0 on
/// failure. With a `size` of 0 nothing is written and the length alone is given. Linux knows the locales in
/// platform/posix/locale/Locales.inc.
class LocaleService
{
public:
    virtual ~LocaleService() = default;

    virtual int DecimalSymbol(LCID locale, wchar_t* buffer, int size) = 0;

    /// What stands between hours and minutes.
    virtual int TimeSeparator(LCID locale, wchar_t* buffer, int size) = 0;

    /// The name of a locale, a tag of language and region: de-AT.
    virtual int Name(LCID locale, wchar_t* buffer, int size) = 0;

    /// The name of a locale's language in that language; by the locale's name also for a language without a region.
    virtual int NativeLanguageName(LCID locale, wchar_t* buffer, int size) = 0;
    virtual int NativeLanguageName(const wchar_t* name, wchar_t* buffer, int size) = 0;

    /// The three letters of a locale's language and region: ENG, DEU, DEA.
    virtual int LanguageAbbreviation(LCID locale, wchar_t* buffer, int size) = 0;

    /// The user's own locale. On Linux that of LC_ALL, LC_MESSAGES or LANG, the first that is not empty; 0x0409 where
    /// they name no known language.
    virtual LCID UserDefault() = 0;

    /// The locale of the calling thread: the user's until it is set.
    virtual LCID ThreadLocale() = 0;
    /// Refuses an unknown locale.
    virtual bool SetThreadLocale(LCID locale) = 0;

    /// Sets the locale of the process's C library, for all categories, to that of a language abbreviation; an empty one
    /// stands for the user's own. Where the system does not have it, nothing is changed.
    virtual bool SetRuntimeLocale(const wchar_t* abbreviation) = 0;

    /// Has the C library of the calling thread go by the locale "C", other threads as before; gives what to put back.
    /// Where the C library has no locales of threads, as msvcrt.dll, it is the whole process that goes by "C", until
    /// each thread that called for it has put back what its first call gave.
    virtual RuntimeLocale UseCLocale() = 0;
    /// Puts back what UseCLocale gave, in the same thread.
    virtual void UseRuntimeLocale(const RuntimeLocale& earlier) = 0;
};

/// The locale of a language's default sublanguage, by number alone: 0x0C07 gives 0x0407.
constexpr LCID WithDefaultSublanguage(LCID locale)
{
    constexpr LCID primaryLanguage = 0x3FF;
    constexpr LCID defaultSublanguage = 0x400;
    return (locale & primaryLanguage) | defaultSublanguage;
}

ServiceSlot<LocaleService>& LocaleSlot() noexcept;
inline LocaleService& Locale() noexcept { return LocaleSlot().Get(); }

}

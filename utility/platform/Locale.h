#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

/// What the system knows of locales, by their Windows identifiers. Any thread may call. An operation that fails leaves its
/// reason in LastError().
class LocaleService
{
public:
    virtual ~LocaleService() = default;

    /// The decimal symbol of a locale: its length with the terminator, 0 on failure. With a `size` of 0 the length alone.
    /// Linux knows the invariant locale and those of the languages that the library speaks.
    virtual int DecimalSymbol(DWORD locale, wchar_t* buffer, int size) = 0;
};

ServiceSlot<LocaleService>& LocaleSlot() noexcept;
inline LocaleService& Locale() noexcept { return LocaleSlot().Get(); }

}

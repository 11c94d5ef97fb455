#pragma once

// Wide text as a double, under rules of its own: a decimal symbol of any length, D as well as E ahead of an exponent, a
// sign behind leading zeros, and a text without a number in it is zero.
//
//     double value;
//     assert(QLMParseFloat(L" 1.5D3 ", value) && value == 1500.0); // nothing but blanks behind it
//     const std::wstring rest = QLMParseFloat1(L"1,5 mm", L",", value);
//     assert(value == 1.5 && rest == L" mm");
//
// A number is [blanks] digits and one sign [symbol digits] [one of DEde, blanks, sign, digits]; each piece may be
// absent. It is built by plain arithmetic in doubles, so its last bits may differ from the nearest double's. There are
// no spellings of infinity, NaN and hexadecimal numbers. A magnitude out of range is no failure: it is what the
// arithmetic gives, which takes for granted that overflow does not trap. Where the text goes wrong, `value` has what
// was read before.
//
// Any thread may call. Nothing is thrown or allocated, and errno stays.

#include "utility/platform/Export.h"

/// Reads a number from the start of a text, behind leading blanks, and returns where it ended. If `text` or
/// `decimalSymbol` is null, returns `text` and leaves `value` as it is.
UTILITY_API const wchar_t* QLMParseFloat1(const wchar_t* text, const wchar_t* decimalSymbol, double& value) noexcept;

/// Whether the number reaches to the end of the text. A blank behind it makes that false. `text` must not be null.
UTILITY_API bool QLMParseFloat(const wchar_t* text, const wchar_t* decimalSymbol, double& value) noexcept;

/// Whether nothing but blanks follows the number, which has the symbol of the process. `text` must not be null.
UTILITY_API bool QLMParseFloat(const wchar_t* text, double& value) noexcept;

/// Reads a number with the symbol of the process and returns where the blanks behind it end, for texts of several
/// numbers. The character is ignored. `text` must not be null.
UTILITY_API const wchar_t* QLMParseFloat(const wchar_t* text, wchar_t ignored, double& value) noexcept;

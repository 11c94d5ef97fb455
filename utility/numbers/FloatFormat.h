#pragma once

// Doubles as text with a stated number of decimal places, and the two settings of the process that go with it: the
// decimal symbol, and how many places dialogs show.
//
//     assert(to_wstring(-1.5, 3) == L"-1.500");
//     assert(to_wstring(2.5, 3, true, L",", true) == L"+2,5");
//     assert(QLMFormatFloatPrecise(-0.004, 2) == L"0.00"); // where to_wstring gives -0.00
//     assert(QLMFormatFloatE(1500.0, 2) == L"1.50E+003");
//     char block[16] = "X";
//     const std::size_t length = FormatFixed(std::span(block).subspan(1), 10.5, 3); // no allocation
//     assert(length == 6 && std::string_view(block, 1 + length) == "X10.500");
//
// The exact binary value is rounded to the last place, ties to even: 0.125 with two places is 0.12. Nothing depends on
// a locale or on the thread's floating-point state, and the text is the same on every system.
//
// The number of places may be any. Negative ones round the whole part to tens, hundreds and so on. An infinity is "inf"
// and a NaN "nan", behind the sign if there is one and without symbol and fraction.
//
// Any thread may call; SetDialogDecimalPlaces alone is for one thread at a time. A call allocates nothing but its
// result, and throws nothing but what that allocation does: FormatFixed allocates and throws nothing.

#include "utility/numbers/DistanceUnits.h"
#include "utility/platform/Export.h"
#include "utility/platform/Types.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

/// The decimal symbol of the process: ".", always.
UTILITY_API const std::wstring& GetDecimalSymbol() noexcept;

/// These exist for their callers and change nothing: the symbol stays "." for the whole run, in every locale.
UTILITY_API void SetDecimalSymbol(DWORD localeId);
UTILITY_API void SetDecimalSymbol(const wchar_t* symbol);

/// How many places dialogs show: 4 at first.
UTILITY_API int DialogDecimalPlaces() noexcept;

/// How many places dialogs show for a unit: 4 for millimetres, 6 for the others.
UTILITY_API int DialogDecimalPlaces(DISTANCE_UNITS units) noexcept;

/// Any number will do; it is not checked.
UTILITY_API void SetDialogDecimalPlaces(int places) noexcept;

/// Fixed-point text with `decimals` places. A negative value that rounds to zero keeps its sign, a negative zero has
/// none.
/// @param showPlus puts a plus ahead of what is not negative
/// @param decimalSymbol stands in place of a point; of any length, empty too
/// @param trimZeros drops the zeros at the end of the fraction, and the symbol with it if no digit is left
/// @param keepSymbol writes the symbol even if no digit follows
[[nodiscard]] UTILITY_API std::wstring to_wstring(double value, int decimals, bool showPlus = false,
                                                  const std::wstring& decimalSymbol = GetDecimalSymbol(),
                                                  bool trimZeros = false, bool keepSymbol = false);
/// The float's double expansion: 0.1f with 10 places is 0.1000000015.
[[nodiscard]] UTILITY_API std::wstring to_wstring(float value, int decimals, bool showPlus = false,
                                                  const std::wstring& decimalSymbol = GetDecimalSymbol(),
                                                  bool trimZeros = false, bool keepSymbol = false);

/// Writes the text that to_wstring gives, of the same arguments, into the caller's memory, without a null behind it. A
/// text that is too long for that is not written at all. What is behind the text stays as it is, and may be read: no
/// other thread may write there meanwhile.
/// @return the length of the text, in characters, also of one that does not fit: an empty span asks for it
/// @param decimalSymbol in whatever encoding the text is to have; not a part of `text`
[[nodiscard]] UTILITY_API std::size_t FormatFixed(std::span<char> text, double value, int decimals,
                                                  bool showPlus = false, std::string_view decimalSymbol = ".",
                                                  bool trimZeros = false, bool keepSymbol = false) noexcept;
[[nodiscard]] UTILITY_API std::size_t FormatFixed(std::span<wchar_t> text, double value, int decimals,
                                                  bool showPlus = false, std::wstring_view decimalSymbol = L".",
                                                  bool trimZeros = false, bool keepSymbol = false) noexcept;

/// A mantissa as to_wstring gives it, then an upper-case E, the sign and three digits of the exponent. A mantissa that
/// rounds up to 10 stays so: 9996.0 with two places is 10.00E+003. A NaN is a zero, and the mantissa of values below
/// some 1E-308 is an infinity.
[[nodiscard]] UTILITY_API std::wstring QLMFormatFloatE(double value, int decimals, bool showPlus = false,
                                                       const std::wstring& decimalSymbol = GetDecimalSymbol(),
                                                       bool trimZeros = false, bool keepSymbol = false);

/// Fixed-point text with the symbol of the process, never of a negative zero. A NaN is a zero.
[[nodiscard]] UTILITY_API std::wstring QLMFormatFloatPrecise(double value, int decimals);

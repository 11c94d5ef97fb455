#pragma once

// Lengths. Inside the application they are millimetres; its user sees and types them in one unit, that of the process.
//
//     SetDistanceUnits(DISTANCE_UNITS_INCH);
//     double length;
//     assert(QLMParseDistance(L"0.5 in", length, GetDistanceScale()) && length == 12.7f);
//     assert(GetDistanceDescription(true) == L"inches");
//
// A length that is shown, times the scale of its unit, is the length in millimetres. The scale of an inch is the float
// nearest to 25.4, also where it is widened: 254.0 over it is 10.00000015.
//
// For the thread of the user interface. A number that is none of the units is not to be passed: it is not checked.
// Nothing is thrown.

#include "utility/numbers/DistanceUnits.h"
#include "utility/platform/Export.h"

#include <string>

/// The unit of the process: millimetres at first.
UTILITY_API DISTANCE_UNITS GetDistanceUnits() noexcept;

/// Also has dialogs show the unit's number of places (numbers/FloatFormat.h), whatever they showed before.
UTILITY_API void SetDistanceUnits(DISTANCE_UNITS units) noexcept;

/// Millimetres in one of the process's unit, or of another.
UTILITY_API float GetDistanceScale() noexcept;
UTILITY_API float GetDistanceScale(DISTANCE_UNITS units) noexcept;

/// The word for the process's unit, for one or for several of it, in the display language that the library found when
/// it was loaded. It stays the same string as long as the library is loaded.
UTILITY_API const std::wstring& GetDistanceDescription(bool plural) noexcept;

/// Reads a length: a number as numbers/FloatParse.h has it, and what may follow it, times `scale`, in `value`, which is
/// written whatever the result. True if it was read to its end. `text` must not be null. The word for a unit is passed
/// over and does not count: only `scale` does. Deliberately as many letters are passed over as the first word for a
/// unit has that is not the one typed. In most languages that is two, so "5 in" and "5 cm" are true, "5 inch" and
/// "5 mm" are not.
UTILITY_API bool QLMParseDistance(const wchar_t* text, double& value, double scale) noexcept;

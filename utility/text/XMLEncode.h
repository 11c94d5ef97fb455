#pragma once

// Text for XML.
//
//     assert(XMLEncode(L"R < 5 & 30\u00B0", false) == L"R &lt; 5 &amp; 30&#176;");
//
// Any thread may call.

#include "utility/platform/Export.h"

#include <string>

/// The text with &, <, >, ', " and the degree sign as references to them, and all else as it is, control characters
/// too. Text that has references already gets each & of theirs replaced once more. The degree sign becomes "&#176;",
/// which every reader of XML accepts, or with `namedDegree` "&deg;", which HTML knows.
///
/// Give the text away, by std::move, where it is not needed any more: one in which nothing is replaced comes back as it
/// is, without a copy. Throws nothing but for lack of memory.
[[nodiscard]] UTILITY_API std::wstring XMLEncode(std::wstring text, bool namedDegree);

#pragma once

#include <string>
#include <string_view>

namespace utility::platform::formats
{

/// What becomes of bytes that are no UTF-8, and of wide characters that are no code points.
enum class Malformed
{
    replaced, ///< by U+FFFD
    escaped,  ///< a byte by U+DC00 plus its value, and such a character by its byte; other surrogates as if kept
    kept,     ///< a surrogate has the three bytes that it would have as a code point; the rest is replaced
};

[[nodiscard]] std::wstring WideFromUtf8(std::string_view text, Malformed malformed = Malformed::replaced);
[[nodiscard]] std::string Utf8FromWide(std::wstring_view text, Malformed malformed = Malformed::replaced);

}

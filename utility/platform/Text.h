#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace utility::platform
{

/// Code pages, and the system's words for its errors. Any thread may call.
///
/// Code pages have their Windows numbers: 65001 is UTF-8, 0 the system's narrow encoding, which is the ANSI code page
/// on Windows and UTF-8 on Linux, whatever the locale. What a text cannot be converted to becomes the code page's
/// substitute character; which near matches are taken instead, and how many substitutes stand for a longer malformed
/// sequence, is the system's own. An unknown code page fails.
class TextService
{
public:
    virtual ~TextService() = default;

    /// Wide text in a code page: writes at most `capacity` bytes to `out` and gives the number of bytes. With capacity
    /// 0 nothing is written and the number needed is given. A length of -1 stands for a null-terminated text, with its
    /// null. 0 is a failure, which an empty text is too (87), and a buffer that is too small (122).
    virtual int ToCodePage(UINT codePage, const wchar_t* text, int length, char* out, int capacity) = 0;

    /// The reverse of ToCodePage, with the capacity and the result in wide characters.
    virtual int FromCodePage(UINT codePage, const char* text, int length, wchar_t* out, int capacity) = 0;

    /// The message for an error number, null-terminated, in the language with this identifier, 0 being the thread's.
    /// Gives its length, or 0 where there is none or the buffer is too small. On Windows it is the system's; on Linux
    /// the library has its own, in the languages of its satellites, for the numbers in ErrorCodes.h, and English for
    /// other languages.
    virtual DWORD SystemMessage(DWORD error, DWORD languageId, wchar_t* buffer, DWORD size) = 0;

    /// All of the same, however long it is; empty where there is none.
    virtual std::wstring WholeSystemMessage(DWORD error, DWORD languageId) = 0;
};

ServiceSlot<TextService>& TextSlot() noexcept;
inline TextService& Text() noexcept { return TextSlot().Get(); }

/// All of a wide text in a code page; empty where it cannot be converted. Only the low 32 bits of its length count.
[[nodiscard]] std::string CodePageFromWide(UINT codePage, std::wstring_view text);

/// All of a narrow text as wide text; empty where it cannot be converted, which more than 2^31 - 1 bytes cannot.
[[nodiscard]] std::wstring WideFromCodePage(UINT codePage, std::string_view text);

}

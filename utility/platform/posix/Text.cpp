#include "utility/platform/Text.h"

#include "utility/platform/Error.h"
#include "utility/platform/formats/Utf8.h"
#include "utility/platform/Locale.h"
#include "utility/platform/posix/text/CodePages.h"
#include "utility/platform/posix/text/ErrorTexts.h"
#include "utility/platform/SystemService.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace utility::platform
{

namespace
{

/// Hands a converted text over as both directions of the service do.
template <class String, class Char>
int Deliver(const String& text, Char* out, int capacity)
{
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
    {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const int size = static_cast<int>(text.size());
    if (capacity == 0)
        return size;
    std::copy_n(text.begin(), std::min(size, capacity), out);
    if (size > capacity)
    {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    return size;
}

template <class Char>
std::size_t LengthOf(const Char* text, int length)
{
    return length < 0 ? std::char_traits<Char>::length(text) + 1 : static_cast<std::size_t>(length);
}

/// The system's narrow encoding is UTF-8 under each of its names: ANSI (0), OEM (1), that of the thread (3).
bool IsUtf8(UINT codePage)
{
    constexpr UINT names[] = {CP_ACP, 1, 3, CP_UTF8};
    return std::ranges::find(names, codePage) != std::end(names);
}

int Refuse()
{
    SetLastError(ERROR_INVALID_PARAMETER);
    return 0;
}

class PosixText final : public TextService
{
public:
    int ToCodePage(UINT codePage, const wchar_t* text, int length, char* out, int capacity) override
    {
        if (length == 0)
            return Refuse();
        const std::wstring_view wide(text, LengthOf(text, length));
        if (IsUtf8(codePage))
            return Deliver(formats::Utf8FromWide(wide), out, capacity);
        const auto converted = posix::Encode(codePage, wide);
        return converted ? Deliver(*converted, out, capacity) : Refuse();
    }

    int FromCodePage(UINT codePage, const char* text, int length, wchar_t* out, int capacity) override
    {
        if (length == 0)
            return Refuse();
        const std::string_view narrow(text, LengthOf(text, length));
        if (IsUtf8(codePage))
        {
            // Nearly every text is, and needs no text in between.
            const bool isAscii = std::ranges::all_of(narrow, [](char c) { return (c & 0x80) == 0; });
            return isAscii ? Deliver(narrow, out, capacity) : Deliver(formats::WideFromUtf8(narrow), out, capacity);
        }
        const auto converted = posix::Decode(codePage, narrow);
        return converted ? Deliver(*converted, out, capacity) : Refuse();
    }

    DWORD SystemMessage(DWORD error, DWORD languageId, wchar_t* buffer, DWORD size) override
    {
        const std::wstring message = WholeSystemMessage(error, languageId);
        if (message.empty() || message.size() >= size)
        {
            SetLastError(message.empty() ? ERROR_FILE_NOT_FOUND : ERROR_INSUFFICIENT_BUFFER);
            return 0;
        }
        buffer[message.copy(buffer, message.size())] = L'\0';
        return static_cast<DWORD>(message.size());
    }

    std::wstring WholeSystemMessage(DWORD error, DWORD languageId) override
    {
        const char* const text = posix::ErrorText(error, languageId != 0 ? languageId : Locale().ThreadLocale());
        return text != nullptr ? formats::WideFromUtf8(text) : std::wstring();
    }
};

}

ServiceSlot<TextService>& TextSlot() noexcept { return SystemService<TextService, PosixText>::Slot(); }

}

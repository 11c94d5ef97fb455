#include "utility/platform/Text.h"

#include "utility/platform/Error.h"
#include "utility/platform/formats/Utf8.h"
#include "utility/platform/posix/error/Errno.h"
#include "utility/platform/posix/text/CodePages.h"
#include "utility/platform/SystemService.h"

#include <algorithm>
#include <cstring>
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
        if (codePage == CP_ACP || codePage == CP_UTF8)
            return Deliver(formats::Utf8FromWide(wide), out, capacity);
        const auto converted = posix::Encode(codePage, wide);
        return converted ? Deliver(*converted, out, capacity) : Refuse();
    }

    int FromCodePage(UINT codePage, const char* text, int length, wchar_t* out, int capacity) override
    {
        if (length == 0)
            return Refuse();
        const std::string_view narrow(text, LengthOf(text, length));
        if (codePage == CP_ACP || codePage == CP_UTF8)
        {
            // Nearly every text is, and needs no text in between.
            const bool isAscii = std::ranges::all_of(narrow, [](char c) { return (c & 0x80) == 0; });
            return isAscii ? Deliver(narrow, out, capacity) : Deliver(formats::WideFromUtf8(narrow), out, capacity);
        }
        const auto converted = posix::Decode(codePage, narrow);
        return converted ? Deliver(*converted, out, capacity) : Refuse();
    }

    DWORD SystemMessage(DWORD error, DWORD /*languageId: the messages are in the locale's language*/, wchar_t* buffer,
                        DWORD size) override
    {
        const int value = posix::ErrnoOfError(error);
        char text[256];
        const std::wstring message =
            value < 0 ? std::wstring() : formats::WideFromUtf8(::strerror_r(value, text, sizeof(text)));
        if (message.empty() || message.size() >= size)
        {
            SetLastError(message.empty() ? ERROR_FILE_NOT_FOUND : ERROR_INSUFFICIENT_BUFFER);
            return 0;
        }
        buffer[message.copy(buffer, message.size())] = L'\0';
        return static_cast<DWORD>(message.size());
    }
};

}

ServiceSlot<TextService>& TextSlot() noexcept { return SystemService<TextService, PosixText>::Slot(); }

}

#include "utility/platform/Text.h"

#include <limits>

namespace utility::platform
{

std::string CodePageFromWide(UINT codePage, std::wstring_view text)
{
    TextService& service = Text();
    const int length = static_cast<int>(text.size());
    const int size = service.ToCodePage(codePage, text.data(), length, nullptr, 0);
    std::string narrow(static_cast<std::size_t>(size), '\0');
    if (size != 0)
        service.ToCodePage(codePage, text.data(), length, narrow.data(), size);
    return narrow;
}

std::wstring WideFromCodePage(UINT codePage, std::string_view text)
{
    std::wstring wide;
    if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return wide;
    TextService& service = Text();
    const int length = static_cast<int>(text.size());
    const int size = service.FromCodePage(codePage, text.data(), length, nullptr, 0);
    wide.resize(static_cast<std::size_t>(size));
    if (size != 0)
        wide.resize(static_cast<std::size_t>(service.FromCodePage(codePage, text.data(), length, wide.data(), size)));
    return wide;
}

}

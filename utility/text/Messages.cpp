#include "utility/text/Messages.h"

#include "utility/framework/internal/Format.h"
#include "utility/text/ResourceString.h"

#include <algorithm>

std::wstring LoadMessage(int messageId, ...)
{
    std::va_list arguments;
    va_start(arguments, messageId);
    std::wstring text = LoadMessageVA(messageId, arguments);
    va_end(arguments);
    return text;
}

std::wstring LoadMessageVA(int messageId, std::va_list arguments)
{
    constexpr std::size_t capacity = 512;
    const std::wstring format = resource_string(static_cast<unsigned int>(messageId));
    if (format.empty())
        return {};
    std::wstring text = utility::framework::FormatWide(format.c_str(), arguments);
    text.resize(std::min({text.find(L'\0'), text.size(), capacity}));
    return text;
}

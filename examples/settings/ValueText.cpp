#include "examples/settings/ValueText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <stdexcept>

namespace valuetext
{

namespace
{

struct Type
{
    const char* name;
    DWORD tag;
};

constexpr Type types[] = {{"REG_SZ", REG_SZ},       {"REG_EXPAND_SZ", REG_EXPAND_SZ}, {"REG_MULTI_SZ", REG_MULTI_SZ},
                          {"REG_DWORD", REG_DWORD}, {"REG_QWORD", REG_QWORD},         {"REG_BINARY", REG_BINARY}};

/// The number that all of the text is, in this base and in so many bytes.
std::string BytesOfNumber(std::string_view text, int base, std::size_t size)
{
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc() || end != text.data() + text.size() || (size < 8 && number >> (8 * size) != 0))
        throw std::invalid_argument(std::string(text) + " is no number of " + std::to_string(8 * size) + " bits");
    return {reinterpret_cast<const char*>(&number), size};
}

std::string BytesOfDigits(std::string_view text)
{
    std::string bytes;
    for (; !text.empty(); text.remove_prefix(std::min<std::size_t>(text.size(), 2)))
    {
        if (text.size() < 2)
            throw std::invalid_argument("bytes are pairs of hexadecimal digits");
        bytes += BytesOfNumber(text.substr(0, 2), 16, 1);
    }
    return bytes;
}

std::string BytesOf(DWORD type, const std::string& text)
{
    if (type == REG_BINARY)
        return BytesOfDigits(text);
    const bool isHexadecimal = text.starts_with("0x");
    return BytesOfNumber(std::string_view(text).substr(isHexadecimal ? 2 : 0), isHexadecimal ? 16 : 10,
                         type == REG_DWORD ? sizeof(DWORD) : sizeof(std::uint64_t));
}

std::wstring Digits(const std::string& bytes)
{
    constexpr wchar_t digits[] = L"0123456789abcdef";
    std::wstring text;
    for (const char c : bytes)
    {
        text += digits[static_cast<unsigned char>(c) / 16];
        text += digits[static_cast<unsigned char>(c) % 16];
    }
    return text;
}

}

std::string Types()
{
    std::string names;
    for (const Type& type : types)
        names += (names.empty() ? "" : ", ") + std::string(type.name);
    return names;
}

regtext::Value Typed(const std::wstring& name, const std::string& type, const std::vector<std::wstring>& parts)
{
    const auto* const found = std::ranges::find(types, std::string_view(type), &Type::name);
    if (found == std::end(types))
        throw std::invalid_argument(type + " is none of " + Types());
    regtext::Value value{name, found->tag, {}, false};
    if (value.type == REG_MULTI_SZ)
    {
        for (const std::wstring& part : parts)
            value.data += regtext::DataOfText(part);
        value.data += regtext::DataOfText(L"");
        return value;
    }
    if (parts.size() != 1)
        throw std::invalid_argument(type + " takes one value");
    const bool isText = value.type == REG_SZ || value.type == REG_EXPAND_SZ;
    value.data = isText ? regtext::DataOfText(parts[0]) : BytesOf(value.type, from_utf(parts[0], CP_UTF8));
    return value;
}

std::wstring Plain(const regtext::Value& value)
{
    const bool isNumber = (value.type == REG_DWORD && value.data.size() == sizeof(DWORD)) ||
                          (value.type == REG_QWORD && value.data.size() == sizeof(std::uint64_t));
    if (isNumber)
    {
        std::uint64_t number = 0;
        std::memcpy(&number, value.data.data(), value.data.size());
        return std::to_wstring(number);
    }
    if (value.type != REG_SZ && value.type != REG_EXPAND_SZ && value.type != REG_MULTI_SZ)
        return Digits(value.data) + NumberIn(value);

    std::wstring text =
        utility::platform::formats::WideFromUtf16(value.data.data(), value.data.size() / sizeof(char16_t));
    if (value.type != REG_MULTI_SZ)
        return text.substr(0, text.find(L'\0'));
    // An empty text ends the list.
    text = text.substr(0, text.find(std::wstring_view(L"\0\0", 2)));
    text.erase(text.find_last_not_of(L'\0') + 1);
    std::ranges::replace(text, L'\0', L'\n');
    return text;
}

std::wstring NumberIn(const regtext::Value& value)
{
    double number = 0.0;
    if (value.type != REG_BINARY || value.data.size() != sizeof number)
        return {};
    std::memcpy(&number, value.data.data(), sizeof number);
    constexpr double least = 1e-30;
    constexpr double most = 1e30;
    const double magnitude = std::fabs(number);
    if (magnitude != 0.0 && !(magnitude >= least && magnitude <= most))
        return {};
    char text[32];
    const std::string digits(text, std::to_chars(text, std::end(text), number).ptr);
    return L" (" + std::wstring(digits.begin(), digits.end()) + L")";
}

}

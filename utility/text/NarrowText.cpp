#include "utility/text/NarrowText.h"

#include <algorithm>
#include <cctype>
#include <cstring>

namespace
{

int InLowerCase(char c) { return std::tolower(static_cast<unsigned char>(c)); }

}

char* strnistr(const char* text, const char* pattern, std::uint64_t length)
{
    const std::uint64_t size = std::strlen(pattern);
    const auto isEqual = [](char one, char other) { return InLowerCase(one) == InLowerCase(other); };
    for (; length >= size; ++text, --length)
    {
        if (std::equal(pattern, pattern + size, text, isEqual))
            return const_cast<char*>(text);
    }
    return nullptr;
}

std::uint64_t MBCSByteCount(const char* text) { return std::strlen(text); }

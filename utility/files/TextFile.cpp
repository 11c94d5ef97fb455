#include "utility/files/TextFile.h"

#include "utility/numbers/FloatFormat.h"
#include "utility/platform/Types.h"
#include "utility/text/ResourceString.h"

#include <charconv>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <limits>
#include <span>
#include <string>

CTextFile::CTextFile() = default;

CTextFile::~CTextFile() = default;

bool CTextFile::Open(const wchar_t* path) { return CMemoryMappedFile::Open(path, 0); }

bool CTextFile::Open(const std::wstring& path) { return CMemoryMappedFile::Open(path, 0); }

bool CTextFile::Open(const boost::filesystem::path& path) { return CMemoryMappedFile::Open(path, 0); }

CTextFile& CTextFile::operator<<(char value)
{
    Write(&value, 1);
    return *this;
}

CTextFile& CTextFile::operator<<(const char* text)
{
    Write(text, std::strlen(text));
    return *this;
}

CTextFile& CTextFile::operator<<(const wchar_t* text)
{
    return *this << from_utf(text, text == nullptr ? 0 : std::wcslen(text), CP_ACP).c_str();
}

CTextFile& CTextFile::operator<<(int value) { return WriteNumber(value); }

CTextFile& CTextFile::operator<<(unsigned int value) { return WriteNumber(value); }

CTextFile& CTextFile::operator<<(long value) { return WriteNumber(value); }

CTextFile& CTextFile::operator<<(unsigned long value) { return WriteNumber(value); }

CTextFile& CTextFile::operator<<(long long value) { return WriteNumber(value); }

CTextFile& CTextFile::operator<<(unsigned long long value) { return WriteNumber(value); }

CTextFile& CTextFile::WriteFixed(double value, int decimals, bool showPlus, std::string_view decimalSymbol,
                                 bool trimZeros, bool keepSymbol)
{
    const auto format = [&](std::span<char> text)
    { return FormatFixed(text, value, decimals, showPlus, decimalSymbol, trimZeros, keepSymbol); };
    char usual[64];
    const std::size_t length = format(usual);
    if (length <= std::size(usual))
    {
        Write(usual, length);
        return *this;
    }
    std::string text(length, '\0');
    format(text);
    Write(text.data(), length);
    return *this;
}

void CTextFile::Write(const void* data, std::uint64_t size) { WriteFile(data, size); }

template <class Integer>
CTextFile& CTextFile::WriteNumber(Integer value)
{
    char digits[std::numeric_limits<Integer>::digits10 + 2];
    const char* const end = std::to_chars(digits, std::end(digits), value).ptr;
    Write(digits, static_cast<std::uint64_t>(end - digits));
    return *this;
}

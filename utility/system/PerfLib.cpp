#include "utility/system/PerfLib.h"

#include "utility/framework/String.h"
#include "utility/platform/formats/Bytes.h"
#include "utility/platform/Heap.h"
#include "utility/platform/Registry.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>

using utility::platform::Heap;
using utility::platform::Registry;
using utility::platform::formats::Bytes;
using utility::platform::formats::BytesAt;
using utility::platform::formats::RecordAt;
using utility::platform::formats::WideFromUtf16;

namespace
{

struct HeapFreer
{
    void operator()(void* block) const noexcept { Heap().Free(block); }
};

/// The value of a digit; -1 for any other character.
int DigitOf(wchar_t c)
{
    constexpr wchar_t zeros[] = {0x0030, 0x0660, 0x06F0, 0x0966, 0x09E6, 0x0A66, 0x0AE6, 0x0B66, 0x0C66,
                                 0x0CE6, 0x0D66, 0x0E50, 0x0ED0, 0x0F20, 0x1040, 0x17E0, 0x1810, 0xFF10};
    for (const wchar_t zero : zeros)
    {
        if (c >= zero && c - zero < 10)
            return static_cast<int>(c - zero);
    }
    return -1;
}

/// What `_wtoi` of Windows gives, in any locale.
int NumberOf(std::wstring_view text)
{
    constexpr std::wstring_view blanks =
        L"\t\n\v\f\r \x00A0\x1680\x2000\x2001\x2002\x2003\x2004\x2005\x2006\x2007\x2008\x2009\x200A\x2028\x2029\x202F"
        L"\x205F\x3000";
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    const bool isNegative = text.starts_with(L'-');
    text.remove_prefix(isNegative || text.starts_with(L'+') ? 1 : 0);
    std::int64_t number = 0;
    for (const wchar_t c : text)
    {
        const int digit = DigitOf(c);
        if (digit < 0)
            break;
        number = std::min(number * 10 + digit, std::int64_t{std::numeric_limits<int>::max()} + 1);
    }
    return static_cast<int>(std::min(isNegative ? -number : number, std::int64_t{std::numeric_limits<int>::max()}));
}

/// The text ahead of the next null, which goes with it.
std::wstring_view TakeText(std::wstring_view& rest)
{
    const std::wstring_view text = rest.substr(0, rest.find(L'\0'));
    rest.remove_prefix(std::min(text.size() + 1, rest.size()));
    return text;
}

}

CPerfLib::CPerfLib(unsigned short language, bool loadTitles, bool loadHelp) : m_nLanguage(language)
{
    if (loadTitles)
        GetPerformanceDataCounterTitles(m_titles);
    if (loadHelp)
        GetPerformanceDataCounterHelp(m_help);
}

CPerfLib::CPerfLib(const CPerfLib& other) = default;
CPerfLib::CPerfLib(CPerfLib&& other) noexcept = default;
CPerfLib& CPerfLib::operator=(const CPerfLib& other) = default;
CPerfLib& CPerfLib::operator=(CPerfLib&& other) noexcept = default;
CPerfLib::~CPerfLib() = default;

bool CPerfLib::GetPerformanceDataCounterTitles(std::map<std::wstring, int>& titles)
{
    return LoadTable(L"Counter", [&](int number, std::wstring_view text) { titles.emplace(text, number); });
}

bool CPerfLib::GetPerformanceDataCounterHelp(std::map<int, std::wstring>& help)
{
    return LoadTable(L"Help", [&](int number, std::wstring_view text) { help.emplace(number, text); });
}

template <class Insert>
bool CPerfLib::LoadTable(const wchar_t* valueName, Insert insert)
{
    const resource_ptr<HKEY> key = OpenPerfLib();
    DWORD size = 0;
    if (key == nullptr || Registry().RegQueryValueExW(key.get(), valueName, nullptr, nullptr, &size) != ERROR_SUCCESS)
        return false;
    // From here on the answer is deliberately fixed.
    const std::unique_ptr<void, HeapFreer> value(Heap().Allocate(size));
    if (value == nullptr ||
        Registry().RegQueryValueExW(key.get(), valueName, nullptr, value.get(), &size) != ERROR_SUCCESS)
        return true;
    const std::wstring pairs = WideFromUtf16(value.get(), size / sizeof(char16_t));
    std::wstring_view rest = pairs;
    for (std::wstring_view number = TakeText(rest); !number.empty() && !rest.empty(); number = TakeText(rest))
        insert(NumberOf(number), TakeText(rest));
    return true;
}

resource_ptr<HKEY> CPerfLib::OpenPerfLib()
{
    CStringW path;
    path.Format(L"%s\\%03x", m_szPerfLibKey, m_nLanguage);
    HKEY key = nullptr;
    Registry().RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, KEY_READ, key);
    return resource_ptr<HKEY>(key);
}

DWORD CPerfLib::GetTitleIndex(const wchar_t* name) const
{
    const auto found = name != nullptr ? m_titles.find(name) : m_titles.end();
    return found != m_titles.end() ? static_cast<DWORD>(found->second) : 0;
}

_PERF_OBJECT_TYPE* CPerfLib::FindObject(_PERF_DATA_BLOCK* block, DWORD titleIndex)
{
    constexpr std::size_t lengthAt = offsetof(_PERF_DATA_BLOCK, TotalByteLength);
    constexpr std::size_t sizeToHold = offsetof(_PERF_OBJECT_TYPE, ObjectNameTitleIndex) + sizeof(DWORD);

    if (block == nullptr)
        return nullptr;
    auto* const start = reinterpret_cast<std::byte*>(block);
    const Bytes bytes(start, RecordAt<DWORD>(Bytes(start, lengthAt + sizeof(DWORD)), lengthAt));
    std::uint64_t at = RecordAt<DWORD>(bytes, offsetof(_PERF_DATA_BLOCK, HeaderLength));
    DWORD left = RecordAt<DWORD>(bytes, offsetof(_PERF_DATA_BLOCK, NumObjectTypes));
    for (; left != 0; --left)
    {
        const Bytes object = BytesAt(bytes, at, sizeToHold);
        if (object.empty())
            return nullptr;
        if (RecordAt<DWORD>(object, offsetof(_PERF_OBJECT_TYPE, ObjectNameTitleIndex)) == titleIndex)
            return reinterpret_cast<_PERF_OBJECT_TYPE*>(start + at);
        const auto length = RecordAt<DWORD>(object, offsetof(_PERF_OBJECT_TYPE, TotalByteLength));
        if (length == 0)
            return nullptr;
        at += length;
    }
    return nullptr;
}

// Arbitrary bytes as a table of performance counters: the names and the helps are those of a slow, obvious reader of
// the pairs, and nothing outside the bytes is read.

#include "tests/support/ForwardingRegistry.h"
#include "utility/platform/formats/Utf16.h"
#include "utility/system/PerfLib.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace
{

/// For its lifetime every value is these bytes.
class RegistryOfBytes final : public support::ForwardingRegistry
{
public:
    RegistryOfBytes(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(static_cast<DWORD>(size)) {}

    LSTATUS RegOpenKeyExW(HKEY, const wchar_t*, DWORD, HKEY& key) override
    {
        key = reinterpret_cast<HKEY>(this);
        return 0;
    }
    LSTATUS RegQueryValueExW(HKEY, const wchar_t*, DWORD*, void* data, DWORD* size) override
    {
        if (data != nullptr && m_size != 0)
            std::memcpy(data, m_data, m_size);
        *size = m_size;
        return 0;
    }
    LSTATUS RegCloseKey(HKEY) override { return 0; }

private:
    const std::uint8_t* m_data;
    DWORD m_size;
};

/// The texts of the pairs, up to an empty number or the end.
std::vector<std::u16string> TextsOfPairs(const std::uint8_t* data, std::size_t size)
{
    std::vector<std::u16string> texts;
    std::u16string number;
    std::u16string text;
    bool isInText = false;
    for (std::size_t at = 0; at + 1 < size; at += 2)
    {
        const auto unit = static_cast<char16_t>(data[at] | data[at + 1] << 8);
        std::u16string& present = isInText ? text : number;
        if (unit != 0)
        {
            present += unit;
            continue;
        }
        if (isInText)
            texts.push_back(text);
        else if (number.empty())
            return texts;
        else
            text.clear();
        number.clear();
        isInText = !isInText;
    }
    if (isInText && !text.empty())
        texts.push_back(text);
    return texts;
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const RegistryOfBytes registry(data, size);
    CPerfLib names(9, false, false);
    std::map<std::wstring, int> titles;
    std::map<int, std::wstring> help;
    if (!names.GetPerformanceDataCounterTitles(titles) || !names.GetPerformanceDataCounterHelp(help))
        std::abort();

    std::set<std::wstring> expected;
    for (const std::u16string& text : TextsOfPairs(data, size))
        expected.insert(utility::platform::formats::WideFromUtf16(text.data(), text.size()));
    std::set<std::wstring> found;
    std::set<int> numbers;
    for (const auto& [name, number] : titles)
    {
        found.insert(name);
        numbers.insert(number);
    }
    if (found != expected)
        std::abort();
    for (const auto& [number, text] : help)
    {
        if (!expected.contains(text))
            std::abort();
        numbers.erase(number);
    }
    return numbers.empty() ? 0 : (std::abort(), 0);
}

#include "examples/settings/Keys.h"

#include <boost/algorithm/string/predicate.hpp>

#include <algorithm>
#include <utility>

using utility::platform::Registry;

namespace keys
{

namespace
{

constexpr DWORD longestName = 16384; // of a value, with its terminator; those of keys are shorter

void Check(const Place& place, LSTATUS status)
{
    if (status != ERROR_SUCCESS)
        throw Failure{place.name, status};
}

void CheckUnlessAbsent(const Place& place, LSTATUS status)
{
    if (status != ERROR_FILE_NOT_FOUND)
        Check(place, status);
}

resource_ptr<HKEY> Open(const Place& place, DWORD access)
{
    HKEY key = nullptr;
    Check(place, Registry().RegOpenKeyExW(place.hive, place.subKey.c_str(), access, key));
    return resource_ptr<HKEY>(key);
}

/// All names that an enumeration gives, sorted: its own order is the store's matter.
template <class Enumeration>
std::vector<std::wstring> Names(const Place& place, Enumeration enumerate)
{
    const resource_ptr<HKEY> key = Open(place, KEY_READ);
    std::vector<std::wstring> names;
    std::wstring name(longestName, L'\0');
    DWORD length = longestName;
    LSTATUS status = ERROR_SUCCESS;
    while ((status = enumerate(key.get(), static_cast<DWORD>(names.size()), name.data(), length)) == ERROR_SUCCESS)
        names.emplace_back(name, 0, std::exchange(length, longestName));
    if (status != ERROR_NO_MORE_ITEMS)
        Check(place, status);
    std::ranges::sort(names);
    return names;
}

void AddTree(const Place& place, std::vector<regtext::Key>& tree)
{
    tree.push_back(Read(place));
    for (const std::wstring& name : SubKeys(place))
        AddTree(Locate(place.name + L'\\' + name), tree);
}

}

Place Locate(const std::wstring& name)
{
    static const struct
    {
        const wchar_t* name;
        const wchar_t* abbreviation;
        HKEY hive;
    } hives[] = {{L"HKEY_CURRENT_USER", L"HKCU", HKEY_CURRENT_USER},
                 {L"HKEY_LOCAL_MACHINE", L"HKLM", HKEY_LOCAL_MACHINE}};

    const std::wstring path = name.substr(0, name.find_last_not_of(L'\\') + 1);
    const std::size_t end = std::min(path.find(L'\\'), path.size());
    const std::wstring first = path.substr(0, end);
    for (const auto& each : hives)
    {
        if (boost::algorithm::iequals(first, each.name) || boost::algorithm::iequals(first, each.abbreviation))
            return {each.hive, each.name + path.substr(end), path.substr(std::min(end + 1, path.size()))};
    }
    return {nullptr, name, {}};
}

std::vector<std::wstring> SubKeys(const Place& place)
{
    return Names(place, [](HKEY key, DWORD index, wchar_t* name, DWORD& length)
                 { return Registry().RegEnumKeyExW(key, index, name, length); });
}

regtext::Key Read(const Place& place)
{
    regtext::Key key{place.name, {}, false};
    regtext::Value value;
    for (const std::wstring& name :
         Names(place, [](HKEY opened, DWORD index, wchar_t*found, DWORD&length)
               { return Registry().RegEnumValueW(opened, index, found, length, nullptr, nullptr, nullptr); }))
    {
        if (ReadValue(place, name, value))
            key.values.push_back(value);
    }
    return key;
}

bool ReadValue(const Place& place, const std::wstring& name, regtext::Value& value)
{
    const resource_ptr<HKEY> key = Open(place, KEY_READ);
    value = {name, REG_NONE, {}, false};
    DWORD size = 0;
    LSTATUS status = ERROR_SUCCESS;
    do
    {
        value.data.resize(size);
        status = Registry().RegQueryValueExW(key.get(), name.c_str(), &value.type, value.data.data(), &size);
    } while (status == ERROR_MORE_DATA);
    CheckUnlessAbsent(place, status);
    value.data.resize(size);
    return status == ERROR_SUCCESS;
}

std::vector<regtext::Key> Tree(const Place& place)
{
    std::vector<regtext::Key> tree;
    AddTree(place, tree);
    return tree;
}

void Apply(const regtext::Key& key)
{
    const Place place = Locate(key.path);
    if (key.isDeletion)
    {
        CheckUnlessAbsent(place, Registry().SHDeleteKeyW(place.hive, place.subKey.c_str()));
        return;
    }
    HKEY opened = nullptr;
    Check(place, Registry().RegCreateKeyExW(place.hive, place.subKey.c_str(),
                                            key.values.empty() ? KEY_READ : KEY_READ | KEY_WRITE, opened));
    const resource_ptr<HKEY> owner(opened);
    for (const regtext::Value& value : key.values)
    {
        if (value.isDeletion)
            CheckUnlessAbsent(place, Registry().RegDeleteValueW(opened, value.name.c_str()));
        else
            Check(place, Registry().RegSetValueExW(opened, value.name.c_str(), value.type, value.data.data(),
                                                   static_cast<DWORD>(value.data.size())));
    }
}

void DeleteTree(const Place& place) { Check(place, Registry().SHDeleteKeyW(place.hive, place.subKey.c_str())); }

void DeleteValue(const Place& place, const std::wstring& name)
{
    Check(place, Registry().RegDeleteValueW(Open(place, KEY_READ | KEY_WRITE).get(), name.c_str()));
}

}

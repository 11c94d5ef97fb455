#pragma once

// Keys by their full names, and whole trees of them.
//
//     const keys::Place place = keys::Locate(L"HKCU\\SOFTWARE\\Selvane");
//     const std::string file = regtext::Text(keys::Tree(place));
//
// What the store refuses is thrown as a keys::Failure.

#include "examples/settings/RegText.h"

namespace keys
{

/// What the store refused, and for which key.
struct Failure
{
    std::wstring key;
    LSTATUS status = ERROR_SUCCESS;
};

/// Where a key is.
struct Place
{
    HKEY hive = nullptr; ///< null for a name that begins with no hive
    std::wstring name;   ///< in full, as in HKEY_CURRENT_USER\SOFTWARE
    std::wstring subKey; ///< empty for the hive itself
};

/// A key's place by its name, which begins with HKEY_CURRENT_USER or HKCU, HKEY_LOCAL_MACHINE or HKLM, in any case.
Place Locate(const std::wstring& name);

/// The names of the keys under a key, sorted.
std::vector<std::wstring> SubKeys(const Place& place);

/// A key with its values, sorted by their names.
regtext::Key Read(const Place& place);

/// A value; false if there is none of this name.
bool ReadValue(const Place& place, const std::wstring& name, regtext::Value& value);

/// A key, and then all under it.
std::vector<regtext::Key> Tree(const Place& place);

/// Makes or deletes the key, and its values as they say. What is to be deleted may be absent.
void Apply(const regtext::Key& key);

/// Deletes a key with all under it, or a value. These have to be there.
void DeleteTree(const Place& place);
void DeleteValue(const Place& place, const std::wstring& name);

}

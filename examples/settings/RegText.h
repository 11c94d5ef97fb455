#pragma once

// The text form of registry files, as the registry's own editor writes and reads it.
//
//     Windows Registry Editor Version 5.00
//
//     [HKEY_CURRENT_USER\SOFTWARE\Selvane\Mill\Options]
//     "Tolerance"=hex:7b,14,ae,47,e1,7a,84,3f
//     "Name"="text with \"quotes\" and a \\"
//     "Gone"=-
//
// Every value survives, whatever its type tag and its bytes. Any thread may call.

#include "utility/Utility.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace regtext
{

/// A value to be set, or to be deleted.
struct Value
{
    std::wstring name; ///< empty for the unnamed one
    DWORD type = REG_NONE;
    std::string data; ///< the bytes as stored; texts are UTF-16
    bool isDeletion = false;

    bool operator==(const Value&) const = default;
};

/// A key to be made, with values, or to be deleted with all under it.
struct Key
{
    std::wstring path; ///< the hive's name first
    std::vector<Value> values;
    bool isDeletion = false;

    bool operator==(const Key&) const = default;
};

/// What is wrong with a file, and in which line, counted from 1.
class Malformed : public std::runtime_error
{
public:
    Malformed(std::size_t line, const std::string& reason);
};

/// What a file asks for, in its order. The file is UTF-16 with a byte order mark or UTF-8; the older form is read too,
/// the one that begins with REGEDIT4, as UTF-8. Throws Malformed for a file that is not right from its first to its
/// last line.
std::vector<Key> Parse(std::string_view bytes);

/// The file that asks for these keys, in UTF-16. Throws std::runtime_error for a key that the form has no way to
/// name: one with a line end in its path.
std::string Text(const std::vector<Key>& keys);

/// A value as it stands in a file, in one line.
std::wstring Line(const Value& value);

/// A text as the data of a value, with its terminator.
std::string DataOfText(std::wstring_view text);

}

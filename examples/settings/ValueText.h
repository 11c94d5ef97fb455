#pragma once

// Values as a user types and sees them.
//
//     regtext::Value value = valuetext::Typed(L"Depth", "REG_DWORD", {L"0x10"});
//     std::wstring seen = valuetext::Plain(value); // 16

#include "examples/settings/RegText.h"

namespace valuetext
{

/// The types that Typed knows, separated by commas.
std::string Types();

/// A value of a named type from its parts: one text, any number of texts for REG_MULTI_SZ, a number in decimal or with
/// 0x ahead, pairs of hexadecimal digits for REG_BINARY. Throws std::invalid_argument with what is wrong.
regtext::Value Typed(const std::wstring& name, const std::string& type, const std::vector<std::wstring>& parts);

/// The same the other way round: a text up to its first null, the texts of REG_MULTI_SZ in lines, a number in decimal,
/// all else in hexadecimal digits, and NumberIn behind them.
std::wstring Plain(const regtext::Value& value);

/// The number that the bytes of a REG_BINARY are as a double, in brackets and with a blank ahead; empty where they are
/// none, or hardly were one: not eight, no number or one of a magnitude that settings do not have.
std::wstring NumberIn(const regtext::Value& value);

}

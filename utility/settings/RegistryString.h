#pragma once

// The words that make up the names of the application's keys, which CQLMAppSettings puts together.

/// The words of names of keys.
namespace RegistryString
{

inline constexpr const wchar_t* m_szRegistryKey = L"Selvane"; ///< the company
inline constexpr const wchar_t* m_szRootSection = L"2022.0";  ///< the folder of this version

}

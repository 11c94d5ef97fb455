#pragma once

// The user: their names, where they have logged on, what they may do.
//
//     std::wstring name;
//     if (GetUserFullName(name))
//         Show(L"Written by " + name);
//
// A text that is not found is left as it was, and the result is false. Linux knows the accounts that the system's own
// services tell of, by what their descriptions have ahead of the first comma; it has no servers, so a form that names
// one is false there.
//
// Any thread may call. Nothing throws but for lack of memory.

#include "utility/platform/Export.h"

#include <string>

/// The name of the domain's controller. A machine that finds none deliberately faults: it takes that for a success
/// without a name. Linux is false.
UTILITY_API bool GetDCServerName(std::wstring& name);

/// The full name of the user; empty if it is not found.
[[nodiscard]] UTILITY_API std::wstring GetUserFullName();
UTILITY_API bool GetUserFullName(std::wstring& fullName);

/// The full name of a user of this machine, or else of the server that the calling user has logged on at.
UTILITY_API bool GetUserFullName(const wchar_t* user, std::wstring& fullName);

/// The full name of a user of a server; a null server is this machine.
UTILITY_API bool GetUserFullName(const wchar_t* server, const wchar_t* user, std::wstring& fullName);

/// The server that the user has logged on at. Linux is false.
UTILITY_API bool GetUserLogonServer(std::wstring& server);

/// Whether the user is an administrator. On Windows, whether the administrators are among the groups of the process,
/// even where that group is denied, and false for a process of more groups than 1,024 bytes hold, both deliberately. On
/// Linux, whether the process acts as the superuser, or is in one of the groups sudo and wheel.
[[nodiscard]] UTILITY_API bool UserHasAdministrativeRights();

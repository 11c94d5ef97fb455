#pragma once

// The database that the calling thread works for, so that code deep down can log to it without being handed it.
//
//     SetThreadDatabase(job.Database());
//     LogFile(LogSeverityWarning, GetThreadDatabase()) << L"No tool";
//
// Any thread may call; each has a value of its own, null at first, and a new thread inherits none. Nothing here throws.

#include "utility/platform/Export.h"

/// Of the host application; never looked into.
class CEntityDatabase;

/// The database stays the caller's. Does nothing if the system had no slot left when the library was loaded.
UTILITY_API void SetThreadDatabase(CEntityDatabase* database) noexcept;

/// What the calling thread stored; null if it stored nothing, or if the system had no slot left.
UTILITY_API CEntityDatabase* GetThreadDatabase() noexcept;

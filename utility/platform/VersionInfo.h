#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

namespace utility::platform
{

/// Version records of module files, under the names that the system has for them. Any thread may call. An operation
/// that fails leaves its reason in LastError().
///
/// On Linux a record is read from the resources of a PE file, or from the section of a 64-bit ELF file where
/// utility_version_record() of the CMake package puts it.
class VersionInfoService
{
public:
    virtual ~VersionInfoService() = default;

    /// How many bytes the record of a file takes when it is read; 0 on failure, which a file without one is (1813).
    virtual DWORD GetFileVersionInfoSizeW(const wchar_t* path) = 0;

    /// Reads the record of a file into `data`, which has room for `size` bytes and is aligned for any type.
    virtual bool GetFileVersionInfoW(const wchar_t* path, DWORD size, void* data) = 0;

    /// Looks up a value in a record that was read: `subBlock` is a path of keys, each behind a backslash and found in
    /// any case, and "\" is the fixed information. `value` gets its place in `data`, which for a text is wide text that
    /// ends with a null, and `length` its size in bytes, of a text in stored characters with the null. Both are
    /// unspecified on failure.
    virtual bool VerQueryValueW(const void* data, const wchar_t* subBlock, void*& value, UINT& length) = 0;
};

ServiceSlot<VersionInfoService>& VersionInfoSlot() noexcept;
inline VersionInfoService& VersionInfo() noexcept { return VersionInfoSlot().Get(); }

}

#pragma once

#include "utility/platform/Service.h"
#include "utility/platform/Types.h"

#include <cstddef>
#include <cstdint>

namespace utility::platform
{

// The records of a library of zip archives, as zip32z64.dll takes them. Texts are UTF-8.

struct ZipCallbacks
{
    int (*output)(char* text, DWORD size); ///< gives the size
    int (*firstAnswer)();
    int (*secondAnswer)();
    void* none[3];
};
static_assert(sizeof(ZipCallbacks) == 48);

struct ZipCommand
{
    std::int32_t count; ///< of the entries
    const char* archive;
    const char* const* entries; ///< files, and options, which begin with a hyphen
    void* none;
};
static_assert(sizeof(ZipCommand) == 32 && offsetof(ZipCommand, archive) == 8 && offsetof(ZipCommand, entries) == 16);

struct ZipOptions
{
    void* unused0;
    const char* rootFolder; ///< what relative names of files are in
    std::int32_t unused16[8];
    std::int32_t noDirectoryEntries;
    std::int32_t unused52[3];
    std::int32_t quiet;
    std::int32_t unused68[2];
    std::int32_t noFolders; ///< names are stored without them
    std::int32_t unused80[28];
    char level; ///< of compression, as a digit
    char unused193[7];
};
static_assert(sizeof(ZipOptions) == 200 && offsetof(ZipOptions, rootFolder) == 8);
static_assert(offsetof(ZipOptions, noDirectoryEntries) == 48 && offsetof(ZipOptions, quiet) == 64);
static_assert(offsetof(ZipOptions, noFolders) == 76 && offsetof(ZipOptions, level) == 192);

/// The option that names are UTF-8, as the first entry of a command.
inline constexpr const char* zipNamesAreUtf8 = "-UN=UTF8";

/// The two operations of that library. It is loaded with the first call of ZpInit, which comes ahead of ZpArchive.
/// One archive at a time on Windows. Linux has them as codec/Zip.h tells; there the callbacks are not called, and of
/// the options root folder and level count, the others being always on.
class ZipLibraryService
{
public:
    virtual ~ZipLibraryService() = default;

    /// 0 for a failure, which a library that is not there is too. Each call looks anew.
    virtual int ZpInit(ZipCallbacks& callbacks) = 0;

    /// 0 for success.
    virtual int ZpArchive(const ZipCommand& command, ZipOptions& options) = 0;
};

ServiceSlot<ZipLibraryService>& ZipLibrarySlot() noexcept;
inline ZipLibraryService& ZipLibrary() noexcept { return ZipLibrarySlot().Get(); }

}

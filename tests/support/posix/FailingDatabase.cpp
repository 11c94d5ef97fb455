#include "tests/support/posix/FailingDatabase.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <sqlite3.h>

namespace support
{

namespace
{

using enum FailingDatabase::Failure;

constinit thread_local FailingDatabase* current = nullptr;
constinit thread_local std::int64_t slept = 0;

// SQLite's way to the system: the one it comes with, and a file of its behind each of ours.

sqlite3_vfs* systemFiles = nullptr;

struct File
{
    sqlite3_file base;
    sqlite3_file* System() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

/// A call on a file that may fail with an error of its own: the same call on the system's file.
template <auto Method, int error, class... Arguments>
int Forward(sqlite3_file* file, Arguments... arguments)
{
    if (FailingDatabase::Fails(inputOutput))
        return error;
    sqlite3_file* const system = reinterpret_cast<File*>(file)->System();
    return (system->pMethods->*Method)(system, arguments...);
}

/// One that does not fail.
template <auto Method, class... Arguments>
auto Pass(sqlite3_file* file, Arguments... arguments)
{
    sqlite3_file* const system = reinterpret_cast<File*>(file)->System();
    return (system->pMethods->*Method)(system, arguments...);
}

int Read(sqlite3_file* file, void* bytes, int size, sqlite3_int64 offset)
{
    constexpr sqlite3_int64 firstPage = 4096; // without it there is no database
    if (offset >= firstPage && FailingDatabase::Fails(lostBytes))
        return SQLITE_IOERR_CORRUPTFS;
    return Forward<&sqlite3_io_methods::xRead, SQLITE_IOERR_READ>(file, bytes, size, offset);
}

int Write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset)
{
    if (FailingDatabase::Fails(full))
        return SQLITE_FULL;
    return Forward<&sqlite3_io_methods::xWrite, SQLITE_IOERR_WRITE>(file, bytes, size, offset);
}

/// No machine stops while the tests run: nothing has to reach the disk.
int Sync(sqlite3_file*, int) { return FailingDatabase::Fails(inputOutput) ? SQLITE_IOERR_FSYNC : SQLITE_OK; }

int Lock(sqlite3_file* file, int level)
{
    if (FailingDatabase::Fails(busy))
        return SQLITE_BUSY;
    return Forward<&sqlite3_io_methods::xLock, SQLITE_IOERR_LOCK>(file, level);
}

int LockShared(sqlite3_file* file, int offset, int count, int flags)
{
    if ((flags & SQLITE_SHM_LOCK) == 0)
        return Pass<&sqlite3_io_methods::xShmLock>(file, offset, count, flags);
    if (FailingDatabase::Fails(busy))
        return SQLITE_BUSY;
    return Forward<&sqlite3_io_methods::xShmLock, SQLITE_IOERR_SHMLOCK>(file, offset, count, flags);
}

constexpr sqlite3_io_methods methods = {
    2,
    Pass<&sqlite3_io_methods::xClose>,
    Read,
    Write,
    Forward<&sqlite3_io_methods::xTruncate, SQLITE_IOERR_TRUNCATE, sqlite3_int64>,
    Sync,
    Forward<&sqlite3_io_methods::xFileSize, SQLITE_IOERR_FSTAT, sqlite3_int64*>,
    Lock,
    Pass<&sqlite3_io_methods::xUnlock, int>,
    Forward<&sqlite3_io_methods::xCheckReservedLock, SQLITE_IOERR_CHECKRESERVEDLOCK, int*>,
    Pass<&sqlite3_io_methods::xFileControl, int, void*>,
    Pass<&sqlite3_io_methods::xSectorSize>,
    Pass<&sqlite3_io_methods::xDeviceCharacteristics>,
    Forward<&sqlite3_io_methods::xShmMap, SQLITE_IOERR_SHMMAP, int, int, int, void volatile**>,
    LockShared,
    Pass<&sqlite3_io_methods::xShmBarrier>,
    Pass<&sqlite3_io_methods::xShmUnmap, int>,
    nullptr,
    nullptr,
};

int CannotOpen()
{
    errno = EMFILE;
    return SQLITE_CANTOPEN;
}

int Open(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* flagsGot)
{
    file->pMethods = nullptr;
    if (FailingDatabase::Fails(inputOutput))
        return CannotOpen();
    const int result = systemFiles->xOpen(systemFiles, name, reinterpret_cast<File*>(file)->System(), flags, flagsGot);
    if (result == SQLITE_OK)
        file->pMethods = &methods;
    return result;
}

int Delete(sqlite3_vfs*, const char* name, int syncFolder)
{
    return FailingDatabase::Fails(inputOutput) ? SQLITE_IOERR_DELETE
                                               : systemFiles->xDelete(systemFiles, name, syncFolder);
}

int Access(sqlite3_vfs*, const char* name, int flags, int* result)
{
    return FailingDatabase::Fails(inputOutput) ? SQLITE_IOERR_ACCESS
                                               : systemFiles->xAccess(systemFiles, name, flags, result);
}

int FullPath(sqlite3_vfs*, const char* name, int size, char* path)
{
    return FailingDatabase::Fails(inputOutput) ? CannotOpen()
                                               : systemFiles->xFullPathname(systemFiles, name, size, path);
}

int Sleep(sqlite3_vfs*, int microseconds)
{
    if (current != nullptr)
        return microseconds;
    slept += microseconds;
    return systemFiles->xSleep(systemFiles, microseconds);
}

// SQLite's way to memory.

sqlite3_mem_methods systemMemory;

void* Allocate(int size) { return FailingDatabase::Fails(memory) ? nullptr : systemMemory.xMalloc(size); }

void* Reallocate(void* block, int size)
{
    return FailingDatabase::Fails(memory) ? nullptr : systemMemory.xRealloc(block, size);
}

constinit bool installed = false;

/// Before anything is opened, as the user's hive is when the library is loaded: memory cannot be changed later.
[[gnu::constructor(101)]] void Install()
{
    sqlite3_mem_methods failingMemory;
    bool isInstalled = sqlite3_config(SQLITE_CONFIG_GETMALLOC, &systemMemory) == SQLITE_OK;
    failingMemory = systemMemory;
    failingMemory.xMalloc = Allocate;
    failingMemory.xRealloc = Reallocate;
    isInstalled = isInstalled && sqlite3_config(SQLITE_CONFIG_MALLOC, &failingMemory) == SQLITE_OK;
    systemFiles = sqlite3_vfs_find(nullptr);
    static sqlite3_vfs failingFiles = *systemFiles;
    failingFiles.szOsFile += static_cast<int>(sizeof(File));
    failingFiles.zName = "failing";
    failingFiles.xOpen = Open;
    failingFiles.xDelete = Delete;
    failingFiles.xAccess = Access;
    failingFiles.xFullPathname = FullPath;
    failingFiles.xSleep = Sleep;
    installed = isInstalled && sqlite3_vfs_register(&failingFiles, 1) == SQLITE_OK;
}

}

FailingDatabase::FailingDatabase(Failure failure, Lasting lasting, int at) noexcept
    : m_failure(failure), m_lasting(lasting), m_at(at)
{
    EXPECT_TRUE(installed);
    current = this;
}

FailingDatabase::~FailingDatabase() { current = nullptr; }

std::int64_t FailingDatabase::Slept() noexcept { return slept; }

bool FailingDatabase::Fails(Failure failure) noexcept
{
    if (current == nullptr || current->m_failure != failure)
        return false;
    const int made = ++current->m_made;
    return made == current->m_at || (made > current->m_at && current->m_lasting == Lasting::forGood);
}

}

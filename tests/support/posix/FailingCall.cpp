#include "tests/support/posix/FailingCall.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <linux/serial.h>
#include <new>
#include <poll.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/types.h>
#include <sys/xattr.h>
#include <unistd.h>
#include <utility>

namespace support
{

namespace
{

constinit thread_local FailingCall* latest = nullptr;
constinit thread_local AheadOfCall* awaiting = nullptr;

}

FailingCall::FailingCall(std::string_view name, int error, int at) noexcept
    : m_name(name), m_error(error), m_at(at), m_earlier(latest)
{
    latest = this;
}

FailingCall::~FailingCall() { latest = m_earlier; }

bool FailingCall::Fails(std::string_view name) noexcept
{
    AheadOfCall::Tell(name);
    bool fails = false;
    for (FailingCall* each = latest; each != nullptr; each = each->m_earlier)
    {
        if (each->m_name != name || (++each->m_made != each->m_at && each->m_at != always))
            continue;
        errno = each->m_error;
        each->m_hasFailed = fails = true;
    }
    return fails;
}

AheadOfCall::AheadOfCall(std::string_view name, std::function<void()> work) : m_name(name), m_work(std::move(work))
{
    awaiting = this;
}

AheadOfCall::~AheadOfCall() { awaiting = nullptr; }

void AheadOfCall::Tell(std::string_view name)
{
    if (awaiting == nullptr || awaiting->m_isDone || awaiting->m_name != name)
        return;
    awaiting->m_isDone = true;
    awaiting->m_work();
}

}

using support::FailingCall;

// The linker gives what calls NAME the function __wrap_NAME instead, and knows the system's as __real_NAME. Each name
// stands in the linker's options of the tests as well.

#define FAILING_CALL(result, failure, name, parameters, ...)                                                           \
    extern "C" result __real_##name parameters;                                                                        \
    extern "C" result __wrap_##name parameters                                                                         \
    {                                                                                                                  \
        return FailingCall::Fails(#name) ? (failure) : __real_##name(__VA_ARGS__);                                     \
    }

FAILING_CALL(int, -1, access, (const char* path, int kind), path, kind)
FAILING_CALL(void*, nullptr, dlopen, (const char* file, int mode), file, mode)
FAILING_CALL(void*, nullptr, dlsym, (void* library, const char* name), library, name)
FAILING_CALL(int, -1, fchmod, (int file, mode_t mode), file, mode)
FAILING_CALL(ssize_t, -1, fgetxattr, (int file, const char* name, void* value, std::size_t size), file, name, value,
             size)
FAILING_CALL(int, -1, fsetxattr, (int file, const char* name, const void* value, std::size_t size, int flags), file,
             name, value, size, flags)
FAILING_CALL(int, -1, flock, (int file, int operation), file, operation)
FAILING_CALL(int, -1, fstat, (int file, struct stat* status), file, status)
FAILING_CALL(int, -1, fsync, (int file), file)
FAILING_CALL(int, -1, ftruncate, (int file, off_t length), file, length)
FAILING_CALL(int, -1, getentropy, (void* bytes, std::size_t size), bytes, size)
FAILING_CALL(ssize_t, -1, getxattr, (const char* path, const char* name, void* value, std::size_t size), path, name,
             value, size)
FAILING_CALL(int, -1, link, (const char* file, const char* place), file, place)
FAILING_CALL(ssize_t, -1, listxattr, (const char* path, char* names, std::size_t size), path, names, size)
FAILING_CALL(off_t, -1, lseek, (int file, off_t offset, int origin), file, offset, origin)
FAILING_CALL(int, -1, lstat, (const char* path, struct stat* status), path, status)
FAILING_CALL(int, -1, memfd_create, (const char* name, unsigned int flags), name, flags)
FAILING_CALL(void*, MAP_FAILED, mmap, (void* at, std::size_t length, int access, int flags, int file, off_t offset), at,
             length, access, flags, file, offset)
FAILING_CALL(int, -1, munmap, (void* at, std::size_t length), at, length)
FAILING_CALL(int, -1, poll, (pollfd * waited, nfds_t count, int milliseconds), waited, count, milliseconds)
FAILING_CALL(ssize_t, -1, pread, (int file, void* bytes, std::size_t size, off_t at), file, bytes, size, at)
FAILING_CALL(int, errno, pthread_key_create, (pthread_key_t * key, void (*destroy)(void*)), key, destroy)
FAILING_CALL(ssize_t, -1, pwrite, (int file, const void* bytes, std::size_t size, off_t at), file, bytes, size, at)
FAILING_CALL(ssize_t, -1, read, (int file, void* bytes, std::size_t size), file, bytes, size)
FAILING_CALL(ssize_t, -1, readlink, (const char* link, char* text, std::size_t size), link, text, size)
FAILING_CALL(ssize_t, -1, recv, (int socket, void* bytes, std::size_t size, int flags), socket, bytes, size, flags)
FAILING_CALL(int, -1, rename, (const char* from, const char* to), from, to)
FAILING_CALL(int, -1, renameat2, (int fromFolder, const char* from, int toFolder, const char* to, unsigned int flags),
             fromFolder, from, toFolder, to, flags)
FAILING_CALL(ssize_t, -1, sendmsg, (int socket, const msghdr* message, int flags), socket, message, flags)
FAILING_CALL(int, -1, socketpair, (int domain, int type, int protocol, int* ends), domain, type, protocol, ends)
FAILING_CALL(int, -1, stat, (const char* path, struct stat* status), path, status)
FAILING_CALL(int, -1, statx, (int folder, const char* path, int flags, unsigned int fields, struct statx* status),
             folder, path, flags, fields, status)
FAILING_CALL(int, -1, syncfs, (int file), file)
FAILING_CALL(int, -1, unlink, (const char* path), path)
FAILING_CALL(pid_t, -1, waitpid, (pid_t process, int* status, int options), process, status, options)

#undef FAILING_CALL

extern "C" int __real_close(int file);
extern "C" int __wrap_close(int file)
{
    const int result = __real_close(file);
    return FailingCall::Fails("close") ? -1 : result;
}

extern "C" ssize_t __real_write(int file, const void* bytes, std::size_t size);
extern "C" ssize_t __wrap_write(int file, const void* bytes, std::size_t size)
{
    return FailingCall::Fails("write") ? -1 : __real_write(file, bytes, std::min(size, support::ShortWrites::Most()));
}

extern "C" int __real_statfs(const char* path, struct statfs* system);
extern "C" int __wrap_statfs(const char* path, struct statfs* system)
{
    const int result = FailingCall::Fails("statfs") ? -1 : __real_statfs(path, system);
    if (const std::optional<long> kind = support::FileSystemOfKind::Kind())
        system->f_type = *kind;
    return result;
}

// Each of these has one argument more, or none, which as a word is handed on alike.

extern "C" int __real_open(const char* path, int flags, ...);
extern "C" int __wrap_open(const char* path, int flags, ...)
{
    std::va_list more;
    va_start(more, flags);
    const auto mode = va_arg(more, mode_t);
    va_end(more);
    return FailingCall::Fails("open") ? -1 : __real_open(path, flags, mode);
}

extern "C" int __real_clone(int (*body)(void*), void* stack, int flags, void* argument, ...);
extern "C" int __wrap_clone(int (*body)(void*), void* stack, int flags, void* argument, ...)
{
    return FailingCall::Fails("clone") ? -1 : __real_clone(body, stack, flags, argument);
}

extern "C" int __real_fcntl(int file, int command, ...);
extern "C" int __wrap_fcntl(int file, int command, ...)
{
    std::va_list more;
    va_start(more, command);
    void* const argument = va_arg(more, void*);
    va_end(more);
    return FailingCall::Fails("fcntl") ? -1 : __real_fcntl(file, command, argument);
}

extern "C" int __real_ioctl(int file, unsigned long request, ...);
extern "C" int __wrap_ioctl(int file, unsigned long request, ...)
{
    std::va_list more;
    va_start(more, request);
    void* const argument = va_arg(more, void*);
    va_end(more);
    const std::optional<int> type = support::SerialPortOfType::Type();
    if (request != TIOCGSERIAL || !type)
        return __real_ioctl(file, request, argument);
    static_cast<serial_struct*>(argument)->type = *type;
    return 0;
}

// The memory that C++ asks for. Its failure is no errno value but an exception.

void* RealNew(std::size_t size) asm("__real__Znwm");
void* FailingNew(std::size_t size) asm("__wrap__Znwm");
void* FailingNew(std::size_t size)
{
    if (FailingCall::Fails("operator new"))
        throw std::bad_alloc();
    return RealNew(size);
}

void* RealQuietNew(std::size_t size, const std::nothrow_t& quiet) asm("__real__ZnwmRKSt9nothrow_t");
void* FailingQuietNew(std::size_t size, const std::nothrow_t& quiet) asm("__wrap__ZnwmRKSt9nothrow_t");
void* FailingQuietNew(std::size_t size, const std::nothrow_t& quiet)
{
    return FailingCall::Fails("operator new") ? nullptr : RealQuietNew(size, quiet);
}

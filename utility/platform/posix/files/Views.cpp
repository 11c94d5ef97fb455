#include "utility/platform/posix/files/Views.h"

#include "utility/platform/posix/error/Errno.h"

#include <new>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace utility::platform::posix
{

void* Views::Map(int descriptor, std::uint64_t length)
{
    // A file that ends within a page is followed by zeros. Behind one that fills its last page stands a page of
    // zeros of our own, so that the byte behind the file is readable there too.
    const auto pageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    const bool needsPageBehind = length % pageSize == 0;
    const std::size_t total = length + (needsPageBehind ? pageSize : 0);
    void* const reserved =
        needsPageBehind ? ::mmap(nullptr, total, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) : nullptr;
    if (reserved == MAP_FAILED)
    {
        Fail();
        return nullptr;
    }
    void* const base =
        ::mmap(reserved, length, PROT_READ, MAP_SHARED | (needsPageBehind ? MAP_FIXED : 0), descriptor, 0);
    const DWORD reason = base == MAP_FAILED  ? ErrorOfErrno(errno)
                         : !Add(base, total) ? ERROR_NOT_ENOUGH_MEMORY
                                             : ERROR_SUCCESS;
    if (reason != ERROR_SUCCESS)
    {
        if (void* const mapped = base != MAP_FAILED ? base : reserved)
            ::munmap(mapped, total);
        SetLastError(reason);
        return nullptr;
    }
    ::madvise(base, length, MADV_SEQUENTIAL);
    return base;
}

bool Views::Unmap(const void* view)
{
    Lengths::node_type taken = Take(view);
    if (!taken)
    {
        SetLastError(ERROR_INVALID_ADDRESS);
        return false;
    }
    if (::munmap(const_cast<void*>(view), taken.mapped()) == 0)
        return true;
    Fail();
    PutBack(std::move(taken));
    return false;
}

/// False where memory is short.
bool Views::Add(const void* base, std::size_t length)
{
    const std::lock_guard lock(m_mutex);
    try
    {
        m_lengths[base] = length;
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

/// Forgets a view; empty if there is none at this address.
Views::Lengths::node_type Views::Take(const void* base)
{
    const std::lock_guard lock(m_mutex);
    return m_lengths.extract(base);
}

void Views::PutBack(Lengths::node_type view)
{
    const std::lock_guard lock(m_mutex);
    m_lengths.insert(std::move(view));
}

}

#include "utility/platform/posix/files/Views.h"

#include "utility/platform/posix/error/Errno.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <sys/stat.h>
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
    const DWORD reason = base == MAP_FAILED                            ? ErrorOfErrno(errno)
                         : !Add(base, {total, IdentityOf(descriptor)}) ? ERROR_NOT_ENOUGH_MEMORY
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
    ByBase::node_type taken = Take(view);
    if (!taken)
    {
        SetLastError(ERROR_INVALID_ADDRESS);
        return false;
    }
    if (::munmap(const_cast<void*>(view), taken.mapped().length) == 0)
        return true;
    Fail();
    PutBack(std::move(taken));
    return false;
}

bool Views::IsViewed(int descriptor)
{
    const Identity file = IdentityOf(descriptor);
    const std::lock_guard lock(m_mutex);
    return std::ranges::any_of(m_views, [&](const auto& each) { return each.second.file == file; });
}

Views::Identity Views::IdentityOf(int descriptor)
{
    struct stat status;
    return ::fstat(descriptor, &status) == 0 ? Identity(status.st_dev, status.st_ino) : Identity();
}

/// False where memory is short.
bool Views::Add(const void* base, const View& view)
{
    const std::lock_guard lock(m_mutex);
    try
    {
        m_views.insert_or_assign(base, view);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

/// Forgets a view; empty if there is none at this address.
Views::ByBase::node_type Views::Take(const void* base)
{
    const std::lock_guard lock(m_mutex);
    return m_views.extract(base);
}

void Views::PutBack(ByBase::node_type view)
{
    const std::lock_guard lock(m_mutex);
    m_views.insert(std::move(view));
}

}

#include "utility/platform/posix/files/Views.h"

#include "utility/platform/posix/error/Errno.h"

#include <cstddef>
#include <map>
#include <mutex>
#include <new>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace utility::platform::posix
{

namespace
{

std::size_t PageSize()
{
    static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

/// The mapped length of each view: the system wants it back, and the interface does not carry it.
class Views
{
    using Lengths = std::map<const void*, std::size_t>;

public:
    using View = Lengths::node_type;

    /// False where memory is short.
    bool Add(const void* base, std::size_t length)
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
    View Take(const void* base)
    {
        const std::lock_guard lock(m_mutex);
        return m_lengths.extract(base);
    }

    void PutBack(View view)
    {
        const std::lock_guard lock(m_mutex);
        m_lengths.insert(std::move(view));
    }

private:
    std::mutex m_mutex;
    Lengths m_lengths;
};

Views& AllViews()
{
    static Views views;
    return views;
}

}

void* MapView(int descriptor, std::uint64_t length)
{
    // A file that ends within a page is followed by zeros. Behind one that fills its last page stands a page of
    // zeros of our own, so that the byte behind the file is readable there too.
    const bool needsPageBehind = length % PageSize() == 0;
    const std::size_t total = length + (needsPageBehind ? PageSize() : 0);
    void* const reserved =
        needsPageBehind ? ::mmap(nullptr, total, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) : nullptr;
    if (reserved == MAP_FAILED)
    {
        Fail();
        return nullptr;
    }
    void* const base =
        ::mmap(reserved, length, PROT_READ, MAP_SHARED | (needsPageBehind ? MAP_FIXED : 0), descriptor, 0);
    const DWORD reason = base == MAP_FAILED             ? ErrorOfErrno(errno)
                         : !AllViews().Add(base, total) ? ERROR_NOT_ENOUGH_MEMORY
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

bool UnmapView(const void* view)
{
    Views::View taken = AllViews().Take(view);
    if (!taken)
    {
        SetLastError(ERROR_INVALID_ADDRESS);
        return false;
    }
    if (::munmap(const_cast<void*>(view), taken.mapped()) == 0)
        return true;
    Fail();
    AllViews().PutBack(std::move(taken));
    return false;
}

}

#pragma once

#include "utility/platform/Service.h"

#include <cstddef>

namespace utility::platform
{

/// The C library's heap. Any thread may call.
class HeapService
{
public:
    virtual ~HeapService() = default;

    /// Memory for an object of any ordinary type, not cleared; null if there is none left. Nobody is asked to make
    /// room.
    [[nodiscard]] virtual void* Allocate(std::size_t size) = 0;

    /// Takes back what Allocate gave. Null is ignored.
    virtual void Free(void* block) = 0;
};

ServiceSlot<HeapService>& HeapSlot() noexcept;
inline HeapService& Heap() noexcept { return HeapSlot().Get(); }

/// Called when there was no memory for `size` bytes. A result other than 0 says that it is worth trying again. It may
/// throw instead.
using NewHandler = int (*)(std::size_t size);

/// Makes `handler` the one of the process, or removes it with null, and returns the previous one. Plain `new` calls it
/// too, but does not say how much it wanted: the size is 0 then, and a result of 0 makes it throw std::bad_alloc.
/// A handler of std::set_new_handler counts as one whose result is 1. Any thread may call.
NewHandler SetNewHandler(NewHandler handler) noexcept;

/// The handler of the process, null if there is none.
NewHandler QueryNewHandler() noexcept;

/// Throws a std::bad_alloc whose text is "bad allocation" on every system.
[[noreturn]] void ThrowBadAllocation();

}

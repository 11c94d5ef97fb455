#include "utility/platform/Heap.h"

#include "utility/platform/SystemService.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace utility::platform
{

namespace
{

class BadAllocation final : public std::bad_alloc
{
public:
    const char* what() const noexcept override { return "bad allocation"; }
};

class StandardHeap final : public HeapService
{
public:
    void* Allocate(std::size_t size) override { return std::malloc(size); }
    void Free(void* block) override { std::free(block); }
};

std::atomic<NewHandler> sizedHandler;
std::atomic<std::new_handler> standardHandler;

// The process has one handler, that of the C++ runtime; these two are what either kind looks like to the other.

void CallSizedHandler()
{
    if (sizedHandler.load()(0) == 0)
        ThrowBadAllocation();
}

int CallStandardHandler(std::size_t)
{
    standardHandler.load()();
    return 1;
}

}

ServiceSlot<HeapService>& HeapSlot() noexcept { return SystemService<HeapService, StandardHeap>::Slot(); }

NewHandler SetNewHandler(NewHandler handler) noexcept
{
    const NewHandler previous = QueryNewHandler();
    if (handler == nullptr)
        std::set_new_handler(nullptr);
    else if (handler == &CallStandardHandler)
        std::set_new_handler(standardHandler);
    else
    {
        sizedHandler = handler;
        std::set_new_handler(&CallSizedHandler);
    }
    return previous;
}

NewHandler QueryNewHandler() noexcept
{
    const std::new_handler installed = std::get_new_handler();
    if (installed == nullptr)
        return nullptr;
    if (installed == &CallSizedHandler)
        return sizedHandler;
    standardHandler = installed;
    return &CallStandardHandler;
}

void ThrowBadAllocation() { throw BadAllocation(); }

}

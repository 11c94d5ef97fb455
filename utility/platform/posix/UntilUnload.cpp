#include "utility/platform/UntilUnload.h"

#include <cstdlib>
#include <dlfcn.h>
#include <unwind.h>

namespace utility::platform
{

namespace
{

enum class Caller
{
    unknown,
    exit,
    dlclose
};

template <class Function>
bool IsIn(Function* function, _Unwind_Context* frame)
{
    return _Unwind_GetRegionStart(frame) == reinterpret_cast<_Unwind_Word>(function);
}

_Unwind_Reason_Code FindCaller(_Unwind_Context* frame, void* found)
{
    auto& caller = *static_cast<Caller*>(found);
    caller = IsIn(&::dlclose, frame) ? Caller::dlclose : IsIn(&::exit, frame) ? Caller::exit : Caller::unknown;
    return caller == Caller::unknown ? _URC_NO_REASON : _URC_END_OF_STACK;
}

/// Comes behind the destructors of the module's static objects. The end of the process and dlclose both do it, and in
/// the same way: which of them it is, is told by the calls that led here, of which the latest counts. Where they do not
/// tell, nothing is destroyed.
[[gnu::destructor(101)]] void EndModule()
{
    Caller caller = Caller::unknown;
    _Unwind_Backtrace(&FindCaller, &caller);
    if (caller == Caller::dlclose)
        RunTearDowns();
}

}

}

#include "utility/platform/UntilUnload.h"

#include <dlfcn.h>
#include <string_view>
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

/// The name of the function that a frame belongs to; empty for one that its module does not export. Its address would
/// not tell it: to a program that takes that of dlclose, and so to all of its modules, it is a place in the program.
std::string_view FunctionOf(_Unwind_Context* frame)
{
    auto* const begin = reinterpret_cast<void*>(_Unwind_GetRegionStart(frame));
    Dl_info info;
    return ::dladdr(begin, &info) != 0 && info.dli_saddr == begin ? info.dli_sname : std::string_view();
}

_Unwind_Reason_Code FindCaller(_Unwind_Context* frame, void* found)
{
    const std::string_view function = FunctionOf(frame);
    auto& caller = *static_cast<Caller*>(found);
    caller = function == "dlclose" ? Caller::dlclose : function == "exit" ? Caller::exit : Caller::unknown;
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

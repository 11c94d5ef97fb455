#include "utility/platform/posix/symbols/Elfutils.h"

#include <dlfcn.h>

namespace utility::platform::posix
{

namespace
{

struct Library
{
    Library()
    {
        void* const library = ::dlopen("libdw.so.1", RTLD_LAZY | RTLD_LOCAL);
        isWhole = library != nullptr;
        if (!isWhole)
            return;
#define UTILITY_FIND(function)                                                                                         \
    functions.function = reinterpret_cast<decltype(functions.function)>(::dlsym(library, #function));                  \
    isWhole = isWhole && functions.function != nullptr;
        UTILITY_ELFUTILS(UTILITY_FIND)
#undef UTILITY_FIND
    }

    Elfutils functions;
    bool isWhole;
};

}

const Elfutils* Elfutils::Loaded()
{
    // Deliberately kept until the process ends, which it is about to.
    static const Library library;
    return library.isWhole ? &library.functions : nullptr;
}

}

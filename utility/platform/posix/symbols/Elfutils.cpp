#include "utility/platform/posix/symbols/Elfutils.h"

#include "utility/platform/posix/modules/SystemLibrary.h"

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
#define UTILITY_FIND(function) isWhole = isWhole && FindFunction(library, #function, functions.function);
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

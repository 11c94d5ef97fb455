// Makes a program that is not position-independent the place of dlclose and exit: for all modules of the process these
// functions then begin in the program.

#include <cstdlib>
#include <dlfcn.h>

namespace
{

[[gnu::constructor]] void TakeAddresses()
{
    [[maybe_unused]] int (*volatile const close)(void*) = &::dlclose;
    [[maybe_unused]] void (*volatile const end)(int) = &std::exit;
}

}

// The library, which tells on the error stream of each step of its load: its name when it has been done, and "-" and its
// name when it has been undone. The linker has the library's objects call what is here.

#include "utility/platform/LoadOrder.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <utility>

using namespace utility::platform;

#define LOAD_STEP "_ZN7utility8platform8LoadStepC1ENS0_9LoadOrderEPFvvES4_"

void DoneBy(LoadStep* step, LoadOrder place, void (*begin)(), void (*end)()) asm("__real_" LOAD_STEP);
void DoneInstead(LoadStep* step, LoadOrder place, void (*begin)(), void (*end)()) asm("__wrap_" LOAD_STEP);

namespace
{

constexpr std::size_t count = restIsMade - platformIsReady;

const char* NameOf(std::size_t number)
{
    switch (platformIsReady + number)
    {
    case allocatorSlotIsTaken:
        return "slot";
    case loadingThreadHasAnAllocator:
        return "allocator";
    case libraryResourcesAreLoaded:
        return "resources";
    case languageTableIsMade:
        return "languages";
    case databaseSlotIsTaken:
        return "database";
    case settingsMapIsMade:
        return "settings";
    case productNameIsMade:
        return "product";
    case unitNamesAreLoaded:
        return "units";
    case faultFilterIsInstalled:
        return "filter";
    case decimalSymbolIsSet:
        return "symbol";
    default:
        return "?";
    }
}

constinit std::array<void (*)(), count> ends{};

template <std::size_t number>
void EndAndTell()
{
    ends[number]();
    std::fprintf(stderr, " -%s", NameOf(number));
}

template <std::size_t... numbers>
void (*EndTelling(std::size_t number, std::index_sequence<numbers...>))()
{
    static constexpr std::array<void (*)(), count> all{&EndAndTell<numbers>...};
    return all[number];
}

}

void DoneInstead(LoadStep* step, LoadOrder place, void (*begin)(), void (*end)())
{
    const std::size_t number = place - platformIsReady;
    ends[number] = end;
    DoneBy(step, place, begin, EndTelling(number, std::make_index_sequence<count>()));
    std::fprintf(stderr, " %s", NameOf(number));
}

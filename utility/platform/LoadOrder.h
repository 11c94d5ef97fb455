#pragma once

// What the library does when it is loaded, in one list. A program gets the steps of those rooms that it uses of the
// static library, and all of them of the shared one. The static objects of a host come behind them, at whatever
// priority above these, and may use everything.
//
// At unload each step is undone, the last one first. At the end of the process none is.

#include "utility/platform/UntilUnload.h"

namespace utility::platform
{

/// The priorities of initialisers. The lowest comes first.
enum LoadOrder
{
    /// What any step may need of the system, and what holds it still while the process forks.
    platformIsReady = 101,

    // The step                          what undoes it
    allocatorSlotIsTaken,        ///< the slot is given back
    loadingThreadHasAnAllocator, ///< the allocator is destroyed, with all of its memory, if the thread had none before
    libraryResourcesAreLoaded,   ///< the satellite of the display language is unloaded
    checksumTableHasItsPlace,    ///< nothing: the table is a part of the library's own data, as is the decoder's
    languageTableIsMade,         ///< the table is destroyed
    databaseSlotIsTaken,         ///< the slot is given back
    settingsMapIsMade,           ///< the keys of the settings are closed
    productNameIsMade,           ///< the name is destroyed
    unitNamesAreLoaded,          ///< the names are destroyed
    faultFilterIsInstalled,      ///< the earlier filter is put back
    decimalSymbolIsSet,          ///< the symbol is destroyed

    /// What is made here so that no fork finds another thread making it.
    restIsMade
};

/// A step of a room, at the place that the room's code stands at:
///
///     [[gnu::init_priority(unitNamesAreLoaded)]] LoadStep namesStep(unitNamesAreLoaded, &Load, &Destroy);
class LoadStep : TearDown
{
public:
    /// Begins the step. `end`, which undoes it, comes at unload, ahead of what undoes all that was made until then. The
    /// place is for who traces the load: the system has it by the initialiser's priority.
    LoadStep(LoadOrder place, void (*begin)(), void (*end)());

private:
    static void End(TearDown& step) { static_cast<LoadStep&>(step).m_end(); }

    void (*m_end)();
};

}

#include "utility/logging/ThreadDatabase.h"

#include "utility/platform/ThreadSlot.h"
#include "utility/platform/UntilUnload.h"

namespace utility::detail
{

extern platform::ThreadSlot threadDatabaseSlot;
constinit platform::ThreadSlot threadDatabaseSlot;

}

namespace
{

/// The slot is taken when the library is loaded, or by a static object of the host that comes first.
utility::platform::ThreadSlot& Slot()
{
    static utility::platform::UntilUnload<utility::platform::ThreadSlot::Lifetime> lifetime(
        utility::detail::threadDatabaseSlot);
    return utility::detail::threadDatabaseSlot;
}

[[gnu::constructor(103)]] void TakeSlot() { Slot(); }

}

void SetThreadDatabase(CEntityDatabase* database) noexcept { Slot().SetValue(database); }

CEntityDatabase* GetThreadDatabase() noexcept { return static_cast<CEntityDatabase*>(Slot().Value()); }

#include "utility/logging/ThreadDatabase.h"

#include "utility/platform/ThreadSlot.h"

namespace utility::detail
{

extern platform::ThreadSlot threadDatabaseSlot;
constinit platform::ThreadSlot threadDatabaseSlot;

}

namespace
{

const utility::platform::ThreadSlot::Lifetime slotLifetime(utility::detail::threadDatabaseSlot);

}

void SetThreadDatabase(CEntityDatabase* database) noexcept { utility::detail::threadDatabaseSlot.SetValue(database); }

CEntityDatabase* GetThreadDatabase() noexcept
{
    return static_cast<CEntityDatabase*>(utility::detail::threadDatabaseSlot.Value());
}

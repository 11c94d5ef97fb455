#include "utility/logging/ThreadDatabase.h"

#include "utility/platform/LoadOrder.h"
#include "utility/platform/ThreadSlot.h"

namespace utility::detail
{

extern platform::ThreadSlot threadDatabaseSlot;
constinit platform::ThreadSlot threadDatabaseSlot;

}

using utility::detail::threadDatabaseSlot;

namespace
{

using namespace utility::platform;

void TakeSlot() { threadDatabaseSlot.Take(); }

void GiveSlotBack() { threadDatabaseSlot.GiveBack(); }

[[gnu::init_priority(databaseSlotIsTaken)]] LoadStep slotStep(databaseSlotIsTaken, &TakeSlot, &GiveSlotBack);

}

void SetThreadDatabase(CEntityDatabase* database) noexcept { threadDatabaseSlot.SetValue(database); }

CEntityDatabase* GetThreadDatabase() noexcept { return static_cast<CEntityDatabase*>(threadDatabaseSlot.Value()); }

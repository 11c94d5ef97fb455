#include "utility/crash/DelayLoad.h"

#include "utility/files/Places.h"

utility::platform::DelayLoadResult ZeloDliHook(unsigned int notification, DelayLoadInfo* info)
{
    constexpr unsigned int failedLoad = 3;
    if (notification != failedLoad)
        return nullptr;
    const auto file = GetExecutablePath() / utility::platform::LibraryOf(*info).filename();
    return reinterpret_cast<utility::platform::DelayLoadResult>(utility::platform::LoadCode(file));
}

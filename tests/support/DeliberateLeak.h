#pragma once

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace support
{

/// What the thread allocates while this lives may be lost.
#ifdef __SANITIZE_ADDRESS__
using DeliberateLeak = __lsan::ScopedDisabler;
#else
struct DeliberateLeak
{
    ~DeliberateLeak() {} // NOLINT(modernize-use-equals-default): so that nobody is told of an unused object
};
#endif

}

#pragma once

/// UTILITY_API marks what a shared build of the library exports. A host that links the static library defines
/// UTILITY_STATIC; the package's targets do it by themselves.
#if defined(UTILITY_STATIC)
#define UTILITY_API
#elif defined(_WIN32)
#if defined(UTILITY_EXPORTS)
#define UTILITY_API __declspec(dllexport)
#else
#define UTILITY_API __declspec(dllimport)
#endif
#else
#define UTILITY_API __attribute__((visibility("default")))
#endif

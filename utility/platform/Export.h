#pragma once

// C has the language that it needs.
#if defined(__cplusplus) && __cplusplus <= 201703L
#error "Utility's headers are C++20: compile with -std=c++20, or later"
#endif

// UTILITY_API marks what a shared build of the library exports, UTILITY_LOCAL what it keeps of a class that it exports:
// private members that no inline function uses, which Windows exports with their class. A host that links the static
// library defines UTILITY_STATIC; the package's targets do it by themselves.

#if defined(UTILITY_STATIC)
#define UTILITY_API
#define UTILITY_LOCAL
#elif defined(_WIN32)
#if defined(UTILITY_EXPORTS)
#define UTILITY_API __declspec(dllexport)
#else
#define UTILITY_API __declspec(dllimport)
#endif
#define UTILITY_LOCAL
#else
/// Marks what is exported.
#define UTILITY_API __attribute__((visibility("default")))
/// Marks what is kept.
#define UTILITY_LOCAL __attribute__((visibility("hidden")))
#endif

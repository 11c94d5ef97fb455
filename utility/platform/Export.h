#pragma once

// C has the language that it needs.
#if defined(__cplusplus) && __cplusplus <= 201703L
#error "Utility's headers are C++20: compile with -std=c++20, or later"
#endif

// UTILITY_API marks what a shared build of the library exports, UTILITY_LOCAL what it keeps of a class that it exports:
// private members that no inline function uses, which Windows exports with their class. UTILITY_INLINE marks a function
// that callers inline and that a shared build exports all the same, for the programs that were built when it was not
// inline. A host that links the static library defines UTILITY_STATIC; the package's targets do it by themselves.

#if defined(UTILITY_STATIC)
#define UTILITY_API
#define UTILITY_LOCAL
#define UTILITY_INLINE __attribute__((always_inline)) inline
#elif defined(_WIN32)
#if defined(UTILITY_EXPORTS)
#define UTILITY_API __declspec(dllexport)
#define UTILITY_INLINE __declspec(dllexport) __attribute__((used, always_inline)) inline
#else
#define UTILITY_API __declspec(dllimport)
#define UTILITY_INLINE __attribute__((always_inline)) inline
#endif
#define UTILITY_LOCAL
#else
/// Marks what is exported.
#define UTILITY_API __attribute__((visibility("default")))
/// Marks what is kept.
#define UTILITY_LOCAL __attribute__((visibility("hidden")))
/// Marks what is both inlined and exported.
#if defined(UTILITY_EXPORTS)
#define UTILITY_INLINE __attribute__((visibility("default"), used, always_inline)) inline
#else
#define UTILITY_INLINE __attribute__((always_inline)) inline
#endif
#endif

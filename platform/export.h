// ZEBAPI_EXPORT marks the library's exported classes and functions; everything else is hidden.
#pragma once

/// @def ZEBAPI_EXPORT
/// Exports from the library, imports into a host; nothing for a host of the static library (ZEBAPI_STATIC).
#if defined(_WIN32) && defined(ZEBAPI_BUILDING)
#define ZEBAPI_EXPORT __declspec(dllexport)
#elif defined(_WIN32) && !defined(ZEBAPI_STATIC)
#define ZEBAPI_EXPORT __declspec(dllimport)
#elif defined(_WIN32)
#define ZEBAPI_EXPORT
#else
#define ZEBAPI_EXPORT __attribute__((visibility("default")))
#endif

#pragma once

/// LUM_CORE_API marks what the library exports; everything else is hidden. One macro serves the
/// platform layer and the library above it, since both are built into one shared object.
#if defined(_WIN32) && defined(LUM_SHARED)
#if defined(LUM_BUILDING_LUMCORE)
#define LUM_CORE_API __declspec(dllexport)
#else
#define LUM_CORE_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define LUM_CORE_API __attribute__((visibility("default")))
#else
#define LUM_CORE_API
#endif

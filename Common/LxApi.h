// Export/import decoration for the library's class interface.
//
// On Windows the library is the DLL LumexCoreD3D12.dll: its own sources are compiled with LUMEX_BUILDING_DLL and
// export every LX_API class and function; applications that link the import library see LUMEX_SHARED and import
// them. Everywhere else (the native static library) LX_API only sets default visibility.
#pragma once

#if defined(_WIN32) && defined(LUMEX_BUILDING_DLL)
#define LX_API __declspec(dllexport)
#elif defined(_WIN32) && defined(LUMEX_SHARED)
#define LX_API __declspec(dllimport)
#elif defined(__GNUC__)
#define LX_API __attribute__((visibility("default")))
#else
#define LX_API
#endif

// Explicit template instantiations exported from the DLL; elsewhere default visibility already applies.
#if defined(_WIN32)
#define LX_TEMPLATE_API LX_API
#else
#define LX_TEMPLATE_API
#endif

// For the few hot helpers (string hash and compare) where the call costs as much as the work.
#if defined(__GNUC__)
#define LX_FORCE_INLINE inline __attribute__((always_inline))
#else
#define LX_FORCE_INLINE inline
#endif

// printf-style format checking for the library's formatting functions (argument numbers count 'this').
// mingw builds use its C99 printf (__USE_MINGW_ANSI_STDIO), so %zu and %lld are checked as GNU formats there.
#if defined(__MINGW32__)
#define LX_PRINTF_FORMAT(fmtIndex, firstArg) __attribute__((format(gnu_printf, fmtIndex, firstArg)))
#elif defined(__GNUC__)
#define LX_PRINTF_FORMAT(fmtIndex, firstArg) __attribute__((format(printf, fmtIndex, firstArg)))
#else
#define LX_PRINTF_FORMAT(fmtIndex, firstArg)
#endif

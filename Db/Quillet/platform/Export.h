// The one macro through which the library exports its classes, statics and functions.
#pragma once

#if defined(_MSC_VER)
// Exported classes have members and bases of the standard library, whose classes are not exported: host and
// library are built with the same one.
#pragma warning(disable : 4251 4275)
#endif

#if defined(QUILLET_INTERNAL)  // for what is linked with the library's own objects, as its tests are
#define QUILLET_API
#elif defined(_WIN32)
#if defined(QUILLET_BUILDING)
#define QUILLET_API __declspec(dllexport)
#else
#define QUILLET_API __declspec(dllimport)
#endif
#else
#define QUILLET_API __attribute__((visibility("default")))
#endif

// Marks a member function as printf-like where the compiler can check it. The indexes count from 1 and
// include the implicit object parameter.
#if defined(__GNUC__)
#define QUILLET_PRINTF_LIKE(text, first) __attribute__((__format__(__printf__, text, first)))
#else
#define QUILLET_PRINTF_LIKE(text, first)
#endif

// YARVBOOK_API marks the classes and functions that libYarvBook exports. Everything
// else is hidden: the library is built with -fvisibility=hidden.
#pragma once

#if defined(_WIN32)
#if defined(YARVBOOK_BUILDING)
#define YARVBOOK_API __declspec(dllexport)
#else
#define YARVBOOK_API __declspec(dllimport)
#endif
#else
#define YARVBOOK_API __attribute__((visibility("default")))
#endif

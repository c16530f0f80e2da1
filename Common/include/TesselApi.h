// How the module's functions are declared, on either side of its boundary. With Microsoft's
// compiler the declaration exports or imports; elsewhere the export definition file does, and a
// client's linker finds the functions through the import library.
#pragma once

#if defined(_MSC_VER) && defined(TESSELSLB_BUILD)
#define TESSELSLB_API __declspec(dllexport)
#elif defined(_MSC_VER)
#define TESSELSLB_API __declspec(dllimport)
#else
#define TESSELSLB_API
#endif

// The underlying type of an enumeration. It is part of the interface in C++; C11 cannot name one.
#ifdef __cplusplus
#define TESSELSLB_AS_INT : int
#define TESSELSLB_AS_ULONG : unsigned long
#else
#define TESSELSLB_AS_INT
#define TESSELSLB_AS_ULONG
#endif

// Both processes. TESSELSLB_API marks the functions that the module exports. With Microsoft's
// compiler it exports them from the module and imports them into a client. With other compilers it
// is empty: the export definition file exports the functions, and a client's linker finds them
// through the import library.
#pragma once

#if defined(_MSC_VER) && defined(TESSELSLB_BUILD)
#define TESSELSLB_API __declspec(dllexport)
#elif defined(_MSC_VER)
#define TESSELSLB_API __declspec(dllimport)
#else
#define TESSELSLB_API
#endif

// The underlying types of enumerations. In C++ they are part of the interface. C11 has no syntax
// for them.
#ifdef __cplusplus
#define TESSELSLB_AS_INT : int
#define TESSELSLB_AS_ULONG : unsigned long
#else
#define TESSELSLB_AS_INT
#define TESSELSLB_AS_ULONG
#endif

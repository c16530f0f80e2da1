// Used by the client and by the broker's host. TESSELSLB_API marks the functions that
// TesselSLB_x64.dll exports. For Microsoft's compiler the macro exports the functions when the DLL
// is built, and imports them when a client is built. For other compilers the macro is empty: the
// DLL's export definition file exports the functions, and a client's linker finds them through the
// import library.
#pragma once

#if defined(_MSC_VER) && defined(TESSELSLB_BUILD)
#define TESSELSLB_API __declspec(dllexport)
#elif defined(_MSC_VER)
#define TESSELSLB_API __declspec(dllimport)
#else
#define TESSELSLB_API
#endif

// In C++ these macros give an enumeration a fixed size and signedness. In C they are empty, because
// C11 has no syntax for this.
#ifdef __cplusplus
#define TESSELSLB_AS_INT : int
#define TESSELSLB_AS_ULONG : unsigned long
#else
#define TESSELSLB_AS_INT
#define TESSELSLB_AS_ULONG
#endif

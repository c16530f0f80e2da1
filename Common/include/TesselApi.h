// Used by the client and by the broker's host. TESSELSLB_API marks the functions that
// TesselSLB_x64.dll exports. Microsoft's compiler exports them from this module and imports them
// into a client. For other compilers the macro is empty: the export definition file exports the
// functions, and a client's linker finds them through the import library.
#pragma once

#if defined(_MSC_VER) && defined(TESSELSLB_BUILD)
#define TESSELSLB_API __declspec(dllexport)
#elif defined(_MSC_VER)
#define TESSELSLB_API __declspec(dllimport)
#else
#define TESSELSLB_API
#endif

// These macros set the size and the signedness of an enumeration in C++. C11 cannot set them.
#ifdef __cplusplus
#define TESSELSLB_AS_INT : int
#define TESSELSLB_AS_ULONG : unsigned long
#else
#define TESSELSLB_AS_INT
#define TESSELSLB_AS_ULONG
#endif

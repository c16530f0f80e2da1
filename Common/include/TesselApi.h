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

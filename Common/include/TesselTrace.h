// Any process that loads the module. Its log, opened to the caller.
#pragma once

#include <wchar.h>

#include "TesselApi.h"

#ifdef __cplusplus
extern "C" {
#endif

// Writes "SL: " and `text` (zero-terminated UTF-16) into the module's log. Levels: -1 VERBOSE,
// 0 INFO, 1 WARNING, 2 ERROR; any other level is taken as VERBOSE. A null text is reported in the
// log as an error of its own. Callable from any thread; keeps the thread's last error.
TESSELSLB_API void DTrace(int level, const wchar_t* text);

#ifdef __cplusplus
}
#endif

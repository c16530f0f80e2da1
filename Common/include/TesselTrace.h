// Runs in any process that loads TesselSLB_x64.dll (the module). Writes a caller's own lines to the
// log of the module. For C11 and C++17.
#pragma once

#include <wchar.h>

#include "TesselApi.h"

#ifdef __cplusplus
extern "C" {
#endif

// Writes "SL: " and `text` (zero-terminated UTF-16) to the module's log, as UTF-8. The log goes to
// the debugger output and to event tracing. Levels: -1 VERBOSE, 0 INFO, 1 WARNING, 2 ERROR. Any
// other level counts as VERBOSE.
//
// By default the debugger output shows only lines of the level FATAL, which is above ERROR. To see
// more, set the user's environment variable TESSEL_LOG_LEVEL, for example to INFO. The module reads
// the variable from the registry, so a value that is set only in a console has no effect.
//
// "SL: " and the text together are cut at 4095 bytes. A null text is logged as an error. Any
// thread may call this function. It does not change the thread's last error (GetLastError).
TESSELSLB_API void DTrace(int level, const wchar_t* text);

#ifdef __cplusplus
}
#endif

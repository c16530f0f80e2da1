// Any process that loads the module. Its log, for the caller's own lines. C11 and C++17.
#pragma once

#include <wchar.h>

#include "TesselApi.h"

#ifdef __cplusplus
extern "C" {
#endif

// Writes "SL: " and `text` (zero-terminated UTF-16) into the module's log, as UTF-8. Levels:
// -1 VERBOSE, 0 INFO, 1 WARNING, 2 ERROR. Any other level counts as VERBOSE. The line appears only
// if the log shows its level: without the setting TESSEL_LOG_LEVEL it does not. "SL: " and the text
// are cut at 4095 bytes. A null text is logged as an error. Callable from any thread; keeps the
// thread's last error.
TESSELSLB_API void DTrace(int level, const wchar_t* text);

#ifdef __cplusplus
}
#endif

// Where json reports a violated condition: the module sets a hook that logs it.
// Used in every process that loads the module.
#pragma once

namespace base {

using CheckFailedHook = void (*)(const char* condition);

// Null, as at the start, reports nothing. May be called from any thread.
void SetCheckFailedHook(CheckFailedHook hook);

void ReportCheckFailed(const char* condition);

}  // namespace base

// json/ has no log. It reports a violated condition to a hook, and the module sets one that logs
// it. Used in every process that loads the module.
#pragma once

namespace base {

using CheckFailedHook = void (*)(const char* condition);

// Null, the initial value, reports nothing. May be called from any thread.
void SetCheckFailedHook(CheckFailedHook hook);

void ReportCheckFailed(const char* condition);

}  // namespace base

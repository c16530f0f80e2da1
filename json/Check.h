// Runs in the client and in the broker. Reports a condition that should hold but does not. The code
// in json/ has no log, so it calls a hook, which the module sets and which logs the condition.
#pragma once

namespace base {

using CheckFailedHook = void (*)(const char* condition);

// The initial hook is null, which reports nothing. Any thread may call this function.
void SetCheckFailedHook(CheckFailedHook hook);

void ReportCheckFailed(const char* condition);

}  // namespace base

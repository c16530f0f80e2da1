// Runs in the client and in the broker. json/ has no log, so it reports a failed check to a hook.
// The module sets a hook that logs it.
#pragma once

namespace base {

using CheckFailedHook = void (*)(const char* condition);

// The initial hook is null, which reports nothing. Any thread may call this function.
void SetCheckFailedHook(CheckFailedHook hook);

void ReportCheckFailed(const char* condition);

}  // namespace base

#include "tools/inspector/Interruption.h"

#include <windows.h>

#include "tools/inspector/InspectorError.h"

namespace {

bool reportsInJson = false;

// Windows runs this function in a thread of its own. Another thread may be in a call to the broker
// that could last a minute. TerminateProcess does not wait for that thread.
BOOL CALLBACK EndAtOnce(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  PrintError({ExitCode::kInterrupted, "ended by Ctrl-C",
              "nothing was released: the broker keeps the objects of this run until it ends"},
             reportsInJson);
  ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(ExitCode::kInterrupted));
  return TRUE;
}

}  // namespace

void EndAtOnceOnCtrlC(bool json) {
  reportsInJson = json;
  ::SetConsoleCtrlHandler(&EndAtOnce, TRUE);
}

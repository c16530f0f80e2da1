// Runs in the client (soak_client). Decides which codes a call may return, given what its broker
// did during the call.
#pragma once

#include "Nonsense.h"
#include "SharedState.h"

namespace soak {

struct Operation {
  const char* name;
  Layout answer;
  bool searches = false;  // true if the call asks another broker after the status "not served"
};

struct Call {
  Operation operation;
  int status;     // the code that the broker answers if `process` is the broker's own process
  DWORD process;  // the process id in the SLElemData that was passed to the call
};

// Counts a call that returned `code`. The broker's timeline was in phase number `began` when the
// call began, and in phase number `ended` when it ended. Reports the call if no phase from `began`
// to `ended` allows the code. Returns true if the broker itself, not an impostor, answered with
// success. Then the outputs of the call must be right.
bool Judge(SharedState& state, const Timeline& timeline, const Call& call, long began, long ended,
           int code);

// Counts and reports a call whose outputs were wrong.
void ReportWrong(SharedState& state, const Operation& operation);

}  // namespace soak

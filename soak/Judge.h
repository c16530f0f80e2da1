// Runs in the client. Decides which codes a call may return, given what its broker did during the
// call.
#pragma once

#include "Nonsense.h"
#include "SharedState.h"

namespace soak {

struct Operation {
  const char* name;
  Layout answer;
  bool searches = false;  // true if the status "not served" makes the call ask another broker
};

struct Call {
  Operation operation;
  int status;     // the code to expect if the record names the process of the running broker
  DWORD process;  // the process that the record names
};

// Counts a call that began and ended at the moments `began` and `ended` of its broker's timeline.
// Reports the call if no phase between these moments allows its code. Returns true if the real
// broker answered with success, so that the outputs of the call must be right.
bool Judge(SharedState& state, const Timeline& timeline, const Call& call, long began, long ended,
           int code);

// Counts and reports a call whose outputs were wrong.
void ReportWrong(SharedState& state, const Operation& operation);

}  // namespace soak

// What a call of a client may end with, after what its broker did meanwhile.
#pragma once

#include "Nonsense.h"
#include "SharedState.h"

namespace soak {

struct Operation {
  const char* name;
  Layout answer;
  bool searches = false;  // goes on to the next scheme when a broker does not serve the content
};

struct Call {
  Operation operation;
  int status;     // what a broker deserves to be told by that knows the record's process as its own
  DWORD process;  // of the record
};

// Counts a call that began and ended at these moments of its broker's timeline, and reports it when
// it did not deserve its code. True when the broker itself has answered it with success, so that
// what it brought has to be right.
bool Judge(SharedState& state, const Timeline& timeline, const Call& call, long began, long ended,
           int code);

// A call that brought something wrong.
void ReportWrong(SharedState& state, const Operation& operation);

}  // namespace soak

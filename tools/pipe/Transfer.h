// Part of SceneBroker, tessel and the endurance programs. Waits for a read, a write or a connection
// of a pipe, and gives it up when the time is over.
#pragma once

#include <windows.h>

#include "tools/shared/Handle.h"

namespace tools {

// Serves one operation after another, on one thread. The pipe must be open for overlapped
// operations.
class Transfer {
 public:
  struct Outcome {
    DWORD error;  // ERROR_SUCCESS, WAIT_TIMEOUT if the operation was given up, or another error
    DWORD bytes;  // how many bytes were transferred, also with ERROR_MORE_DATA
  };

  Transfer();

  // Pass this pointer to the system's function that starts the operation.
  OVERLAPPED* Overlapped() { return &overlapped_; }

  // Waits for the end of the operation. `started` is the result of the function that has started
  // it. Gives the operation up when the time is over or the event `orEvent` is set.
  Outcome Finish(HANDLE pipe, BOOL started, DWORD milliseconds, HANDLE orEvent = nullptr);

 private:
  const Handle done_;
  OVERLAPPED overlapped_ = {};
};

}  // namespace tools

// Part of SceneBroker and tessel. Ends a server of a pipe when the user presses Ctrl-C.
#pragma once

#include "tools/pipe/RequestServer.h"

namespace tools {

// While this object exists, the first Ctrl-C or Ctrl-Break stops the server, and the program ends
// in order. A second one ends the process at once. This is needed if the last answer waits for a
// client that never reads it. Only one such object may exist at a time.
class StopOnConsoleEvent {
 public:
  explicit StopOnConsoleEvent(RequestServer& server);
  ~StopOnConsoleEvent();
  StopOnConsoleEvent(const StopOnConsoleEvent&) = delete;
  StopOnConsoleEvent& operator=(const StopOnConsoleEvent&) = delete;
};

}  // namespace tools

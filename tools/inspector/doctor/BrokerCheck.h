// Part of tessel. Asks the broker of one scheme whether it shows a window, without the module.
#pragma once

#include <windows.h>

#include <string>

#include "TesselCodes.h"
#include "tools/inspector/doctor/Step.h"

enum class BrokerState {
  kShowsWindow,
  kShowsOthers,  // the broker answers that it does not show the process of this window
  kAbsent,       // there is no pipe with this name
  kCannotOpen,   // access is denied, or the pipe is busy
  kNoAnswer,     // the server of the pipe is silent, or disconnects
  kNotABroker,   // the server of the pipe answers nonsense
  kRefuses,      // the broker answers with a status other than success and kNotServed
  kNotAsked,     // the pipe exists, but there is no window to ask about
};

struct BrokerFinding {
  SLUriScheme scheme;
  BrokerState state;
  DWORD server;  // the process that serves the pipe; 0 if it is not known
  Step step;
};

// Asks for the focused element of a window of the process `windowProcess`, and releases the element
// that the broker hands out. If `windowProcess` is 0, only finds out who serves the pipe. Returns
// at the latest when GetTickCount64() reaches `deadline`.
BrokerFinding CheckBroker(SLUriScheme scheme, const std::wstring& address, DWORD windowProcess,
                          ULONGLONG deadline);

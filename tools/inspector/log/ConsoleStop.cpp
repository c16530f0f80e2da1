#include "tools/inspector/log/ConsoleStop.h"

namespace {

// Windows passes only the kind of the event to its handler, so the handler needs these globals.
// They live until the process ends, because the handler runs on a thread of its own.
HANDLE stopEvent = nullptr;
HANDLE endedEvent = nullptr;

// After Ctrl-C and Ctrl-Break the process goes on if this function returns TRUE. After all other
// events the system ends the process when this function returns, so the function waits until the
// command has destroyed its ConsoleStop.
BOOL WINAPI OnConsoleEvent(DWORD event) {
  ::SetEvent(stopEvent);
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
    ::WaitForSingleObject(endedEvent, INFINITE);
  }
  return TRUE;
}

}  // namespace

ConsoleStop::ConsoleStop() {
  stopEvent = ::CreateEventW(nullptr, TRUE /*manual reset*/, FALSE, nullptr);
  endedEvent = ::CreateEventW(nullptr, TRUE /*manual reset*/, FALSE, nullptr);
  ::SetConsoleCtrlHandler(&OnConsoleEvent, TRUE /*add*/);
}

ConsoleStop::~ConsoleStop() {
  ::SetConsoleCtrlHandler(&OnConsoleEvent, FALSE /*add*/);
  ::SetEvent(endedEvent);
}

HANDLE ConsoleStop::Event() const { return stopEvent; }

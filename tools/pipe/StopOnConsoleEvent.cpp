#include "tools/pipe/StopOnConsoleEvent.h"

#include <windows.h>

#include <mutex>

namespace tools {
namespace {

// Windows calls the console handler on a separate thread and passes only the event, so the handler
// finds the server in `serverToStop`. The mutex keeps the server alive while the handler uses it.
std::mutex serverMutex;
RequestServer* serverToStop = nullptr;

// Returns FALSE for a second Ctrl-C or Ctrl-Break, and for any other event. Windows then ends the
// process.
BOOL WINAPI OnConsoleEvent(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  const std::lock_guard lock(serverMutex);
  return serverToStop != nullptr && serverToStop->Stop();
}

void Set(RequestServer* server) {
  const std::lock_guard lock(serverMutex);
  serverToStop = server;
}

}  // namespace

StopOnConsoleEvent::StopOnConsoleEvent(RequestServer& server) {
  Set(&server);
  ::SetConsoleCtrlHandler(&OnConsoleEvent, TRUE /*add*/);
}

StopOnConsoleEvent::~StopOnConsoleEvent() { Set(nullptr); }

}  // namespace tools

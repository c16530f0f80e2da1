// Runs in the conductor (soak_conductor). A hostile server that takes over the pipe of a broker
// after the broker's process has ended, until the broker is started again. Answers each request
// with the broken answer that the current phase names.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <thread>

#include "Timeline.h"
#include "tools/pipe/ServerPipe.h"

namespace soak {

class Impostor {
 public:
  // Waits until it can create the pipe. Clients that connect wait until Start is called.
  Impostor(const std::wstring& pipeName, const Timeline& timeline);

  // Between Start and Stop, all phases must be of the kind kNonsense.
  void Start() { thread_ = std::jthread(&Impostor::Serve, this); }
  // Serves a connected client to the end. The pipe exists until the destructor runs.
  void Stop();

 private:
  void Serve();

  const Timeline& timeline_;
  std::unique_ptr<tools::ServerPipe> pipe_;
  std::jthread thread_;
};

// Waits until no process has a pipe with the name `pipeName`.
void AwaitNoPipe(const std::wstring& pipeName);

}  // namespace soak

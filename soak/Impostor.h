// Runs in the conductor (soak_conductor). A hostile server that takes over the pipe of a broker
// after the broker's process has ended, until the broker is started again.
#pragma once

#include <windows.h>

#include <random>
#include <string>

#include "Timeline.h"

namespace soak {

class Impostor {
 public:
  // Waits until it can create the pipe.
  explicit Impostor(const std::wstring& pipeName);
  ~Impostor();
  Impostor(const Impostor&) = delete;
  Impostor& operator=(const Impostor&) = delete;

  // Treats clients as `phase` says (see PhaseKind), for `milliseconds`. If a client is connected
  // when the time ends, serves this client to the end.
  void Serve(const Phase& phase, DWORD milliseconds, std::minstd_rand& random);

 private:
  bool Connect(ULONGLONG end);
  bool Finish(BOOL done, DWORD milliseconds);
  void Answer(const std::string& bytes);
  void AwaitLeave(ULONGLONG end);

  HANDLE event_;
  HANDLE pipe_ = INVALID_HANDLE_VALUE;
  OVERLAPPED overlapped_ = {};
};

// Waits until no process has a pipe with the name `pipeName`.
void AwaitNoPipe(const std::wstring& pipeName);

}  // namespace soak

// What takes a broker's place on its pipe between two lives, and serves it badly.
#pragma once

#include <windows.h>

#include <random>
#include <string>

#include "Timeline.h"

namespace soak {

class Impostor {
 public:
  // Waits until it has the pipe.
  explicit Impostor(const std::wstring& pipeName);
  ~Impostor();
  Impostor(const Impostor&) = delete;
  Impostor& operator=(const Impostor&) = delete;

  // Serves like this for so long. A client that has come is served to its end even then.
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

// Until nobody has a pipe of that name open.
void AwaitNoPipe(const std::wstring& pipeName);

}  // namespace soak

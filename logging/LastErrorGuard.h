// Runs in the client and in the broker. Saves the thread's last error and restores it at the end of
// the scope.
#pragma once

#include <windows.h>

namespace logging {

class LastErrorGuard {
 public:
  LastErrorGuard() : error_(::GetLastError()) {}
  ~LastErrorGuard() { ::SetLastError(error_); }
  LastErrorGuard(const LastErrorGuard&) = delete;
  LastErrorGuard& operator=(const LastErrorGuard&) = delete;

 private:
  const DWORD error_;
};

}  // namespace logging

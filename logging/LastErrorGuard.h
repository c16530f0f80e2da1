// Both processes. Keeps the thread's last error over a stretch of code.
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

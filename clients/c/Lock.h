// Runs in the client. A lock that its thread may take again. The runtime's own mutexes are not
// used, because those of MinGW keep some memory when they are destroyed.
#pragma once

#include <windows.h>

namespace tessel::c {

class Lock {
 public:
  Lock() { ::InitializeCriticalSection(&section_); }
  ~Lock() { ::DeleteCriticalSection(&section_); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  void lock() { ::EnterCriticalSection(&section_); }
  bool try_lock() { return ::TryEnterCriticalSection(&section_) != FALSE; }
  void unlock() { ::LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_;
};

}  // namespace tessel::c

// Runs in the client. A lock that its thread may take again. The runtime's own mutexes are not used,
// because those of MinGW keep some memory when they are destroyed.
#pragma once

#include <windows.h>

namespace tessel::c {

// For std::lock_guard and std::unique_lock.
class Lock {
 public:
  Lock() { ::InitializeCriticalSection(&section_); }
  ~Lock() { ::DeleteCriticalSection(&section_); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  void lock() { ::EnterCriticalSection(&section_); }
  void unlock() { ::LeaveCriticalSection(&section_); }

 private:
  CRITICAL_SECTION section_;
};

}  // namespace tessel::c

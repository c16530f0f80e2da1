// Runs in the client. A lock that a thread may take again while it holds the lock. It replaces
// std::recursive_mutex, because a mutex of MinGW does not free all its memory when it is destroyed.
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

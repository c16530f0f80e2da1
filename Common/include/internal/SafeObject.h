// Runs in the client and in the broker. Owners of system handles. There are two types, because some
// system functions return null for "no handle" and other functions return INVALID_HANDLE_VALUE.
#pragma once

#include <windows.h>

#include <utility>

#include "logging/LastErrorGuard.h"
#include "logging/Log.h"

struct NullIsEmpty {
  static HANDLE Empty() noexcept { return nullptr; }
};
struct InvalidIsEmpty {
  static HANDLE Empty() noexcept { return INVALID_HANDLE_VALUE; }
};

template <class Kind>
class SafeObject {
 public:
  SafeObject() noexcept = default;
  explicit SafeObject(HANDLE handle) noexcept : handle_(handle) {}
  SafeObject(SafeObject&& other) noexcept : handle_(other.Release()) {}
  ~SafeObject() { Reset(); }

  SafeObject& operator=(SafeObject&& other) noexcept {
    if (this != &other) Reset(other.Release());
    return *this;
  }

  explicit operator bool() const noexcept { return handle_ != Kind::Empty(); }
  HANDLE Get() const noexcept { return handle_; }
  HANDLE Release() noexcept { return std::exchange(handle_, Kind::Empty()); }

  // Closes the current handle and takes ownership of `handle`. Keeps the thread's last error.
  void Reset(HANDLE handle = Kind::Empty()) noexcept {
    const HANDLE old = std::exchange(handle_, handle);
    if (old == Kind::Empty()) return;
    const logging::LastErrorGuard keepLastError;
    if (!::CloseHandle(old)) {
      LOG_WARNING("Closing safe handle failed, last error=%u", ::GetLastError());
    }
  }

 private:
  HANDLE handle_ = Kind::Empty();
};

using SafeHandle = SafeObject<NullIsEmpty>;   // for events, processes, threads and mutexes
using SafeFile = SafeObject<InvalidIsEmpty>;  // for files and pipes

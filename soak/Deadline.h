// Computes when a program of the endurance run must end.
#pragma once

#include <windows.h>

#include <algorithm>

namespace soak {

// Called after the warm-up. Returns the tick count at which `minutes` have passed since `start`.
// The result is at least 10 seconds from now, so that a short run tests something too.
inline ULONGLONG EndOfRun(ULONGLONG start, double minutes) {
  constexpr ULONGLONG kLeastMilliseconds = 10000;
  return std::max(start + static_cast<ULONGLONG>(minutes * 60000),
                  ::GetTickCount64() + kLeastMilliseconds);
}

}  // namespace soak

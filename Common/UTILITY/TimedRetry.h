// Runs in the client and in the broker. Repeats an attempt until it succeeds, is cancelled or times
// out.
#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <utility>

class TimedRetry {
 public:
  static constexpr HRESULT kCancelled = static_cast<HRESULT>(0x80040225);
  static constexpr HRESULT kTimedOut = static_cast<HRESULT>(0x80040226);
  static constexpr DWORD kPauseMilliseconds = 50;  // the pause between two attempts

  // The time-out starts at construction. Run calls `cancelled` after each failed attempt, and stops
  // if it returns true. An empty `cancelled` is never called.
  explicit TimedRetry(std::int32_t timeoutMilliseconds, std::function<bool()> cancelled = {})
      : timeout_(timeoutMilliseconds), cancelled_(std::move(cancelled)) {}

  // Calls `attempt` until it returns true, at least once, and sleeps between two attempts.
  template <class Attempt>
  HRESULT Run(Attempt attempt) const {
    for (;;) {
      if (attempt()) return S_OK;
      if (cancelled_ && cancelled_()) return kCancelled;
      if (Elapsed() > timeout_) return kTimedOut;
      ::Sleep(kPauseMilliseconds);
    }
  }

 private:
  std::int64_t Elapsed() const { return static_cast<std::int64_t>(::GetTickCount64() - start_); }

  const std::uint64_t start_ = ::GetTickCount64();
  const std::int64_t timeout_;
  const std::function<bool()> cancelled_;
};

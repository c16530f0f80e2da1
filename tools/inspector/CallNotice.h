// tessel. Tells the user, on standard error, what a call that takes long waits for.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

// Lives as long as the call. `what` completes "waiting for the broker to ...", and
// `longestMilliseconds` is how long the call may wait at most.
class CallNotice {
 public:
  CallNotice(const std::string& what, std::uint32_t longestMilliseconds);
  ~CallNotice();
  CallNotice(const CallNotice&) = delete;
  CallNotice& operator=(const CallNotice&) = delete;

 private:
  static void CALLBACK Tell(PTP_CALLBACK_INSTANCE instance, void* notice, PTP_TIMER timer);

  const std::string text_;
  PTP_TIMER timer_;
};

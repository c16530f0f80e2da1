// tessel. Tells the user, on standard error, what a call that takes long waits for.
#pragma once

#include <windows.h>

#include <string>

// Lives as long as the call. `what` completes "waiting for the broker to ...".
class CallNotice {
 public:
  CallNotice(const std::string& what, int longestSeconds);
  ~CallNotice();
  CallNotice(const CallNotice&) = delete;
  CallNotice& operator=(const CallNotice&) = delete;

 private:
  static void CALLBACK Tell(PTP_CALLBACK_INSTANCE instance, void* notice, PTP_TIMER timer);

  const std::string text_;
  PTP_TIMER timer_;
};

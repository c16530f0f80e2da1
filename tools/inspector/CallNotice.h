// Part of tessel. Prints a notice to standard error when a call takes longer than 2 s.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

// Create a CallNotice before the call and destroy it after the call. `what` completes the sentence
// "waiting for the broker to ...". The call waits for at most `longestMilliseconds`.
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

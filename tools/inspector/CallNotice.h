// tessel. Tells the user, on standard error, what a call that takes long waits for.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

// Lives as long as the call. `what` completes "waiting for the broker to ...".
class CallNotice {
 public:
  CallNotice(std::string what, int longestSeconds);
  ~CallNotice();
  CallNotice(const CallNotice&) = delete;
  CallNotice& operator=(const CallNotice&) = delete;

 private:
  std::mutex mutex_;
  std::condition_variable done_;
  bool isDone_ = false;
  std::thread thread_;
};

#include "tools/inspector/CallNotice.h"

#include <chrono>
#include <iostream>
#include <utility>

namespace {

constexpr std::chrono::seconds kPatience(2);

}  // namespace

CallNotice::CallNotice(std::string what, int longestSeconds)
    : thread_([this, what = std::move(what), longestSeconds] {
        std::unique_lock lock(mutex_);
        if (done_.wait_for(lock, kPatience, [this] { return isDone_; })) return;
        std::cerr << "tessel: waiting for the broker to " << what << " (at most " << longestSeconds
                  << " s)" << std::endl;
      }) {}

CallNotice::~CallNotice() {
  {
    const std::lock_guard lock(mutex_);
    isDone_ = true;
  }
  done_.notify_one();
  thread_.join();
}

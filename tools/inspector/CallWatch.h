// Part of tessel. Watches all calls to the module in one run of the tool: prints a notice when a
// call takes long, keeps the result code of the last call, and counts and times all calls.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tessel/Client.h"
#include "tools/inspector/CallNotice.h"
#include "tools/inspector/CallStatistics.h"

class CallWatch : public tessel::CallObserver {
 public:
  // With `notices` false, prints no notices.
  explicit CallWatch(bool notices) : notices_(notices) {}

  // Says what the next calls are for. `what` completes the sentence "waiting for the broker to
  // ...". Each of the calls waits for at most `longestMilliseconds`.
  void Announce(const std::string& what, std::uint32_t longestMilliseconds);

  const std::string& What() const { return what_; }

  // Returns the result code of the last call as an Error.
  tessel::Error LastError() const { return {lastCode_, lastCall_}; }

  const CallStatistics& Statistics() const { return statistics_; }

  void Begin(const tessel::Call& call) override;
  void End(const tessel::Call& call, int code) noexcept override;

 private:
  void StartNotice(const tessel::Call& call);

  const bool notices_;
  std::string what_;
  std::uint32_t longestMilliseconds_ = 0;
  std::optional<CallNotice> notice_;
  tessel::Call lastCall_;
  int lastCode_ = SL_SUCCESS;
  CallStatistics statistics_;
};

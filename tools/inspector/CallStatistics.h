// Part of tessel. Counts and times the calls of one run, for --stats.
#pragma once

#include <chrono>
#include <map>
#include <string>

class CallStatistics {
 public:
  using Clock = std::chrono::steady_clock;

  void Begin(const std::string& function);
  void End() noexcept;

  long long Calls() const { return total_.calls; }

  // These functions return what --stats prints: lines, or one line of JSON.
  std::string Lines() const;
  std::string JsonLine() const;

 private:
  struct Sum {
    void Add(Clock::duration duration);

    long long calls = 0;
    Clock::duration total = {}, longest = {};
  };
  using Functions = std::map<std::string, Sum>;

  Sum total_;
  Functions functions_;
  Functions::value_type* current_ = nullptr;
  const Functions::value_type* longest_ = nullptr;  // the function with the longest call
  Clock::time_point begin_;
};

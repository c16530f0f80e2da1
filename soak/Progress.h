// Runs in the conductor (soak_conductor). Shows the progress of a run on one line, and makes the
// table of its results.
#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "SharedState.h"

namespace soak {

class Progress {
 public:
  explicit Progress(const SharedState& state) : state_(state) {}

  // Shows a line that is updated every second until Hide is called. The line says "warming up"
  // until SetEnd is called, and then how many seconds are left before `tick` (see GetTickCount64).
  void Show();
  void SetEnd(ULONGLONG tick) { end_ = tick; }
  void Hide();

  // The number of calls that the clients have made.
  long long Calls() const;
  // The codes other than 0 that these calls returned, and how often each was returned.
  std::string Codes() const;

  // Returns a table of all codes and how often each was returned. There is one line for each kind
  // of phase of a broker, and a last line for calls that ran through several phases.
  std::string Table() const;

 private:
  long long Count(int row, int code) const;
  std::string Line(long long rate) const;

  const SharedState& state_;
  std::atomic<ULONGLONG> end_{0};
  std::jthread thread_;
};

}  // namespace soak

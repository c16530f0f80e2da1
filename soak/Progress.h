// Runs in the conductor. Shows the progress of a run on one line, and its results at the end.
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
  // until SetEnd is called.
  void Show();
  void SetEnd(ULONGLONG tick) { end_ = tick; }
  void Hide();

  // These functions return sums over all phases.
  long long Calls() const;
  std::string Codes() const;

  // Returns a table of the codes, one line for each kind of phase.
  std::string Table() const;

 private:
  long long Count(int row, int code) const;
  std::string Line(long long rate) const;

  const SharedState& state_;
  std::atomic<ULONGLONG> end_{0};
  std::jthread thread_;
};

}  // namespace soak

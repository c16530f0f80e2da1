// What a run has come to, shown in place while it lasts and in full when it is over.
#pragma once

#include <atomic>
#include <string>
#include <thread>

#include "SharedState.h"

namespace soak {

class Progress {
 public:
  explicit Progress(const SharedState& state) : state_(state) {}

  // A line that is renewed each second until it is hidden; a warm-up as long as no end is set.
  void Show();
  void SetEnd(ULONGLONG tick) { end_ = tick; }
  void Hide();

  // Of all phases.
  long long Calls() const;
  std::string Codes() const;

  // A line for each kind of phase.
  std::string Table() const;

 private:
  long long Count(int row, int code) const;
  std::string Line(long long rate) const;

  const SharedState& state_;
  std::atomic<ULONGLONG> end_{0};
  std::jthread thread_;
};

}  // namespace soak

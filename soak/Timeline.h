// What a broker is doing, told by the conductor to the clients before each change: a call knows by
// it which phases it ran through.
#pragma once

#include <windows.h>

#include <atomic>

namespace soak {

enum class PhaseKind : DWORD {
  kServing,    // undisturbed
  kSuspended,  // answers late, and right
  kEnding,     // in order or by force
  kAbsent,     // no pipe of that name
  kStarting,   // the next life, whose process the clients are not told yet
  // An impostor has the pipe:
  kNonsense,   // it answers with nonsense
  kVanishing,  // it takes the request and leaves
  kHangingUp,  // it leaves without taking the request
  kSlow,       // it takes its time for an answer, kSlowStatus
  kSilent,     // it never answers
  kClosing,    // it ends
};
constexpr int kSlowStatus = 78;
constexpr int kPhaseKinds = 11;
constexpr const char* kPhaseNames[kPhaseKinds] = {
    "serving",   "suspended",  "ending", "absent", "starting", "talking nonsense",
    "vanishing", "hanging up", "slow",   "silent", "closing"};

struct Phase {
  PhaseKind kind;
  DWORD detail;  // the process that serves, suspends or ends; which nonsense is told
};

// One writer. In shared memory, where zero is the empty timeline.
class Timeline {
 public:
  void Enter(PhaseKind kind, DWORD detail = 0) {
    phases_[count_ % kKept] = Phase{kind, detail};
    ++count_;
  }
  long Now() const { return count_ - 1; }
  Phase At(long moment) const { return phases_[moment % kKept]; }

 private:
  static constexpr long kKept = 4096;  // far more than change during one call
  std::atomic<long> count_{0};
  std::atomic<Phase> phases_[kKept] = {};
};

}  // namespace soak

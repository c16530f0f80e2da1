// Runs in the conductor and in the client. The phases of a broker. The conductor enters each phase
// before it begins, so that a client knows which phases a call ran through.
#pragma once

#include <windows.h>

#include <atomic>

namespace soak {

enum class PhaseKind : DWORD {
  kServing,    // undisturbed
  kSuspended,  // answers correctly, but late
  kEnding,     // being closed or killed
  kAbsent,     // no pipe of that name exists
  kStarting,   // the next life starts; the clients do not know its process yet
  // In these phases an impostor serves the pipe:
  kNonsense,   // it answers with nonsense
  kVanishing,  // it reads the request and disconnects
  kHangingUp,  // it disconnects without reading the request
  kSlow,       // it answers kSlowStatus after a delay
  kSilent,     // it never answers
  kClosing,    // it closes the pipe
};
constexpr int kSlowStatus = 78;
constexpr int kPhaseKinds = 11;
constexpr const char* kPhaseNames[kPhaseKinds] = {
    "serving",   "suspended",  "ending", "absent", "starting", "talking nonsense",
    "vanishing", "hanging up", "slow",   "silent", "closing"};

struct Phase {
  PhaseKind kind;
  DWORD detail;  // the broker's process, or the index of the nonsense
};

// Only the conductor writes. Lies in shared memory, where all zeros are an empty timeline.
class Timeline {
 public:
  void Enter(PhaseKind kind, DWORD detail = 0) {
    phases_[count_ % kKept] = Phase{kind, detail};
    ++count_;
  }
  long Now() const { return count_ - 1; }
  Phase At(long moment) const { return phases_[moment % kKept]; }

 private:
  static constexpr long kKept = 4096;  // far more phases than one call can run through
  std::atomic<long> count_{0};
  std::atomic<Phase> phases_[kKept] = {};
};

}  // namespace soak

// Runs in the conductor (soak_conductor) and in the client (soak_client). The phases of a broker.
// The conductor records each phase before the phase begins, so that a client knows which phases a
// call ran through.
#pragma once

#include <windows.h>

#include <atomic>

namespace soak {

enum class PhaseKind : DWORD {
  kServing,    // the broker serves undisturbed
  kSuspended,  // the broker's process is suspended for a while, so its correct answers come late
  kEnding,     // the broker is being closed or killed
  kAbsent,     // no pipe with the name of the broker's pipe exists
  kStarting,   // the broker starts again; the clients do not know its new process yet
  // In the phases below, an impostor serves the pipe: a hostile server in the broker's place.
  kNonsense,   // the impostor sends a broken answer of AllNonsense()
  kVanishing,  // the impostor reads the request and disconnects
  kHangingUp,  // the impostor disconnects without reading the request
  kSlow,       // the impostor answers kSlowStatus after a delay
  kSilent,     // the impostor never answers
  kClosing,    // the impostor closes the pipe
};
constexpr int kSlowStatus = 78;
constexpr int kPhaseKinds = 11;
constexpr const char* kPhaseNames[kPhaseKinds] = {
    "serving",   "suspended",  "ending", "absent", "starting", "talking nonsense",
    "vanishing", "hanging up", "slow",   "silent", "closing"};

struct Phase {
  PhaseKind kind;
  DWORD detail;  // the broker's process id; in kNonsense, the index in AllNonsense(); otherwise 0
};

// The phases of one broker, in order and numbered from 0 on. Such a number is called a moment. Only
// the conductor adds phases. The object is in shared memory, which begins as all zeros: this is an
// empty timeline.
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

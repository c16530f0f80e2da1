// Runs in the conductor (soak_conductor) and in the client (soak_client). The phases of a broker.
// The conductor records each phase before the phase begins, so that a client knows which phases a
// call ran through.
#pragma once

#include <windows.h>

#include <atomic>
#include <iterator>

#include "tools/faults/FaultRule.h"

namespace soak {

enum class PhaseKind : DWORD {
  kServing,    // the broker serves undisturbed
  kSuspended,  // the broker's process is suspended for a while, so its correct answers come late
  kEnding,     // the broker is being closed or killed
  kAbsent,     // no pipe with the name of the broker's pipe exists
  kStarting,   // the broker starts again; the clients do not know its new process yet
  kNonsense,   // a hostile server (the impostor) serves the broker's pipe and sends broken answers
  kClosing,    // the impostor has stopped answering and closes its pipe
  // The broker runs with the fault kFaultForms[0]. kFirstFault + i is the phase with the fault
  // kFaultForms[i].
  kFirstFault,
};
constexpr int kFaultStatus = 79;  // what a broker with the fault "status" answers
constexpr int kFirstFault = static_cast<int>(PhaseKind::kFirstFault);
constexpr int kFaults = static_cast<int>(std::size(tools::kFaultForms));
constexpr int kPhaseKinds = kFirstFault + kFaults;

constexpr PhaseKind PhaseOf(tools::FaultKind fault) {
  return static_cast<PhaseKind>(kFirstFault + static_cast<int>(fault));
}
constexpr tools::FaultKind FaultOf(PhaseKind kind) {
  return static_cast<tools::FaultKind>(static_cast<int>(kind) - kFirstFault);
}
constexpr const char* PhaseName(int kind) {
  constexpr const char* kNames[kFirstFault] = {"serving",  "suspended",        "ending", "absent",
                                               "starting", "talking nonsense", "closing"};
  return kind < kFirstFault ? kNames[kind] : tools::kFaultForms[kind - kFirstFault].name;
}

struct Phase {
  PhaseKind kind;
  // In kNonsense, the index in AllNonsense() of the answer that is sent. Otherwise the broker's
  // process id, or 0 if there is no broker or if the clients do not know the process id yet.
  DWORD detail;
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

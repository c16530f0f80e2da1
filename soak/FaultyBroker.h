// Runs in the conductor (soak_conductor). A broker that fails in every way. Records each change of
// its behaviour in the memory shared with the clients, before the change happens.
#pragma once

#include <memory>
#include <random>

#include "BrokerLife.h"
#include "Impostor.h"

namespace soak {

// After kSuspend, each fault ends the broker and puts an impostor in its place: a hostile server on
// the broker's pipe. PhaseKind explains what each kind of impostor does.
enum class Fault {
  kEndInOrder,
  kKill,
  kSuspend,
  kNonsense,  // the impostor sends broken answers: the next 8 of AllNonsense()
  kVanish,
  kHangUp,
  kSlow,
  kSilent,
};
constexpr int kFaults = 8;
constexpr const char* kFaultNames[kFaults] = {"ended in order", "killed",        "suspended",
                                              "nonsense",       "vanished",      "hung up",
                                              "slow",           "never answered"};

class FaultyBroker {
 public:
  FaultyBroker(SharedState& state, DWORD run, int broker)
      : state_(state), run_(run), broker_(broker) {
    Start();
  }

  // Makes the broker fail as `fault` says, and returns when the broker serves again.
  void RunFault(Fault fault, std::minstd_rand& random);
  // Replaces the broker with an impostor that sends every broken answer of AllNonsense(). Returns
  // when the broker serves again.
  void SendAllNonsense(std::minstd_rand& random);
  // Ends the broker. Clients must not hold elements.
  void EndInOrder();

  // Ended returns how many times the broker was closed in order. Unbalanced returns how many of
  // these times the broker ended with an error, or with objects that clients had not released.
  long Ended() const { return ended_; }
  long Unbalanced() const { return unbalanced_; }

 private:
  Timeline& Phases() { return state_.brokers[broker_].timeline; }
  void Start();
  void Kill();
  void AwaitCalm();
  void Impersonate(PhaseKind kind, DWORD milliseconds, std::minstd_rand& random);
  void SendNonsense(int kinds, std::minstd_rand& random);
  void End(std::unique_ptr<Impostor> impostor);

  SharedState& state_;
  const DWORD run_;
  const int broker_;
  std::unique_ptr<BrokerLife> life_;
  std::wstring pipeName_;
  std::size_t nextNonsense_ = 0;
  long ended_ = 0, unbalanced_ = 0;
};

}  // namespace soak

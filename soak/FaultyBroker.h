// Runs in the conductor (soak_conductor). A broker that fails in every way. Records each change of
// its behaviour in the memory shared with the clients, before the change happens.
#pragma once

#include <array>
#include <memory>
#include <random>

#include "BrokerLife.h"

namespace soak {

// What can happen to the broker's process.
enum class Event {
  kEndInOrder,
  kKill,
  kSuspend,
  kNonsense,  // an impostor takes the broker's place and sends 8 different broken answers
};
constexpr int kEvents = 4;
constexpr const char* kEventNames[kEvents] = {"ended in order", "killed", "suspended", "nonsense"};

class FaultyBroker {
 public:
  FaultyBroker(SharedState& state, DWORD run, int broker)
      : state_(state), run_(run), broker_(broker) {
    Start();
  }

  // Both functions return when the broker serves undisturbed again. RunFault replaces the broker
  // with one that has the option --fault, and later with one that does not have this option.
  void RunEvent(Event event, std::minstd_rand& random);
  void RunFault(tools::FaultKind fault, std::minstd_rand& random);
  // Replaces the broker with an impostor that sends every broken answer of AllNonsense(). Returns
  // when the broker serves again.
  void SendAllNonsense();
  // Ends the broker. Clients must not hold elements.
  void EndInOrder();

  // Ended returns how many times EndInOrder has ended the broker. Unbalanced returns how many of
  // these times the broker ended with an error, or with objects that clients had not released.
  long Ended() const { return ended_; }
  long Unbalanced() const { return unbalanced_; }

  // For each fault, how often the broker printed that it happened.
  const std::array<long, kFaults>& FaultCounts() const { return faultCounts_; }

 private:
  Timeline& Phases() { return state_.brokers[broker_].timeline; }
  void Start();
  void StartLife(PhaseKind starting, PhaseKind serving, const std::wstring& options);
  void Kill();
  void Suspend(DWORD milliseconds);
  void AwaitCalm();
  void AwaitCrash();
  void SendNonsense(int kinds);

  SharedState& state_;
  const DWORD run_;
  const int broker_;
  std::unique_ptr<BrokerLife> life_;
  std::wstring pipeName_;
  std::size_t nextNonsense_ = 0;
  long ended_ = 0, unbalanced_ = 0;
  std::array<long, kFaults> faultCounts_ = {};
};

}  // namespace soak

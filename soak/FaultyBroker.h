// A broker that fails in every way, each told to the clients beforehand.
#pragma once

#include <memory>
#include <random>

#include "BrokerLife.h"
#include "Impostor.h"

namespace soak {

enum class Fault {
  kEndInOrder,
  kKill,
  kSuspend,
  kNonsense,  // some kinds of it, from where it stopped the last time
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

  // Serves again afterwards.
  void Suffer(Fault fault, std::minstd_rand& random);
  void TellAllNonsense(std::minstd_rand& random);
  // For good. Clients hold nothing.
  void EndInOrder();

  // Lives that ended in order, and those of them that were not in balance.
  long Ended() const { return ended_; }
  long Unbalanced() const { return unbalanced_; }

 private:
  Timeline& Told() { return state_.brokers[broker_].timeline; }
  void Start();
  void Kill();
  void AwaitCalm();
  void Impersonate(PhaseKind kind, DWORD milliseconds, std::minstd_rand& random);
  void TellNonsense(int kinds, std::minstd_rand& random);
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

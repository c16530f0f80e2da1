#include "FaultyBroker.h"

#include <stdexcept>

#include "Nonsense.h"
#include "wire/Timeouts.h"

namespace soak {

namespace {

constexpr DWORD kNonsenseMilliseconds = 150;  // the time for which each broken answer is sent
constexpr int kNonsenseKinds = 8;  // Fault::kNonsense sends this many different broken answers
// A silent impostor stays longer than a call waits for a connection or for an answer.
constexpr DWORD kSilentMilliseconds = wire::kPipeTimeoutMilliseconds + 2000;

}  // namespace

void FaultyBroker::RunFault(Fault fault, std::minstd_rand& random) {
  switch (fault) {
    case Fault::kEndInOrder:
      AwaitCalm();
      EndInOrder();
      state_.wantCalm = 0;
      break;
    case Fault::kKill:
      Kill();
      ::Sleep(random() % 500);
      break;
    case Fault::kSuspend: {
      Phases().Enter(PhaseKind::kSuspended, life_->Facts().process);
      life_->Suspend();
      ::Sleep(random() % 1500);
      life_->Resume();
      Phases().Enter(PhaseKind::kServing, life_->Facts().process);
      return;
    }
    case Fault::kNonsense:
      SendNonsense(kNonsenseKinds, random);
      break;
    case Fault::kVanish:
      Impersonate(PhaseKind::kVanishing, 300 + random() % 1000, random);
      break;
    case Fault::kHangUp:
      Impersonate(PhaseKind::kHangingUp, 300 + random() % 1000, random);
      break;
    case Fault::kSlow:
      Impersonate(PhaseKind::kSlow, 1000 + random() % 1000, random);
      break;
    case Fault::kSilent:
      Impersonate(PhaseKind::kSilent, kSilentMilliseconds, random);
      break;
  }
  Start();
}

void FaultyBroker::SendAllNonsense(std::minstd_rand& random) {
  SendNonsense(static_cast<int>(AllNonsense().size()), random);
  Start();
}

void FaultyBroker::EndInOrder() {
  Phases().Enter(PhaseKind::kEnding, life_->Facts().process);
  ++ended_;
  if (!life_->CloseInOrder()) ++unbalanced_;
  AwaitNoPipe(pipeName_);
  Phases().Enter(PhaseKind::kAbsent);
}

void FaultyBroker::Start() {
  Phases().Enter(PhaseKind::kStarting);
  life_.reset();
  life_ = std::make_unique<BrokerLife>(run_, broker_);
  pipeName_ = life_->PipeName();
  Phases().Enter(PhaseKind::kServing, life_->Facts().process);
  state_.brokers[broker_].life = life_->Facts();
}

void FaultyBroker::Kill() {
  Phases().Enter(PhaseKind::kEnding, life_->Facts().process);
  life_->Kill();
  AwaitNoPipe(pipeName_);
  Phases().Enter(PhaseKind::kAbsent);
}

// Waits until no client holds an element. The broker can then end, and its summary must show that
// all elements were released. Until `wantCalm` is 0 again, clients make only calls that return no
// element.
void FaultyBroker::AwaitCalm() {
  state_.wantCalm = 1;
  for (int i = 0; i < 6000 && state_.calmThreads < kClients * kThreads; ++i) ::Sleep(10);
  if (state_.calmThreads < kClients * kThreads) throw std::runtime_error("a call does not end");
}

void FaultyBroker::Impersonate(PhaseKind kind, DWORD milliseconds, std::minstd_rand& random) {
  Kill();
  auto impostor = std::make_unique<Impostor>(pipeName_);
  Phases().Enter(kind);
  impostor->Serve({kind, 0}, milliseconds, random);
  End(std::move(impostor));
}

void FaultyBroker::SendNonsense(int kinds, std::minstd_rand& random) {
  Kill();
  auto impostor = std::make_unique<Impostor>(pipeName_);
  for (int i = 0; i < kinds; ++i) {
    const Phase phase = {PhaseKind::kNonsense, static_cast<DWORD>(nextNonsense_)};
    nextNonsense_ = (nextNonsense_ + 1) % AllNonsense().size();
    Phases().Enter(phase.kind, phase.detail);
    impostor->Serve(phase, kNonsenseMilliseconds, random);
  }
  End(std::move(impostor));
}

void FaultyBroker::End(std::unique_ptr<Impostor> impostor) {
  Phases().Enter(PhaseKind::kClosing);
  impostor.reset();
  AwaitNoPipe(pipeName_);
}

}  // namespace soak

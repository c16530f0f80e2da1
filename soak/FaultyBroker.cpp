#include "FaultyBroker.h"

#include <stdexcept>

#include "Impostor.h"
#include "Nonsense.h"
#include "tools/faults/FaultyPipe.h"
#include "wire/Timeouts.h"

namespace soak {

namespace {

using tools::FaultKind;

constexpr DWORD kNonsenseMilliseconds = 150;  // the time for which each broken answer is sent
constexpr int kNonsenseKinds = 8;  // Event::kNonsense sends this many different broken answers
// A broker that hangs stays longer than a call waits for a connection or for an answer.
constexpr DWORD kHangMilliseconds = wire::kPipeTimeoutMilliseconds + 2000;

std::string RuleFor(FaultKind fault, std::minstd_rand& random) {
  const std::string name = tools::kFaultForms[static_cast<int>(fault)].name;
  switch (fault) {
    case FaultKind::kDelay:
    case FaultKind::kDeaf:
      return name + '=' + std::to_string(1 + random() % 300);
    case FaultKind::kStatus:
      return name + '=' + std::to_string(kFaultStatus);
    case FaultKind::kLong:
      return name + "=100000";
    case FaultKind::kCrash:
      return name + "@call=" + std::to_string(1 + random() % 40);
    default:
      return name;
  }
}

}  // namespace

void FaultyBroker::RunEvent(Event event, std::minstd_rand& random) {
  switch (event) {
    case Event::kEndInOrder:
      AwaitCalm();
      EndInOrder();
      state_.wantCalm = 0;
      break;
    case Event::kKill:
      Kill();
      ::Sleep(random() % 500);
      break;
    case Event::kSuspend:
      Suspend(random() % 1500);
      return;
    case Event::kNonsense:
      SendNonsense(kNonsenseKinds);
      break;
  }
  Start();
}

void FaultyBroker::RunFault(FaultKind fault, std::minstd_rand& random) {
  const std::string rule = RuleFor(fault, random);
  Kill();
  StartLife(PhaseOf(fault), PhaseOf(fault), L" --fault " + std::wstring(rule.begin(), rule.end()));
  if (fault == FaultKind::kCrash) {
    AwaitCrash();
  } else {
    ::Sleep(fault == FaultKind::kHang ? kHangMilliseconds : 300 + random() % 1000);
    Kill();
  }
  faultCounts_[static_cast<std::size_t>(fault)] += life_->FaultCount();
  Start();
}

void FaultyBroker::SendAllNonsense() {
  SendNonsense(static_cast<int>(AllNonsense().size()));
  Start();
}

void FaultyBroker::EndInOrder() {
  Phases().Enter(PhaseKind::kEnding, life_->Facts().process);
  ++ended_;
  if (!life_->CloseInOrder()) ++unbalanced_;
  AwaitNoPipe(pipeName_);
  Phases().Enter(PhaseKind::kAbsent);
}

void FaultyBroker::Start() { StartLife(PhaseKind::kStarting, PhaseKind::kServing, L""); }

void FaultyBroker::StartLife(PhaseKind starting, PhaseKind serving, const std::wstring& options) {
  Phases().Enter(starting);
  life_.reset();
  life_ = std::make_unique<BrokerLife>(run_, broker_, options);
  pipeName_ = life_->PipeName();
  Phases().Enter(serving, life_->Facts().process);
  state_.brokers[broker_].life = life_->Facts();
}

void FaultyBroker::Kill() {
  Phases().Enter(PhaseKind::kEnding, life_->Facts().process);
  life_->Kill();
  AwaitNoPipe(pipeName_);
  Phases().Enter(PhaseKind::kAbsent);
}

void FaultyBroker::Suspend(DWORD milliseconds) {
  Phases().Enter(PhaseKind::kSuspended, life_->Facts().process);
  life_->Suspend();
  ::Sleep(milliseconds);
  life_->Resume();
  Phases().Enter(PhaseKind::kServing, life_->Facts().process);
}

// Waits until no client holds an element. The broker can then end, and its summary must show that
// all elements were released. Until `wantCalm` is 0 again, clients make only calls that return no
// element.
void FaultyBroker::AwaitCalm() {
  state_.wantCalm = 1;
  for (int i = 0; i < 6000 && state_.calmThreads < kClients * kThreads; ++i) ::Sleep(10);
  if (state_.calmThreads < kClients * kThreads) throw std::runtime_error("a call does not end");
}

void FaultyBroker::AwaitCrash() {
  if (life_->AwaitEnd() != tools::kCrashExitCode)
    throw std::runtime_error("a broker with the fault \"crash\" does not crash");
  AwaitNoPipe(pipeName_);
  Phases().Enter(PhaseKind::kAbsent);
}

void FaultyBroker::SendNonsense(int kinds) {
  Kill();
  auto impostor = std::make_unique<Impostor>(pipeName_, Phases());
  for (int i = 0; i < kinds; ++i) {
    Phases().Enter(PhaseKind::kNonsense, static_cast<DWORD>(nextNonsense_));
    if (i == 0) impostor->Start();
    nextNonsense_ = (nextNonsense_ + 1) % AllNonsense().size();
    ::Sleep(kNonsenseMilliseconds);
  }
  impostor->Stop();
  Phases().Enter(PhaseKind::kClosing);
  impostor.reset();
  AwaitNoPipe(pipeName_);
}

}  // namespace soak

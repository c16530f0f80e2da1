#include "tools/inspector/doctor/Examination.h"

#include <algorithm>

#include "tessel/Text.h"
#include "tools/inspector/BrokerPipes.h"
#include "tools/inspector/doctor/AddressCheck.h"
#include "tools/inspector/doctor/StartChecks.h"
#include "tools/pipe/PipeExchange.h"
#include "wire/Addresses.h"

namespace {

// All brokers together have this time. The other steps wait for nothing.
constexpr ULONGLONG kBrokersMilliseconds = 2700;

// Returns the schemes that a call asks, in order, and then all others.
std::vector<SLUriScheme> AllSchemes(const std::vector<SLUriScheme>& ofCall) {
  std::vector<SLUriScheme> schemes = ofCall;
  for (const SLUriScheme scheme : kBrokerSchemes) {
    if (std::ranges::find(ofCall, scheme) == ofCall.end()) schemes.push_back(scheme);
  }
  return schemes;
}

// A broker that the call does not ask cannot stop the call.
void AddOther(std::vector<BrokerFinding>& others, BrokerFinding broker) {
  if (broker.state == BrokerState::kAbsent) return;
  broker.step.state = Step::State::kNote;
  broker.step.finding += "; a call does not ask this broker";
  broker.step.cure.clear();
  others.push_back(std::move(broker));
}

// Gives each broker that runs an equal part of the time that is left.
void AskBrokers(const ExaminedCall& call, Findings& findings) {
  const ULONGLONG end = ::GetTickCount64() + kBrokersMilliseconds;
  const std::wstring address = tessel::Wide(call.address);
  const std::vector<SLUriScheme> ofCall = SchemesOfCall(call.scheme, address);
  const std::vector<SLUriScheme> all = AllSchemes(ofCall);
  auto running = std::ranges::count_if(
      all, [&](SLUriScheme scheme) { return tools::PipeExists(wire::PipeName(scheme, address)); });
  for (std::size_t i = 0; i < all.size(); ++i) {
    const ULONGLONG now = std::min(::GetTickCount64(), end);
    const ULONGLONG part = (end - now) / static_cast<ULONGLONG>(running > 1 ? running : 1);
    BrokerFinding broker = CheckBroker(all[i], address, findings.window.process, now + part);
    if (broker.state != BrokerState::kAbsent) --running;
    if (i < ofCall.size()) {
      findings.asked.push_back(std::move(broker));
    } else {
      AddOther(findings.others, std::move(broker));
    }
  }
}

}  // namespace

Findings Examine(const ExaminedCall& call) {
  Findings findings = {call.scheme == SL_NO_URI,
                       CheckModule(call.module),
                       CheckAddress(tessel::Wide(call.address)),
                       CheckWindow(call.window),
                       {},
                       {},
                       CheckLauncher(),
                       CheckPackage(call.module),
                       CheckInjector(call.module),
                       CheckInjectionLock()};
  AskBrokers(call, findings);
  return findings;
}

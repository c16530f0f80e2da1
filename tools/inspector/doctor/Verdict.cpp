#include "tools/inspector/doctor/Verdict.h"

#include <optional>

#include "tools/shared/CommandLine.h"

namespace {

bool IsBroken(const Step& step) { return step.state == Step::State::kBroken; }

std::string NameOf(const BrokerFinding& broker) {
  return "the " + tools::NameOfScheme(broker.scheme) + " broker";
}

// Returns what to check before a broker is started. If a broker answered that it does not show the
// window, the window is the most likely mistake.
std::string CheckBeforeStart(const Findings& findings) {
  for (const BrokerFinding& broker : findings.asked) {
    if (broker.state == BrokerState::kShowsOthers) return broker.step.cure;
  }
  return "check --address and --scheme";
}

Verdict JudgeLaunch(const Findings& findings, const std::string& name) {
  const std::string check = CheckBeforeStart(findings);
  if (IsBroken(findings.launcher)) {
    return {DoctorCode::kLauncher, name + " does not run, and there is no launcher to start it",
            check + "; " + findings.launcher.cure};
  }
  if (IsBroken(findings.package)) {
    return {DoctorCode::kPackage, name + " does not run, and there is no package to start",
            check + "; " + findings.package.cure};
  }
  return {DoctorCode::kCanStart, name + " does not run; a call would start it (not tried)",
          "if a broker should run already, " + check};
}

// All brokers that the call asks have answered that they do not show the window.
Verdict JudgeInjection(const Findings& findings) {
  const std::string& check = findings.asked.front().step.cure;
  if (!findings.searches) {
    return {DoctorCode::kOtherWindow,
            NameOf(findings.asked.front()) + " does not show this window; the call ends with -8",
            check};
  }
  const std::string result = "no broker shows this window";
  if (IsBroken(findings.injector)) {
    return {DoctorCode::kInjector, result + ", and there is no injector to inject one",
            check + "; or " + findings.injector.cure};
  }
  if (IsBroken(findings.lock)) {
    return {DoctorCode::kInjectionLock, result + ", and another injection is running",
            findings.lock.cure};
  }
  return {DoctorCode::kCanStart, result + "; a call would inject a broker (not tried)", check};
}

// Follows the search of a call. Only a broker that does not show the window lets the call go on to
// the next broker, and at the end to an injection, if the call names no scheme.
Verdict JudgeSearch(const Findings& findings) {
  for (const BrokerFinding& broker : findings.asked) {
    const std::string name = NameOf(broker);
    const std::string& cure = broker.step.cure;
    switch (broker.state) {
      case BrokerState::kShowsWindow:
        return {DoctorCode::kServed, name + " answers for this window", ""};
      case BrokerState::kShowsOthers:
      case BrokerState::kNotAsked:
        continue;
      case BrokerState::kAbsent:
        return JudgeLaunch(findings, name);
      case BrokerState::kCannotOpen:
        return {DoctorCode::kCannotOpen, "the pipe of " + name + " cannot be opened", cure};
      case BrokerState::kNoAnswer:
        return {DoctorCode::kNoAnswer, "the pipe of " + name + " gives no answer", cure};
      case BrokerState::kNotABroker:
        return {DoctorCode::kNotABroker, "the pipe of " + name + " belongs to another program",
                cure};
      case BrokerState::kRefuses:
        return {DoctorCode::kRefuses, name + " refuses the request", cure};
    }
  }
  return JudgeInjection(findings);
}

// The address decides only about the pipe of the tailored broker. If a program serves this pipe,
// the address is right.
bool AddressMayMislead(const Findings& findings) {
  const BrokerFinding& first = findings.asked.front();
  return !findings.address.cure.empty() && first.scheme == SL_TAILORED_URI &&
         first.state == BrokerState::kAbsent;
}

// Looks for a broker that shows the window, although the search ends before it reaches this broker.
std::optional<Verdict> JudgeOthers(const Findings& findings, const Verdict& search) {
  for (const auto* const brokers : {&findings.asked, &findings.others}) {
    for (const BrokerFinding& broker : *brokers) {
      if (broker.state != BrokerState::kShowsWindow) continue;
      return Verdict{DoctorCode::kScheme,
                     search.result + "; but " + NameOf(broker) + " shows this window",
                     "give --scheme " + tools::NameOfScheme(broker.scheme)};
    }
  }
  return std::nullopt;
}

}  // namespace

Verdict Judge(const Findings& findings) {
  if (IsBroken(findings.module)) {
    return {DoctorCode::kModule, "no call can be made without the module", findings.module.cure};
  }
  const Step& window = findings.window.step;
  if (IsBroken(window)) return {DoctorCode::kWindow, window.finding, window.cure};
  const Verdict search = JudgeSearch(findings);
  if (search.code == DoctorCode::kServed) return search;
  if (AddressMayMislead(findings)) {
    return {DoctorCode::kAddress, "the address looks wrong, and no broker of it shows this window",
            findings.address.cure};
  }
  return JudgeOthers(findings, search).value_or(search);
}

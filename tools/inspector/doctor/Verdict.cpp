#include "tools/inspector/doctor/Verdict.h"

#include <algorithm>
#include <optional>

#include "tools/shared/CommandLine.h"

namespace {

bool IsBroken(const Step& step) { return step.state == Step::State::kBroken; }

std::string NameOf(const BrokerFinding& broker) {
  return "the " + tools::NameOfScheme(broker.scheme) + " broker";
}

bool NoneRuns(const Findings& findings) {
  return std::ranges::all_of(findings.asked, [](const BrokerFinding& broker) {
    return broker.state == BrokerState::kAbsent;
  });
}

// Why a call would start a broker, and what to check first.
struct ReasonToStart {
  std::string text;
  std::string check;
};

// `absent` is the broker that the call would start. If a broker answered that it does not show the
// window, the window is the most likely mistake.
ReasonToStart FindReasonToStart(const Findings& findings, const BrokerFinding& absent) {
  const std::string reason = NameOf(absent) + " does not run";
  for (const BrokerFinding& broker : findings.asked) {
    if (broker.state != BrokerState::kShowsOthers) continue;
    return {NameOf(broker) + " does not show this window, and " + reason, broker.step.cure};
  }
  const bool isOneOfMany = findings.asked.size() > 1 && NoneRuns(findings);
  return {isOneOfMany ? "no broker runs that a call asks" : reason,
          "if the broker runs, compare --address and --scheme with what it serves"};
}

Verdict JudgeLaunch(const Findings& findings, const BrokerFinding& absent) {
  const auto [reason, check] = FindReasonToStart(findings, absent);
  if (IsBroken(findings.launcher)) {
    return {DoctorCode::kLauncher, reason + ", and there is no launcher to start one",
            check + "; or " + findings.launcher.cure};
  }
  if (IsBroken(findings.package)) {
    return {DoctorCode::kPackage, reason + ", and there is no package to start",
            check + "; or " + findings.package.cure};
  }
  return {DoctorCode::kCanStart, reason + "; a call would start one (not tried)", check};
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
        return JudgeLaunch(findings, broker);
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

// Looks for a broker that shows the window although the call does not reach this broker: the call
// ends at an earlier one, or names another scheme.
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

// A window often disappears together with its broker.
Verdict JudgeWindow(const Findings& findings) {
  const Step& window = findings.window.step;
  if (NoneRuns(findings)) {
    return {DoctorCode::kWindow, window.finding + ", and no broker runs that a call asks",
            "start the program that shows the window, or: " + window.cure};
  }
  std::string servers;
  for (const BrokerFinding& broker : findings.asked) {
    if (broker.server == 0) continue;
    servers +=
        "; process " + std::to_string(broker.server) + " serves the pipe of " + NameOf(broker);
  }
  return {DoctorCode::kWindow, window.finding + servers, window.cure};
}

}  // namespace

std::string DoctorCodeHelp() {
  return "Exit codes:\n"
         "  0  a broker answers for this window\n"
         "  2  wrong command line\n"
         "  10  no broker answers, but a call would start or inject one (not tried)\n"
         "  11  the module is missing or damaged\n"
         "  12  the address looks wrong\n"
         "  13  not exactly one such window\n"
         "  14  a broker that a call does not reach shows the window: give its --scheme\n"
         "  15  the pipe cannot be opened\n"
         "  16  the server of the pipe gives no answer\n"
         "  17  the server of the pipe is no broker\n"
         "  18  the broker refuses with a status of its own\n"
         "  19  a broker must be started, and the launcher is missing\n"
         "  20  a broker must be started, and its package is missing\n"
         "  21  a broker must be injected, and the injector is missing\n"
         "  22  a broker must be injected, and another client injects one now\n"
         "  23  the broker of the given --scheme does not show this window";
}

Verdict Judge(const Findings& findings) {
  if (IsBroken(findings.module)) {
    return {DoctorCode::kModule, "no call can be made without the module", findings.module.cure};
  }
  if (IsBroken(findings.window.step)) return JudgeWindow(findings);
  const Verdict search = JudgeSearch(findings);
  if (search.code == DoctorCode::kServed) return search;
  if (AddressMayMislead(findings)) {
    return {DoctorCode::kAddress, "the address looks wrong, and no broker of it shows this window",
            findings.address.cure};
  }
  return JudgeOthers(findings, search).value_or(search);
}

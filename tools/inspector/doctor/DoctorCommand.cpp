// Part of tessel. The command `doctor`: checks each step of a call, and says why calls fail.
#include <iostream>

#include "tessel/Text.h"
#include "tools/inspector/Interruption.h"
#include "tools/inspector/OptionParts.h"
#include "tools/inspector/ToolCommand.h"
#include "tools/inspector/doctor/Examination.h"
#include "tools/inspector/doctor/LogLevelCheck.h"
#include "tools/inspector/doctor/Verdict.h"
#include "tools/shared/CommandLine.h"
#include "tools/shared/ModulePath.h"

namespace {

const char* NameOf(Step::State state) {
  switch (state) {
    case Step::State::kFound:
      return "found";
    case Step::State::kNote:
      return "note";
    default:
      return "broken";
  }
}

void MakeNote(Step& step) {
  if (step.state == Step::State::kBroken) step.state = Step::State::kNote;
}

// Adapts the states if the call does not reach the broker that shows the window. Only the broker at
// which the call ends is broken.
void AdaptToScheme(Findings& findings) {
  bool isReached = true;
  for (BrokerFinding& broker : findings.asked) {
    const bool goesOn = findings.searches && broker.state == BrokerState::kShowsOthers;
    if (!isReached) broker.step.finding += "; a call does not reach this broker";
    if (!isReached || goesOn) {
      broker.step.state = Step::State::kNote;
      continue;
    }
    broker.step.state = Step::State::kBroken;
    isReached = false;
  }
}

// Adapts the states to the verdict. The launcher, the package, the injector, the lock and the
// address are broken only if the verdict names them as the reason. If one broker answers for the
// window, the states of all other brokers are at most notes.
void Adapt(Findings& findings, DoctorCode code) {
  if (code == DoctorCode::kAddress) findings.address.state = Step::State::kBroken;
  if (code == DoctorCode::kScheme) AdaptToScheme(findings);
  if (code == DoctorCode::kServed) {
    for (BrokerFinding& broker : findings.asked) MakeNote(broker.step);
  }
  if (code != DoctorCode::kLauncher) MakeNote(findings.launcher);
  if (code != DoctorCode::kPackage) MakeNote(findings.package);
  if (code != DoctorCode::kInjector) MakeNote(findings.injector);
  if (code != DoctorCode::kInjectionLock) MakeNote(findings.lock);
}

std::vector<Step> InOrder(const Findings& findings) {
  std::vector<Step> steps = {findings.module, findings.address, findings.window.step};
  for (const auto* const brokers : {&findings.asked, &findings.others}) {
    for (const BrokerFinding& broker : *brokers) steps.push_back(broker.step);
  }
  for (const Step* const step :
       {&findings.launcher, &findings.package, &findings.injector, &findings.lock}) {
    steps.push_back(*step);
  }
  steps.push_back(CheckLogLevel());
  return steps;
}

// Pads the state, so that the names of the steps stand in one column.
std::string LinesOf(const std::vector<Step>& steps, const Verdict& verdict) {
  const std::string indent(8, ' ');
  std::string text;
  const auto add = [&](std::string head, const std::string& line, const std::string& cure) {
    head.resize(indent.size(), ' ');
    text += head + line + '\n';
    if (!cure.empty()) text += indent + "to do: " + cure + '\n';
  };
  for (const Step& step : steps)
    add(NameOf(step.state), step.name + ": " + step.finding, step.cure);
  add("result", verdict.result, verdict.cure);
  return text;
}

Json JsonOf(const std::vector<Step>& steps, const Verdict& verdict) {
  Json list = Json::array();
  for (const Step& step : steps) {
    Json entry = {{"step", step.name}, {"state", NameOf(step.state)}, {"finding", step.finding}};
    if (!step.cure.empty()) entry["cure"] = step.cure;
    entry.update(step.facts);
    list.push_back(std::move(entry));
  }
  Json report = {{"steps", std::move(list)}, {"result", verdict.result}};
  if (!verdict.cure.empty()) report["cure"] = verdict.cure;
  report["exit"] = static_cast<int>(verdict.code);
  return report;
}

int RunDoctor(const InspectorOptions& options) {
  EndAtOnceOnCtrlC(options.json);
  Findings findings =
      Examine({options.window, options.address, tools::SchemeFromName(options.scheme),
               options.module.empty() ? tools::PathBesideProgram() : tessel::Wide(options.module)});
  const Verdict verdict = Judge(findings);
  Adapt(findings, verdict.code);
  const std::vector<Step> steps = InOrder(findings);
  std::cout << (options.json ? TextOf(JsonOf(steps, verdict)) : LinesOf(steps, verdict))
            << std::flush;
  return static_cast<int>(verdict.code);
}

void AddDoctorOptions(CLI::App& command, InspectorOptions& options) {
  command.footer(DoctorCodeHelp());
  AddContentOptions(command, options);
  command
      .add_option("--module", options.module,
                  "The module that the client loads. The default is TesselSLB_x64.dll in the "
                  "folder of tessel")
      ->type_name("FILE")
      ->check(tools::RefuseEmpty);
}

constexpr ToolCommand kCommands[] = {
    {"doctor", "Check each step of a call, and say why calls fail", &RunDoctor, &AddDoctorOptions},
};

}  // namespace

std::span<const ToolCommand> DoctorCommands() { return kCommands; }

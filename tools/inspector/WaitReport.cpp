// Part of tessel. The command `wait`: waits for an element or for an attribute.
#include <algorithm>
#include <chrono>

#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/OptionParts.h"
#include "tools/shared/CommandLine.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

milliseconds TimeLeft(const InspectorOptions& options, Clock::time_point begin) {
  const milliseconds whole(static_cast<long long>(options.timeoutSeconds * 1000));
  const auto passed = std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
  return std::max(whole - passed, milliseconds::zero());
}

tessel::Element WaitUntilThere(Inspection& inspection, Clock::time_point begin) {
  const InspectorOptions& options = inspection.Options();
  return inspection.WaitFor("find the awaited element",
                            tessel::IsThere(inspection.Content(), SearchFor(*options.find)),
                            TimeLeft(options, begin));
}

Report WaitUntilGone(Inspection& inspection, Clock::time_point begin) {
  const InspectorOptions& options = inspection.Options();
  inspection.WaitFor("see the element go",
                     tessel::IsGone(inspection.Content(), SearchFor(*options.find)),
                     TimeLeft(options, begin));
  Report report;
  report.Add("done", options.command->name);
  return report;
}

// First waits for the element, if it is named by --find.
Report WaitForAttribute(Inspection& inspection, Clock::time_point begin) {
  const InspectorOptions& options = inspection.Options();
  if (options.find) WaitUntilThere(inspection, begin);
  tessel::Element element = inspection.FindElement();
  inspection.Do("see the attribute of " + NameOf(element) + " change", [&] {
    tessel::WaitUntil(
        tessel::AttributeIs(element, tessel::Wide(options.text), tessel::Wide(options.equals)),
        TimeLeft(options, begin));
  });
  Report report(element);
  report.Add("done", options.command->name);
  return report;
}

void CheckOptions(const InspectorOptions& options) {
  if (!options.text.empty()) return;
  if (!options.find) {
    throw InspectorError(ExitCode::kUsage, "wait needs --find, or --attr and --equals",
                         "see tessel wait --help");
  }
  if (options.parentSteps > 0) {
    throw InspectorError(ExitCode::kUsage, "--parent needs --attr", "see tessel wait --help");
  }
}

Report Wait(Inspection& inspection) {
  const InspectorOptions& options = inspection.Options();
  CheckOptions(options);
  const auto begin = Clock::now();
  if (options.gone) return WaitUntilGone(inspection, begin);
  if (!options.text.empty()) return WaitForAttribute(inspection, begin);
  Report report(WaitUntilThere(inspection, begin));
  report.Add("done", options.command->name);
  return report;
}

void AddConditions(CLI::App& command, InspectorOptions& options) {
  CLI::Option* const gone =
      command.add_flag("--gone", options.gone, "Wait until no element matches --find");
  CLI::Option* const attribute =
      command
          .add_option("--attr", options.text,
                      "Wait until this attribute or state equals the text of --equals")
          ->type_name("NAME")
          ->check(tools::RefuseEmpty)
          ->excludes(gone);
  CLI::Option* const text =
      command.add_option("--equals", options.equals, "The text; may be empty")->type_name("TEXT");
  attribute->needs(text);
  text->needs(attribute);
  command.add_option("--timeout", options.timeoutSeconds, "The longest wait")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.0, 1e6))
      ->capture_default_str();
}

constexpr InspectorCommand kCommands[] = {
    {"wait", "Wait until an element is there or gone, or until an attribute equals a text",
     InspectorCommand::Target::kByOptions, &Wait, &AddConditions},
};

}  // namespace

std::span<const InspectorCommand> WaitCommands() { return kCommands; }

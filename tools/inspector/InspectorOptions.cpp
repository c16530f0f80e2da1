#include "tools/inspector/InspectorOptions.h"

#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/OptionParts.h"
#include "tools/inspector/ToolCommand.h"
#include "tools/shared/CommandLine.h"

namespace {

using Target = InspectorCommand::Target;

void AddTargetOptions(CLI::App& app, Target target, InspectorOptions& options) {
  if (target == Target::kWhole) return;
  if (target != Target::kByItself) {
    AddElementOptions(app, options, target == Target::kByOptions);
  }
  AddParentOption(app, options);
}

void AddJsonOption(CLI::App& command, InspectorOptions& options) {
  command.add_flag("--json", options.json, "Report in JSON");
}

void AddTool(CLI::App& app, const ToolCommand& command, InspectorOptions& options) {
  CLI::App& subcommand = *app.add_subcommand(command.name, command.description);
  AddJsonOption(subcommand, options);
  if (command.addOptions != nullptr) command.addOptions(subcommand, options);
  subcommand.callback([&command, &options] { options.toolCommand = &command; });
}

void AddCommand(CLI::App& app, const InspectorCommand& command, InspectorOptions& options) {
  CLI::App& subcommand = *app.add_subcommand(command.name, command.description);
  AddContentOptions(subcommand, options);
  AddJsonOption(subcommand, options);
  AddTargetOptions(subcommand, command.target, options);
  if (command.addOptions != nullptr) command.addOptions(subcommand, options);
  subcommand.callback([&command, &options] {
    if (options.parentSteps > 0 && !options.NamesElement()) {
      throw CLI::RequiresError("--parent", "an element: one of --at, --focus and --find");
    }
    options.command = &command;
  });
}

}  // namespace

std::optional<int> ReadInspectorOptions(InspectorOptions& options) {
  CLI::App app("Inspects elements of Silverlight content through TesselSLB_x64.dll.", "tessel");
  app.allow_windows_style_options(false);  // "/x" is an argument, not an option
  app.require_subcommand(1);
  app.footer("tessel COMMAND --help shows the options of a command.\n\n" + ExitCodeHelp());
  for (const auto commands :
       {LookupCommands(), ElementCommands(), ActionCommands(), TreeCommands()}) {
    for (const InspectorCommand& command : commands) AddCommand(app, command, options);
  }
  for (const ToolCommand& command : ExplainCommands()) AddTool(app, command, options);
  return tools::ParseCommandLine(app);
}

#include "tools/inspector/InspectorOptions.h"

#include "tools/inspector/CommandWords.h"
#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/ModuleFile.h"
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

void CheckElementOptions(const InspectorOptions& options) {
  if (options.parentSteps > 0 && !options.NamesElement()) {
    throw CLI::RequiresError("--parent", "an element: one of --at, --focus and --find");
  }
  const SLUriScheme scheme = tools::SchemeFromName(options.scheme);
  if (options.focus && scheme != SL_NO_URI && scheme != SL_TAILORED_URI) {
    throw CLI::ValidationError("--scheme",
                               "the search for the focus asks the tailored broker first; leave "
                               "--scheme out, or name the element with --at or --find");
  }
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
  AddStatsOption(subcommand, options);
  AddTargetOptions(subcommand, command.target, options);
  if (command.addOptions != nullptr) command.addOptions(subcommand, options);
  subcommand.callback([&command, &options] {
    CheckElementOptions(options);
    options.command = &command;
  });
}

// Without --json, prints an error of CLI11 as plain text. With --json, throws it as an
// InspectorError, because the caller prints such an error as JSON.
std::optional<int> Parse(CLI::App& app, InspectorOptions& options) {
  const std::vector<std::string> arguments = tools::Arguments();
  options.json = AskForJson(arguments);
  CheckWords(app, arguments);
  try {
    tools::Parse(app, arguments);
    return std::nullopt;
  } catch (const CLI::Success& request) {  // --help or --version
    return app.exit(request);
  } catch (const CLI::ParseError& error) {
    if (options.json) throw InspectorError(ExitCode::kUsage, error.what(), "run with --help");
    app.exit(error);
    return static_cast<int>(ExitCode::kUsage);
  }
}

}  // namespace

std::optional<int> ReadInspectorOptions(InspectorOptions& options) {
  CLI::App app("Inspects elements of Silverlight content through TesselSLB_x64.dll.", "tessel");
  app.allow_windows_style_options(false);  // "/x" is an argument, not an option
  app.require_subcommand(1);
  app.footer("tessel COMMAND --help shows the options of a command.\n\n" + ExitCodeHelp());
  for (const auto commands :
       {LookupCommands(), ElementCommands(), ActionCommands(), TreeCommands(), WaitCommands()}) {
    for (const InspectorCommand& command : commands) AddCommand(app, command, options);
  }
  for (const auto commands :
       {ExplainCommands(), WindowsCommands(), DoctorCommands(), LogCommands(), TapCommands()}) {
    for (const ToolCommand& command : commands) AddTool(app, command, options);
  }
  app.set_version_flag("--version", &VersionText, "Print the versions of tessel and the module");
  return Parse(app, options);
}

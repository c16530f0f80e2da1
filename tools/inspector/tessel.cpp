// Part of tessel. The inspector's main program. Runs one command, prints its report as text or as
// JSON, and returns an exit code for scripts.
#include <exception>
#include <new>

#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/InspectorOptions.h"
#include "tools/inspector/Interruption.h"
#include "tools/inspector/ModuleFile.h"
#include "tools/inspector/Output.h"
#include "tools/inspector/ToolCommand.h"
#include "tools/shared/ConsoleText.h"

namespace {

// The command releases its elements before the report is printed.
int Inspect(const InspectorOptions& options) {
  LoadModule();
  EndAtOnceOnCtrlC(options.json);
  Inspection inspection(options);
  const StatisticsAtEnd statistics(inspection.Statistics(), options);
  Print(options.command->run(inspection), options);
  return static_cast<int>(ExitCode::kSuccess);
}

int Run(InspectorOptions& options) {
  if (const std::optional<int> code = ReadInspectorOptions(options)) return *code;
  return options.toolCommand != nullptr ? options.toolCommand->run(options) : Inspect(options);
}

const char* CommandName(const InspectorOptions& options) {
  if (options.command != nullptr) return options.command->name;
  return options.toolCommand != nullptr ? options.toolCommand->name : "read the command line";
}

InspectorError OtherFailure(const InspectorOptions& options, const std::string& meaning,
                            const std::string& cure) {
  const std::string message = std::string("cannot ") + CommandName(options) + ": " + meaning;
  return {ExitCode::kFailed, cure.empty() ? message : message + "; " + cure,
          Failure{.meaning = message, .cure = cure}};
}

}  // namespace

int main() {
  tools::PrepareConsole();
  InspectorOptions options;
  try {
    return Run(options);
  } catch (const InspectorError& error) {
    return PrintError(error, options.json);
  } catch (const std::bad_alloc&) {
    return PrintError(OtherFailure(options, "memory is exhausted",
                                   "check the broker: its answer may announce more values than it "
                                   "holds"),
                      options.json);
  } catch (const std::exception& error) {
    return PrintError(OtherFailure(options, error.what(), ""), options.json);
  }
}

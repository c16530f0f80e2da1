// Part of tessel. The inspector's main program. Runs one command, prints its report as text or as
// JSON, and returns an exit code for scripts.
#include <exception>
#include <iostream>

#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/InspectorOptions.h"
#include "tools/inspector/ToolCommand.h"
#include "tools/shared/ConsoleText.h"

namespace {

int EndWith(ExitCode exitCode, const std::string& message) {
  std::cerr << "tessel: " << message << std::endl;
  return static_cast<int>(exitCode);
}

std::string CommandName(const InspectorOptions& options) {
  return options.command != nullptr ? options.command->name : options.toolCommand->name;
}

// The command releases its elements before the report is printed.
void Inspect(const InspectorOptions& options) {
  Inspection inspection(options);
  const Report report = options.command->run(inspection);
  std::cout << (options.json ? report.JsonText() : report.Lines()) << std::flush;
}

int Run(const InspectorOptions& options) {
  if (options.toolCommand != nullptr) return options.toolCommand->run(options);
  Inspect(options);
  return static_cast<int>(ExitCode::kSuccess);
}

}  // namespace

int main() {
  tools::PrepareConsole();
  InspectorOptions options;
  if (const std::optional<int> code = ReadInspectorOptions(options)) return *code;
  try {
    return Run(options);
  } catch (const InspectorError& error) {
    return EndWith(error.exitCode, error.what());
  } catch (const std::exception& error) {
    return EndWith(ExitCode::kUnexpectedAnswer,
                   "cannot " + CommandName(options) + ": " + error.what());
  }
}

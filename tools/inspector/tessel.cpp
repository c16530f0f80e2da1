// Part of tessel. The inspector's main program. Runs one command, prints its report as text or as
// JSON, and returns an exit code for scripts.
#include <exception>
#include <iostream>

#include "tools/inspector/InspectorCommand.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/InspectorOptions.h"
#include "tools/shared/ConsoleText.h"

namespace {

int EndWith(ExitCode exitCode, const std::string& message) {
  std::cerr << "tessel: " << message << std::endl;
  return static_cast<int>(exitCode);
}

// The command releases its elements before the report is printed.
void Inspect(const InspectorOptions& options) {
  Inspection inspection(options);
  const Report report = options.command->run(inspection);
  std::cout << (options.json ? report.JsonText() : report.Lines()) << std::flush;
}

}  // namespace

int main() {
  tools::PrepareConsole();
  InspectorOptions options;
  if (const std::optional<int> code = ReadInspectorOptions(options)) return *code;
  try {
    Inspect(options);
    return static_cast<int>(ExitCode::kSuccess);
  } catch (const InspectorError& error) {
    return EndWith(error.exitCode, error.what());
  } catch (const std::exception& error) {
    return EndWith(ExitCode::kUnexpectedAnswer,
                   "cannot " + std::string(options.command->name) + ": " + error.what());
  }
}

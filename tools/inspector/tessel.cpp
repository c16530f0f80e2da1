// tessel. The inspector: one command a run, text for people, an exit code for scripts.
#include <exception>
#include <iostream>

#include "tools/inspector/Inspection.h"
#include "tools/inspector/ResultText.h"
#include "tools/shared/ConsoleText.h"

int main() {
  tools::PrepareConsole();
  InspectorOptions options;
  if (const std::optional<int> code = ReadInspectorOptions(options)) return *code;
  ExitCode exitCode = ExitCode::kSuccess;
  try {
    Inspect(options);
  } catch (const InspectorError& error) {
    std::cerr << "tessel: " << error.what() << std::endl;
    exitCode = error.exitCode;
  } catch (const std::exception& error) {
    std::cerr << "tessel: " << error.what() << std::endl;
    exitCode = ExitCode::kUnexpectedAnswer;
  }
  return static_cast<int>(exitCode);
}

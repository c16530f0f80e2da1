// Part of tessel. The command `log`: shows the module's log lines of all processes as they come.
#include <algorithm>
#include <iostream>
#include <optional>

#include "logging/LevelSource.h"
#include "tools/inspector/InspectorError.h"
#include "tools/inspector/ToolCommand.h"
#include "tools/inspector/doctor/LogLevelCheck.h"
#include "tools/inspector/log/ConsoleStop.h"
#include "tools/inspector/log/DebugBuffer.h"
#include "tools/inspector/log/EntryPrinter.h"
#include "tools/inspector/log/LevelSetting.h"
#include "tools/inspector/log/LoggedCommand.h"
#include "tools/shared/CommandLine.h"

namespace {

constexpr int kStopped = static_cast<int>(ExitCode::kInterrupted);

// When this time has passed after a change of the log level, every process uses the new level.
constexpr DWORD kPauseAfterChange = logging::kLevelRefreshMilliseconds + 100;

class LogView {
 public:
  explicit LogView(const InspectorOptions& options) : printer_(options) {}

  // Prints lines until the given time has passed or `process` has ended, whichever comes first.
  // `milliseconds` may be INFINITE, and `process` may be null. Returns false after Ctrl-C.
  bool PrintWhile(HANDLE process, DWORD milliseconds) {
    const ULONGLONG start = ::GetTickCount64();
    const HANDLE events[] = {stop_.Event(), buffer_.Filled(), process};
    for (;;) {
      const ULONGLONG passed = ::GetTickCount64() - start;
      if (passed >= milliseconds) return true;
      const DWORD left =
          milliseconds == INFINITE ? INFINITE : static_cast<DWORD>(milliseconds - passed);
      // If several events are set, the first of them counts.
      const DWORD event =
          ::WaitForMultipleObjects(process == nullptr ? 2 : 3, events, FALSE /*all*/, left);
      if (event == WAIT_OBJECT_0) return false;
      if (event == WAIT_OBJECT_0 + 1) printer_.Print(buffer_.Take());
      if (process == nullptr || !IsSet(process)) continue;
      // The last line of a process that has ended may still be in the buffer.
      if (IsSet(buffer_.Filled())) printer_.Print(buffer_.Take());
      return true;
    }
  }

 private:
  static bool IsSet(HANDLE object) {
    return ::WaitForSingleObject(object, 0 /*ms*/) == WAIT_OBJECT_0;
  }

  // The buffer comes first, because its constructor throws if another viewer has the buffer. The
  // printer then creates no file.
  DebugBuffer buffer_;
  EntryPrinter printer_;
  const ConsoleStop stop_;
};

int RunAndShow(LogView& view, const std::vector<std::string>& command) {
  const tools::Handle process = StartCommand(command);
  if (!view.PrintWhile(process.get(), INFINITE)) return kStopped;
  DWORD code = 0;
  ::GetExitCodeProcess(process.get(), &code);
  return static_cast<int>(code);
}

// With --json, standard error holds only errors in JSON.
void Tell(const InspectorOptions& options, const std::string& text) {
  if (!options.json) std::cerr << "tessel: " << text << std::endl;
}

// Tells the user why few lines may appear.
void TellIfSwitchedOff(const InspectorOptions& options) {
  const Step level = CheckLogLevel();
  if (level.state == Step::State::kFound) return;
  Tell(options, "log level: " + level.finding + "; give --level");
}

// Returns the words of the command. Takes them from the command line if they follow "--", because
// CLI11 changes words in brackets.
std::vector<std::string> CommandOf(const InspectorOptions& options) {
  const std::vector<std::string> arguments = tools::Arguments();
  const auto dashes = std::ranges::find(arguments, "--");
  if (dashes == arguments.end()) return options.logCommand;
  return {dashes + 1, arguments.end()};
}

int ShowLog(const InspectorOptions& options) {
  LogView view(options);
  // Declared after the buffer, so that the level changes only while the buffer is held.
  std::optional<LevelSetting> level;
  if (options.logLevel.empty()) {
    TellIfSwitchedOff(options);
  } else {
    level.emplace(options.logLevel);
    Tell(options, "the user's log level is " + options.logLevel + " until this command ends");
  }
  const bool isChanged = level && level->HasChanged();
  if (options.logCommand.empty()) {
    view.PrintWhile(nullptr, INFINITE);
    return kStopped;
  }
  if (!view.PrintWhile(nullptr, isChanged ? kPauseAfterChange : 0)) return kStopped;
  return RunAndShow(view, CommandOf(options));
}

void AddLogOptions(CLI::App& command, InspectorOptions& options) {
  command
      .add_option("--level", options.logLevel,
                  "Set the user's log level in the registry, and restore it at the end")
      ->check(CLI::IsMember({"VERBOSE", "INFO", "WARNING", "ERROR"}, CLI::ignore_case));
  command.add_option("--process", options.logProcess, "Show only the lines of this process")
      ->type_name("ID")
      ->check(CLI::PositiveNumber);
  command.add_option("--file", options.logFile, "Also write the lines to this file")
      ->type_name("FILE")
      ->check(tools::RefuseEmpty);
  command
      .add_option("command", options.logCommand,
                  "Write -- before it. Run this command, end with it, and return its exit code")
      ->type_name("COMMAND...");
}

constexpr ToolCommand kCommands[] = {
    {"log", "Show the module's log lines of all processes as they come", &ShowLog, &AddLogOptions},
};

}  // namespace

std::span<const ToolCommand> LogCommands() { return kCommands; }

#include "tools/inspector/log/EntryPrinter.h"

#include <filesystem>
#include <iostream>
#include <stdexcept>

#include "tessel/Text.h"
#include "tools/inspector/InspectorError.h"

namespace {

// Returns whether standard output is a terminal, and makes the terminal understand colours.
bool PrepareColours() {
  const HANDLE output = ::GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode = 0;
  return ::GetConsoleMode(output, &mode) &&
         ::SetConsoleMode(output, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

}  // namespace

EntryPrinter::EntryPrinter(const InspectorOptions& options)
    : options_(options), coloured_(!options.json && PrepareColours()) {
  if (options.logFile.empty()) return;
  file_.open(std::filesystem::path(tessel::Wide(options.logFile)), std::ios::binary);
  if (!file_) {
    throw InspectorError(ExitCode::kUsage,
                         "cannot write the file " + tessel::Quoted(options.logFile),
                         "check that its folder exists, and that you may write there");
  }
}

void EntryPrinter::Print(const DebugText& text) {
  const std::optional<LogEntry> entry = ParseLogEntry(text);
  if (!entry || (options_.logProcess != 0 && entry->process != options_.logProcess)) return;
  Write(std::cout, *entry, coloured_);
  if (file_.is_open()) Write(file_, *entry, false);
}

void EntryPrinter::Write(std::ostream& stream, const LogEntry& entry, bool coloured) const {
  stream << (options_.json ? JsonLineOf(entry) : LinesOf(entry, coloured)) << std::flush;
  if (!stream) throw std::runtime_error("the lines cannot be written");
}

// Part of tessel. Prints the log entries that the options of `tessel log` select.
#pragma once

#include <fstream>

#include "tools/inspector/InspectorOptions.h"
#include "tools/inspector/log/LogEntry.h"

class EntryPrinter {
 public:
  // Throws InspectorError if the file that --file names cannot be written.
  explicit EntryPrinter(const InspectorOptions& options);

  // Prints nothing if another program has written the text. Throws std::runtime_error if the line
  // cannot be written.
  void Print(const DebugText& text);

 private:
  void Write(std::ostream& stream, const LogEntry& entry, bool coloured) const;

  const InspectorOptions& options_;
  const bool coloured_;
  std::ofstream file_;
};

// Part of tessel. One line of the module's log, parsed. package/README.md describes the form of a
// line.
#pragma once

#include <optional>
#include <string>

#include "tools/inspector/log/DebugBuffer.h"

struct LogEntry {
  DWORD process;
  unsigned long thread;
  std::string time;   // "MM-DD HH:MM:SS.mmm", in local time
  std::string level;  // as the line has it, for example "VERBOSE1"
  std::string version;
  std::string file;
  int line;
  std::string message;
};

// Returns nothing if another program has written the text.
std::optional<LogEntry> ParseLogEntry(const DebugText& text);

// Returns the lines for people, each with a line feed at the end. The first one begins with time,
// level, process and thread. A message of several lines, such as a stack dump, has its further
// lines below it.
std::string LinesOf(const LogEntry& entry, bool coloured);

// Returns the JSON object in one line, with a line feed at the end.
std::string JsonLineOf(const LogEntry& entry);

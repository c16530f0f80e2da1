#include "tools/inspector/log/LogEntry.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

#include "tessel/Text.h"
#include "tools/inspector/Report.h"

namespace {

constexpr const char* kEndColour = "\x1b[0m";

std::string ColourOf(const std::string& level) {
  if (level == "FATAL" || level == "ERROR") return "\x1b[31m";  // red
  if (level == "WARNING") return "\x1b[33m";                    // yellow
  return level == "INFO" ? "" : "\x1b[90m";                     // grey
}

std::string Padded(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size()), ' ');
  return text;
}

}  // namespace

std::optional<LogEntry> ParseLogEntry(const DebugText& text) {
  LogEntry entry = {text.process, 0, {}, {}, {}, {}, 0, {}};
  char date[5] = {}, time[11] = {}, level[16] = {}, version[32] = {}, file[260] = {};
  int messageStart = 0;
  // Each width in the format, such as 31, is the size of a buffer minus one for the final zero.
  std::sscanf(text.text.c_str(),
              "{%lu} [%4[0-9]/%10[0-9.]:%15[A-Z0-9]:(v%31[0-9_]) %259[^(](%d)]%n", &entry.thread,
              date, time, level, version, file, &entry.line, &messageStart);
  const std::string day = date, clock = time;
  if (messageStart == 0 || day.size() != 4 || clock.size() != 10) return std::nullopt;
  entry.time = day.substr(0, 2) + '-' + day.substr(2) + ' ' + clock.substr(0, 2) + ':' +
               clock.substr(2, 2) + ':' + clock.substr(4);
  entry.level = level;
  entry.version = version;
  entry.file = file;
  entry.message = text.text.substr(messageStart);
  entry.message.erase(0, entry.message.starts_with(' ') ? 1 : 0);
  entry.message.erase(entry.message.find_last_not_of('\n') + 1);
  return entry;
}

std::string LinesOf(const LogEntry& entry, bool coloured) {
  std::string text = entry.time + ' ' + Padded(entry.level, 8) + ' ' +
                     std::to_string(entry.process) + ' ' + std::to_string(entry.thread) + ' ' +
                     entry.file + '(' + std::to_string(entry.line) + ") ";
  if (coloured) text = ColourOf(entry.level) + text;
  std::istringstream message(entry.message);
  std::string line;
  std::getline(message, line);
  text += tessel::Printable(line);
  while (std::getline(message, line)) text += "\n    " + tessel::Printable(line);
  return text + (coloured ? kEndColour : "") + '\n';
}

std::string JsonLineOf(const LogEntry& entry) {
  const Json json = {{"process", entry.process}, {"thread", entry.thread},   {"time", entry.time},
                     {"level", entry.level},     {"version", entry.version}, {"file", entry.file},
                     {"line", entry.line},       {"message", entry.message}};
  return LineOf(json);
}

// Runs in the client and in the broker. Decides which lines are logged. The registry and a trace
// session set the levels.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

#include "logging/LevelSource.h"

namespace logging {

// The levels that decide whether a line is logged. They share 64 bits, so that one atomic operation
// reads or changes all of them.
struct LogLevels {
  // The tick count in ms at which `configured` is read again; 40 bits last for 34 years.
  std::uint64_t staleTick : 40;
  std::int64_t configured : 8;
  // The lowest level that the trace session records. It is at least 4 - 255, because the session's
  // own level is at most 255.
  std::int64_t trace : 16;
};
extern constinit std::atomic<LogLevels> logLevels;

// Reads the level from the registry, stores it in logLevels and returns the new levels. The first
// call in the process also registers the event provider.
LogLevels EnsureProviderAndReadLevel(std::uint64_t now);

inline LogLevels GetLogLevels() {
  const std::uint64_t now = ::GetTickCount64();
  const LogLevels levels = logLevels.load();
  return now < levels.staleTick ? levels : EnsureProviderAndReadLevel(now);
}

// Returns the level that the registry value TESSEL_LOG_LEVEL names. The user's value takes
// precedence over the machine's. Returns kFatal if neither value is set or the value's text names
// no level. Reads the registry at most once every 3 seconds.
inline int GetConfiguredLogLevel() { return static_cast<int>(GetLogLevels().configured); }

// Returns the lowest level that the trace session records, or kFatal if there is no session.
inline int GetTraceLevel() { return static_cast<int>(logLevels.load().trace); }
void SetTraceLevel(int level);

// Returns whether a line of this level goes to the debugger output or to a trace session. This
// function is inline, because it is the whole cost of a line that is not logged. There are many
// such lines: an archive (JArchive) logs one line for each value.
inline bool IsLogged(int level) {
  const LogLevels levels = GetLogLevels();
  return level >= levels.configured || level >= levels.trace;
}

}  // namespace logging

// Both processes. Which lines are wanted: by the operator (registry) and by a trace session.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace logging {

enum Level : int { kVerbose = -1, kInfo = 0, kWarning = 1, kError = 2, kFatal = 3 };

// All that the level test of a line looks at, in one word: it is read once, and changes as a whole.
struct LogLevels {
  std::uint64_t staleTick : 40;  // when `configured` is to be read again: never in 34 years
  std::int64_t configured : 8;
  std::int64_t trace : 16;  // 4 less what a session asks for, which may be 255
};
extern constinit std::atomic<LogLevels> logLevels;

// Reads the registry. The first call of the process sets the log up.
LogLevels RefreshLogLevels(std::uint64_t now);

inline LogLevels GetLogLevels() {
  const std::uint64_t now = ::GetTickCount64();
  const LogLevels levels = logLevels.load();
  return now < levels.staleTick ? levels : RefreshLogLevels(now);
}

// The level from the registry value TESSEL_LOG_LEVEL, the user's environment before the machine's;
// kFatal when neither says anything known. Read at most once every 3 seconds.
inline int GetConfiguredLogLevel() { return static_cast<int>(GetLogLevels().configured); }

// The lowest level that the event-tracing provider takes; kFatal while no session listens.
inline int GetTraceLevel() { return static_cast<int>(logLevels.load().trace); }
void SetTraceLevel(int level);

// Whether either of the two wants the line. Inline: of a line that nobody wants, and an archive has
// one for each value, this is the whole cost.
inline bool IsLogged(int level) {
  const LogLevels levels = GetLogLevels();
  return level >= levels.configured || level >= levels.trace;
}

}  // namespace logging

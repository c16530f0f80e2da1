// Both processes. Which lines are logged: those that the registry or a trace session asks for.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace logging {

enum Level : int { kVerbose = -1, kInfo = 0, kWarning = 1, kError = 2, kFatal = 3 };

// Everything that decides whether a line is logged, in one word, which is read and changed as a
// whole.
struct LogLevels {
  std::uint64_t staleTick : 40;  // when `configured` must be read again; 40 bits last for 34 years
  std::int64_t configured : 8;
  std::int64_t trace : 16;  // 4 minus the session's level. That may be 255, so as low as -251.
};
extern constinit std::atomic<LogLevels> logLevels;

// Registers the event provider, on the first call in the process, and reads the level from the
// registry.
LogLevels EnsureProviderAndReadLevel(std::uint64_t now);

inline LogLevels GetLogLevels() {
  const std::uint64_t now = ::GetTickCount64();
  const LogLevels levels = logLevels.load();
  return now < levels.staleTick ? levels : EnsureProviderAndReadLevel(now);
}

// The level from the registry value TESSEL_LOG_LEVEL: the user's, else the machine's. kFatal when
// neither is set or the text is no level. Read at most once every 3 seconds.
inline int GetConfiguredLogLevel() { return static_cast<int>(GetLogLevels().configured); }

// The lowest level that the event-tracing provider takes; kFatal while no session listens.
inline int GetTraceLevel() { return static_cast<int>(logLevels.load().trace); }
void SetTraceLevel(int level);

// Whether a line of this level goes to the debugger output or to a trace session. Inline, because
// it is the whole cost of a line that is not logged, and an archive has one for each value.
inline bool IsLogged(int level) {
  const LogLevels levels = GetLogLevels();
  return level >= levels.configured || level >= levels.trace;
}

}  // namespace logging

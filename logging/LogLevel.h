// Both processes. Which lines are wanted: by the operator (registry) and by a trace session.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>

namespace logging {

enum Level : int { kVerbose = -1, kInfo = 0, kWarning = 1, kError = 2, kFatal = 3 };

// What the level test of a line looks at.
struct LevelCache {
  std::atomic<int> configured{kFatal};
  std::atomic<std::uint64_t> staleTick{0};  // when `configured` is to be read again
  std::atomic<int> trace{kFatal};
};
extern constinit LevelCache levelCache;

// Reads the registry. The first call of the process sets the log up.
int RefreshConfiguredLogLevel(std::uint64_t now);

// The level from the registry value TESSEL_LOG_LEVEL, the user's environment before the machine's;
// kFatal when neither says anything known. Read at most once every 3 seconds.
inline int GetConfiguredLogLevel() {
  const std::uint64_t now = ::GetTickCount64();
  if (now < levelCache.staleTick.load()) [[likely]]
    return levelCache.configured.load();
  return RefreshConfiguredLogLevel(now);
}

// The lowest level that the event-tracing provider takes; kFatal while no session listens.
inline int GetTraceLevel() { return levelCache.trace.load(); }
inline void SetTraceLevel(int level) { levelCache.trace.store(level); }

// Whether either of the two wants the line. Inline: of a line that nobody wants, and an archive has
// one for each value, this is the whole cost.
inline bool IsLogged(int level) {
  return level >= GetConfiguredLogLevel() || level >= GetTraceLevel();
}

}  // namespace logging

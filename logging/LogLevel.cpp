#include "logging/LogLevel.h"

#include "logging/LastErrorGuard.h"
#include "logging/LogEventProvider.h"

namespace logging {
namespace {

int ReadLevelFromRegistry() {
  for (const LevelPlace& place : LevelPlaces()) {
    const LevelText read = ReadLevelText(place);
    if (read.status == ERROR_SUCCESS) return LevelFromText(read.text).value_or(kFatal);
  }
  return kFatal;
}

// Changes the levels in one atomic step, even if other threads change them at the same time.
// Returns the new levels.
template <class Change>
LogLevels ChangeLevels(Change change) {
  LogLevels old = logLevels.load(), levels;
  do {
    levels = old;
    change(levels);
  } while (!logLevels.compare_exchange_weak(old, levels));
  return levels;
}

}  // namespace

constinit std::atomic<LogLevels> logLevels{{0 /*staleTick*/, kFatal, kFatal}};

LogLevels EnsureProviderAndReadLevel(std::uint64_t now) {
  const LastErrorGuard keepLastError;
  EnsureEventProvider();
  const int configured = ReadLevelFromRegistry();
  return ChangeLevels([&](LogLevels& levels) {
    levels.configured = configured;
    levels.staleTick = now + kLevelRefreshMilliseconds;
  });
}

void SetTraceLevel(int level) {
  ChangeLevels([level](LogLevels& levels) { levels.trace = level; });
}

}  // namespace logging

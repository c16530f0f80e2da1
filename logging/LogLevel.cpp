#include "logging/LogLevel.h"

#include <cstring>

#include "logging/LastErrorGuard.h"
#include "logging/LogEventProvider.h"

namespace logging {
namespace {

constexpr std::uint64_t kRefreshMilliseconds = 3000;

int LevelFromText(const char* text) {
  static constexpr struct {
    const char* name;
    int level;
  } kNames[] = {{"VERBOSE", kVerbose}, {"INFO", kInfo}, {"WARNING", kWarning}, {"ERROR", kError}};
  for (const auto& entry : kNames) {
    // Does not use lstrcmpi, because lstrcmpi compares by the rules of a language and ignores
    // control characters.
    if (::_stricmp(text, entry.name) == 0) return entry.level;
  }
  return kFatal;
}

int ReadLevelFromRegistry() {
  static const struct {
    HKEY root;
    const char* key;
  } kPlaces[] = {
      {HKEY_CURRENT_USER, "Environment"},
      {HKEY_LOCAL_MACHINE, "System\\CurrentControlSet\\Control\\Session Manager\\Environment"}};
  char text[11] = {};
  for (const auto& place : kPlaces) {
    DWORD size = sizeof(text) - 1;
    // Without RRF_NOEXPAND, RegGetValueA would accept REG_EXPAND_SZ values as well.
    if (::RegGetValueA(place.root, place.key, "TESSEL_LOG_LEVEL", RRF_RT_REG_SZ | RRF_NOEXPAND,
                       nullptr /*type*/, text, &size) == ERROR_SUCCESS) {
      return LevelFromText(text);
    }
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
    levels.staleTick = now + kRefreshMilliseconds;
  });
}

void SetTraceLevel(int level) {
  ChangeLevels([level](LogLevels& levels) { levels.trace = level; });
}

}  // namespace logging

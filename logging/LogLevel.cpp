#include "logging/LogLevel.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>

#include "logging/LastErrorGuard.h"
#include "logging/LogEventProvider.h"

namespace logging {
namespace {

constexpr std::uint64_t kRefreshMilliseconds = 3000;

std::atomic<int> configuredLevel{kFatal};
std::atomic<std::uint64_t> lastReadTick{0};  // 0: never read
std::atomic<int> traceLevel{kFatal};

int LevelFromText(const char* text) {
  static constexpr struct {
    const char* name;
    int level;
  } kNames[] = {{"VERBOSE", kVerbose}, {"INFO", kInfo}, {"WARNING", kWarning}, {"ERROR", kError}};
  for (const auto& entry : kNames) {
    // Not lstrcmpi: a linguistic comparison passes over control characters.
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
    // Without RRF_NOEXPAND an expandable string would count as a string.
    if (::RegGetValueA(place.root, place.key, "TESSEL_LOG_LEVEL", RRF_RT_REG_SZ | RRF_NOEXPAND,
                       nullptr /*type*/, text, &size) == ERROR_SUCCESS) {
      return LevelFromText(text);
    }
  }
  return kFatal;
}

}  // namespace

int GetConfiguredLogLevel() {
  const std::uint64_t now = ::GetTickCount64();
  const std::uint64_t lastRead = lastReadTick.load();
  if (lastRead != 0 && now - lastRead < kRefreshMilliseconds) return configuredLevel.load();

  const LastErrorGuard keepLastError;
  const int level = ReadLevelFromRegistry();
  configuredLevel.exchange(level);
  lastReadTick.exchange(now);
  return level;
}

int GetTraceLevel() { return traceLevel.load(); }
void SetTraceLevel(int level) { traceLevel.store(level); }

int LowestLoggedLevel() {
  const LastErrorGuard keepLastError;
  EnsureEventProvider();
  return std::min(traceLevel.load(), GetConfiguredLogLevel());
}

}  // namespace logging

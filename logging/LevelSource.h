// Runs in the client, in the broker and in the inspector. Says where the registry holds the log
// level, and what its text means.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

namespace logging {

enum Level : int { kVerbose = -1, kInfo = 0, kWarning = 1, kError = 2, kFatal = 3 };

// A process reads the level again after this time.
inline constexpr std::uint64_t kLevelRefreshMilliseconds = 3000;

inline constexpr char kLevelVariable[] = "TESSEL_LOG_LEVEL";
inline constexpr std::size_t kLongestLevelText = 9;

struct LevelPlace {
  HKEY root;
  const char* key;
};

// Returns the place of the user's variable, then the place of the machine's variable. The first of
// them with a usable text decides.
inline std::span<const LevelPlace> LevelPlaces() {
  static const LevelPlace kPlaces[] = {
      {HKEY_CURRENT_USER, "Environment"},
      {HKEY_LOCAL_MACHINE, "System\\CurrentControlSet\\Control\\Session Manager\\Environment"}};
  return kPlaces;
}

// The text of a variable, and how reading it ended: ERROR_SUCCESS; ERROR_MORE_DATA if the text is
// too long; ERROR_UNSUPPORTED_TYPE if the value is not of type REG_SZ; or another error if there is
// no value. The text counts only after ERROR_SUCCESS.
struct LevelText {
  LSTATUS status;
  char text[kLongestLevelText + 2];
};

inline LevelText ReadLevelText(const LevelPlace& place) {
  LevelText result = {};
  DWORD size = sizeof(result.text) - 1;
  // Without RRF_NOEXPAND, RegGetValueA would accept REG_EXPAND_SZ values as well.
  result.status =
      ::RegGetValueA(place.root, place.key, kLevelVariable, RRF_RT_REG_SZ | RRF_NOEXPAND,
                     nullptr /*type*/, result.text, &size);
  return result;
}

// Returns nothing if the text names no level.
inline std::optional<Level> LevelFromText(const char* text) {
  static constexpr struct {
    const char* name;
    Level level;
  } kNames[] = {{"VERBOSE", kVerbose}, {"INFO", kInfo}, {"WARNING", kWarning}, {"ERROR", kError}};
  for (const auto& entry : kNames) {
    // Does not use lstrcmpi, because lstrcmpi compares by the rules of a language and ignores
    // control characters.
    if (::_stricmp(text, entry.name) == 0) return entry.level;
  }
  return std::nullopt;
}

}  // namespace logging

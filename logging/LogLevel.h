// Both processes. Which lines are wanted: by the operator (registry) and by a trace session.
#pragma once

namespace logging {

enum Level : int { kVerbose = -1, kInfo = 0, kWarning = 1, kError = 2, kFatal = 3 };

// The level from the registry value TESSEL_LOG_LEVEL, the user's environment before the machine's;
// kFatal when neither says anything known. Read at most once every 3 seconds.
int GetConfiguredLogLevel();

// The lowest level that the event-tracing provider takes; kFatal while no session listens.
int GetTraceLevel();
void SetTraceLevel(int level);

// The lower of the two. The first call of the process sets the log up.
int LowestLoggedLevel();

inline bool IsLogged(int level) { return level >= LowestLoggedLevel(); }

}  // namespace logging

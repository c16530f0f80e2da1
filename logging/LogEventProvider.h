// Runs in the client and in the broker. The event-tracing provider that writes log lines as trace
// events.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "logging/EtwTraceProvider.h"

namespace logging {

// One complete log line. The debugger output and event tracing both receive it. `file` and `text`
// are followed by a terminating zero.
struct LogLine {
  int level;
  const char* file;  // product version and file name
  int line;
  std::size_t messageStart;  // where the message starts in `text`
  std::string_view text;
};

class LogEventProvider final : public base::win::EtwTraceProvider {
 public:
  LogEventProvider();

  void WriteLine(const LogLine& line) const;

 private:
  void OnEventsEnabled(UCHAR sessionLevel) override;
  void OnEventsDisabled() override;

  std::optional<int> savedTraceLevel_;  // from before the session; empty without a session
};

// Registers the provider on the first call in the process. It is unregistered when the module is
// unloaded.
void EnsureEventProvider();

// Returns null before the registration, and after the module has started to unload.
const LogEventProvider* GetEventProvider();

}  // namespace logging

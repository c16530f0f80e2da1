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
  const char* file;  // the source file's name, after the product version: "(v1_0_0_0) Name.cpp"
  int line;
  std::size_t messageStart;  // the position in `text` at which the message starts
  std::string_view text;
};

class LogEventProvider final : public base::win::EtwTraceProvider {
 public:
  LogEventProvider();

  void WriteLine(const LogLine& line) const;

 private:
  void OnEventsEnabled(UCHAR sessionLevel) override;
  void OnEventsDisabled() override;

  // The trace level before the session began. Empty if no session runs.
  std::optional<int> savedTraceLevel_;
};

// The first call in the process registers the provider. Unloading the module unregisters it.
void EnsureEventProvider();

// Returns null before the provider is registered, and after the module has started to unload.
const LogEventProvider* GetEventProvider();

}  // namespace logging

// Both processes. The log's own event-tracing provider.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "logging/EtwTraceProvider.h"

namespace logging {

// One finished line: what both sinks are given. The texts end in a zero.
struct LogLine {
  int level;
  const char* file;  // the prefix: version and file name
  int line;
  std::size_t messageStart;
  std::string_view text;
};

class LogEventProvider final : public base::win::EtwTraceProvider {
 public:
  LogEventProvider();

  void WriteLine(const LogLine& line) const;

 private:
  void OnEventsEnabled(UCHAR sessionLevel) override;
  void OnEventsDisabled() override;

  std::optional<int> savedTraceLevel_;  // while a session listens
};

// Registers the process-wide provider, once; it is unregistered when the module unloads.
void EnsureEventProvider();

// Null before the registration and after the module began to unload.
const LogEventProvider* GetEventProvider();

}  // namespace logging

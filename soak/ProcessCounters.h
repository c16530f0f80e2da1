// Runs in the client and in the host. Counts the resources that a process holds, to find leaks.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace soak {

struct ProcessCounters {
  long handles, blocks, threads, windows;
  bool operator==(const ProcessCounters&) const = default;
};

// Counts for this process. `blocks` are the blocks of the process heap that are in use.
ProcessCounters CountProcess();

// Calls `round` again and again until the counters stay the same over several rounds, and returns
// them. They grow at first, because the system allocates some resources on first use and per
// thread. Returns no value if they never settle.
std::optional<ProcessCounters> CountWhenSettled(const std::function<void(int)>& round);

// Makes a leak of each kind on purpose. Returns false if a counter does not see it.
bool CountersSeeLeaks();

std::string ToText(const ProcessCounters& counters);

}  // namespace soak

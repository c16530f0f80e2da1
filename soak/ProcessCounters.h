// Runs in the client's process and in the host's process. Counts the resources that a process
// holds, to find leaks.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace soak {

struct ProcessCounters {
  long handles, blocks, threads, windows;
  bool operator==(const ProcessCounters&) const = default;
};

// Counts the resources of this process. `blocks` is the number of blocks in use on the process
// heap.
ProcessCounters CountProcess();

// Without this call the system keeps a varying number of freed BSTRs, which count as blocks.
void SwitchOffTextCache();

// Calls `round` again and again until the counters stay the same over several rounds, and returns
// the counters. The counters grow at first, because the system allocates some resources on first
// use and for each thread. Returns no value if the counters never stay the same.
std::optional<ProcessCounters> CountWhenSettled(const std::function<void(int)>& round);

// Makes a leak of each kind on purpose. Returns false if a counter does not show its leak.
bool CountersSeeLeaks();

std::string ToText(const ProcessCounters& counters);

}  // namespace soak

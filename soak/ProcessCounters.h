// Runs in soak_client, soak_host and soak_shared_handles. Counts the resources that the program's
// own process holds, to find leaks.
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

// Calls `round` again and again until five calls in a row have not changed the counters, and
// returns the counters. The counters grow at first, because the system allocates some resources on
// first use and for each thread. Returns no value if the counters still change after 40 calls.
std::optional<ProcessCounters> CountWhenSettled(const std::function<void(int)>& round);

// Allocates one resource of each kind and frees it again. Returns false if a counter does not count
// its resource meanwhile.
bool CountersSeeLeaks();

std::string ToText(const ProcessCounters& counters);

}  // namespace soak

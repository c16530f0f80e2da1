// What a process holds, counted where the system keeps it.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace soak {

struct ProcessCounters {
  long handles, blocks, threads, windows;
  bool operator==(const ProcessCounters&) const = default;
};

// Of this process; blocks are those of its heap that are in use.
ProcessCounters CountProcess();

// What this process holds once it has stayed the same over some runs of `round`: the system keeps
// things of the first calls and failures of each kind, and of as many threads as run at once. None
// when it grows on and on.
std::optional<ProcessCounters> CountWhenSettled(const std::function<void(int)>& round);

// Plants a leak of each kind in turn; false if its counter does not see it.
bool CountersSeeLeaks();

std::string ToText(const ProcessCounters& counters);

}  // namespace soak

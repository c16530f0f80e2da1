// What a process holds, counted where the system keeps it.
#pragma once

#include <string>

namespace soak {

struct ProcessCounters {
  long handles, blocks, threads, windows;
  bool operator==(const ProcessCounters&) const = default;
};

// Of this process; blocks are those of its heap that are in use.
ProcessCounters CountProcess();

// Plants a leak of each kind in turn; false if its counter does not see it.
bool CountersSeeLeaks();

std::string ToText(const ProcessCounters& counters);

}  // namespace soak

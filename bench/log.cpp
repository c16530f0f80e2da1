// Measures a log line that is not written, because its level is disabled. The check of the level
// must at least read the tick count and two atomic values. Compares the log line with these reads
// alone.
#include <windows.h>

#include <atomic>
#include <cstdint>
#include <cstdio>

#include "Harness.h"
#include "HeapCount.h"
#include "logging/Log.h"

namespace {

using namespace bench;

std::atomic<int> level{logging::kFatal};
std::atomic<std::uint64_t> lastRead{1};
std::size_t evaluated = 0;

int Evaluated(int number) {
  ++evaluated;
  return number;
}

void LogLine() { LOG_INFO("SendMessageToBroker for %s scheme: %d", "tailored", Evaluated(1)); }

Grid::Line CountOf(const char* name, void (*run)()) {
  run();  // the first call initializes the log
  const std::size_t before = CurrentHeap().allocations;
  evaluated = 0;
  for (int i = 0; i < 1000; ++i) run();
  const std::size_t allocations = CurrentHeap().allocations - before;
  return {name, {static_cast<double>(allocations) / 1000, static_cast<double>(evaluated) / 1000}};
}

}  // namespace

int main(int count, char** arguments) {
  Report report(count, arguments);
  if (logging::IsLogged(logging::kInfo)) {
    std::fputs("the log is switched on: nothing to measure\n", stderr);
    return 1;
  }
  report.Measure({"log",
                  "a disabled log line",
                  {MakeRow("tick count and two atomic loads",
                           [] {
                             sink = ::GetTickCount64() - lastRead.load(std::memory_order_acquire) +
                                    static_cast<std::size_t>(level.load(std::memory_order_acquire));
                           }),
                   MakeRow("LOG_INFO with two arguments", [] { LogLine(); })}});
  report.Print({"log",
                "allocations and evaluated arguments per line",
                {"", "allocations", "arguments"},
                {CountOf("disabled: LOG_INFO", LogLine), CountOf("to compare: makes a text", [] {
                   sink = std::string(static_cast<std::size_t>(Evaluated(100)), 'x').size();
                 })}});
}

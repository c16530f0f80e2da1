// soak_client RUN INDEX SEED is a client of an endurance run. Four threads make calls of every
// kind, check each answer, and release the elements that they received. The exit code is 0 if the
// process holds the same resources at the end as after the warm-up.
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "Caller.h"
#include "ProcessCounters.h"

namespace {

using namespace soak;

constexpr int kWarmUpSteps = 50;

// When two threads first compete for a lock, the C++ runtimes allocate a handle for the lock and
// keep the handle. Here many threads start, throw and end at the same time, so that all these
// handles exist before the counting begins.
void MeetAtLocks() {
  constexpr int kMany = 8, kRounds = 50, kThrows = 100;
  for (int round = 0; round < kRounds; ++round) {
    std::atomic<int> here = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kMany; ++i) {
      threads.emplace_back([&here] {
        SLElemData element;
        element.processId = 1;
        element.hwnd = ::GetDesktopWindow();
        element.uriScheme = SL_TAILORED_URI;
        element.objectId = ::SysAllocString(L"none");
        element.sourceUri = L"http://none.example/";
        for (++here; here < kMany;) ::Sleep(0);
        for (int j = 0; j < kThrows; ++j) {
          // In this call, the module throws and catches an exception.
          TesselSilverlight::SelectItem(element, CComBSTR());
          try {
            throw std::bad_alloc();
          } catch (const std::bad_alloc&) {
          }
        }
        // Clears the id, so that the destructor sends no release. There is no broker to receive it.
        ::SysFreeString(std::exchange(element.objectId, nullptr));
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
}

// Runs the threads while `more` returns true and the conductor does not stop the run. `more`
// receives the number of steps that the thread has done. Meanwhile stores the process's counters in
// the shared state.
void RunThreads(SharedState& state, DWORD run, int index, unsigned seed,
                const std::function<bool(int)>& more) {
  std::atomic<int> running = kThreads;
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      Caller caller(state, run, seed * 16 + static_cast<unsigned>(i) + 1);
      bool calm = false;
      for (int step = 0; more(step) && !state.stop; ++step) {
        if (calm != (state.wantCalm != 0)) {
          calm = !calm;
          state.calmThreads += calm ? 1 : -1;
        }
        caller.Step(calm);
      }
      if (calm) --state.calmThreads;
      --running;
    });
  }
  for (int i = 0; running > 0; ++i) {
    ::Sleep(20);
    if (i % 100 != 99) continue;
    const ProcessCounters now = CountProcess();
    state.clients[index].handles = now.handles;
    state.clients[index].blocks = now.blocks;
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 4) return 2;
  const DWORD run = std::strtoul(arguments[1], nullptr, 10);
  const int index = std::atoi(arguments[2]);
  const auto seed = static_cast<unsigned>(std::strtoul(arguments[3], nullptr, 10));
  const SharedMemory state(run);
  SwitchOffTextCache();
  // The first calls of these functions allocate memory that is never freed, so make them before
  // the counting begins.
  AllNonsense();
  HugeCount();
  if (!CountersSeeLeaks()) {
    std::printf("client %d: a counter does not see a planted leak\n", index);
    return 1;
  }
  MeetAtLocks();
  RunThreads(*state, run, index, seed, [&](int) { return state->warm == 0; });
  const auto before = CountWhenSettled([&](int round) {
    RunThreads(*state, run, index, seed + static_cast<unsigned>(round),
               [](int step) { return step < kWarmUpSteps; });
  });
  if (!before) {
    std::printf("client %d: its resources keep growing: %s\n", index,
                ToText(CountProcess()).c_str());
    return 1;
  }
  ++state->ready;
  RunThreads(*state, run, index, ~seed, [](int) { return true; });
  const ProcessCounters after = CountProcess();
  std::printf("client %d: before: %s; after: %s\n", index, ToText(*before).c_str(),
              ToText(after).c_str());
  return after == *before ? 0 : 1;
}

#include "ProcessCounters.h"

#include <windows.h>
// tlhelp32.h needs windows.h before it
#include <tlhelp32.h>

#include <thread>

// The system exports SetOaNoCache, but MinGW does not declare it.
extern "C" __declspec(dllimport) void WINAPI SetOaNoCache();

namespace soak {

namespace {

// Tests each value that a handle can have, because GetProcessHandleCount returns 0 under Wine. The
// system's list of all handles cannot be used either: Wine 8's server crashes while it makes this
// list if some process holds no handle at that moment. A new handle gets the lowest free value, so
// only a process that holds thousands of handles has a handle above kLimit.
long CountHandles() {
  constexpr ULONG_PTR kStep = 4, kLimit = 4096 * kStep;
  long count = 0;
  for (ULONG_PTR value = kStep; value <= kLimit; value += kStep) {
    DWORD flags = 0;
    count += ::GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE;
  }
  return count;
}

long CountBlocks() {
  const HANDLE heap = ::GetProcessHeap();
  PROCESS_HEAP_ENTRY entry = {};
  long count = 0;
  ::HeapLock(heap);
  while (::HeapWalk(heap, &entry)) count += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
  ::HeapUnlock(heap);
  return count;
}

long CountThreads() {
  const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof(entry);
  long count = 0;
  for (BOOL more = ::Thread32First(snapshot, &entry); more; more = ::Thread32Next(snapshot, &entry))
    count += entry.th32OwnerProcessID == ::GetCurrentProcessId();
  ::CloseHandle(snapshot);
  return count;
}

// Counts the top-level windows of this process. Does not use GetGuiResources, because it returns 0
// under Wine.
long CountWindows() {
  long count = 0;
  ::EnumWindows(
      [](HWND window, LPARAM counter) -> BOOL {
        DWORD process = 0;
        ::GetWindowThreadProcessId(window, &process);
        *reinterpret_cast<long*>(counter) += process == ::GetCurrentProcessId();
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&count));
  return count;
}

}  // namespace

void SwitchOffTextCache() { ::SetOaNoCache(); }

ProcessCounters CountProcess() {
  return {CountHandles(), CountBlocks(), CountThreads(), CountWindows()};
}

std::optional<ProcessCounters> CountWhenSettled(const std::function<void(int)>& round) {
  constexpr int kSameRounds = 5, kMostRounds = 40;
  ProcessCounters last = CountProcess();
  for (int i = 0, same = 0; i < kMostRounds; ++i) {
    round(i);
    const ProcessCounters now = CountProcess();
    same = now == last ? same + 1 : 0;
    last = now;
    if (same == kSameRounds) return now;
  }
  return std::nullopt;
}

bool CountersSeeLeaks() {
  const long handles = CountHandles();
  const HANDLE event = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const bool seesHandle = CountHandles() == handles + 1;
  ::CloseHandle(event);

  const long blocks = CountBlocks();
  void* const block = ::HeapAlloc(::GetProcessHeap(), 0, 100);
  const bool seesBlock = CountBlocks() == blocks + 1;
  ::HeapFree(::GetProcessHeap(), 0, block);

  const HANDLE end = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const long threads = CountThreads();
  std::thread thread([end] { ::WaitForSingleObject(end, INFINITE); });
  const bool seesThread = CountThreads() == threads + 1;
  ::SetEvent(end);
  thread.join();
  ::CloseHandle(end);

  const long windows = CountWindows();
  const HWND window = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 9, 9, nullptr, nullptr,
                                        nullptr, nullptr);
  const bool seesWindow = CountWindows() >= windows + 1;
  ::DestroyWindow(window);
  return seesHandle && seesBlock && seesThread && seesWindow;
}

std::string ToText(const ProcessCounters& counters) {
  return "handles " + std::to_string(counters.handles) + ", blocks " +
         std::to_string(counters.blocks) + ", threads " + std::to_string(counters.threads) +
         ", windows " + std::to_string(counters.windows);
}

}  // namespace soak

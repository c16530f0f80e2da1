// Runs in the conductor (soak_conductor) and in the client (soak_client). The shared memory through
// which the conductor and the clients of an endurance run communicate.
#pragma once

#include <windows.h>

#include <atomic>
#include <string>

#include "Timeline.h"

namespace soak {

constexpr int kBrokers = 2;
constexpr int kClients = 2;
constexpr int kThreads = 4;  // the number of threads in each client

// The results of calls that are counted: the codes from -20 to 119, and two exceptions, which have
// the numbers 120 and 121.
constexpr int kLowestCode = -20;
constexpr int kBadAlloc = 120;
constexpr int kLengthError = 121;
constexpr int kCodes = 142;

// The broker's current process and window, as the clients know them. A window handle fits into 32
// bits, so both values can change in one atomic step.
struct Life {
  DWORD process, window;
};

struct SharedState {
  std::atomic<long> warm{0};   // set to 1 when each kind of fault has happened at least once
  std::atomic<long> ready{0};  // the number of clients that have finished their warm-up
  std::atomic<long> stop{0};
  std::atomic<long> wantCalm{0};  // 1 while clients must not hold elements
  // The number of threads that hold no elements because of `wantCalm`.
  std::atomic<long> calmThreads{0};

  struct Broker {
    std::atomic<Life> life{};
    Timeline timeline;
  } brokers[kBrokers];

  struct Client {
    std::atomic<long> handles{0}, blocks{0};
  } clients[kClients];

  // How often calls returned each code, with one row for each kind of phase of a broker. The last
  // row counts calls that ran through several phases.
  std::atomic<long> codes[kPhaseKinds + 1][kCodes] = {};
  std::atomic<long long> wrong{0}, unexpected{0};
  // The number of reports about wrong results and unexpected codes that are kept; later reports are
  // dropped.
  static constexpr long kReports = 10;
  std::atomic<long> reports{0};
  char report[kReports][200] = {};
};

// Opens the shared state of the run with the number `run`, the conductor's process id. The first
// process that opens the state creates it.
class SharedMemory {
 public:
  explicit SharedMemory(DWORD run)
      : mapping_(::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0,
                                      sizeof(SharedState),
                                      (L"soak-" + std::to_wstring(run)).c_str())),
        state_(static_cast<SharedState*>(::MapViewOfFile(mapping_, FILE_MAP_WRITE, 0, 0, 0))) {}
  ~SharedMemory() {
    ::UnmapViewOfFile(state_);
    ::CloseHandle(mapping_);
  }
  SharedMemory(const SharedMemory&) = delete;

  SharedState& operator*() const { return *state_; }
  SharedState* operator->() const { return state_; }

 private:
  const HANDLE mapping_;
  SharedState* const state_;
};

}  // namespace soak

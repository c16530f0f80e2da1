// What the conductor and the clients of an endurance run tell each other, in memory that they
// share.
#pragma once

#include <windows.h>

#include <atomic>
#include <string>

#include "Timeline.h"

namespace soak {

constexpr int kBrokers = 2;
constexpr int kClients = 2;
constexpr int kThreads = 4;  // of each client

// How a call may end: codes from -20 to 119, and exceptions.
constexpr int kLowestCode = -20;
constexpr int kBadAlloc = 120;
constexpr int kLengthError = 121;
constexpr int kCodes = 142;

// A broker's present life as the clients know it. Both change at once: a window is of 32 bits.
struct Life {
  DWORD process, window;
};

struct SharedState {
  std::atomic<long> warm{0};   // every fault has been once
  std::atomic<long> ready{0};  // clients that have begun to count
  std::atomic<long> stop{0};
  std::atomic<long> wantCalm{0};     // clients are to hold nothing
  std::atomic<long> calmThreads{0};  // those that hold nothing until it is over

  struct Broker {
    std::atomic<Life> life{};
    Timeline timeline;
  } brokers[kBrokers];

  struct Client {
    std::atomic<long> handles{0}, blocks{0};
  } clients[kClients];

  // By the phase that a call lay in; the last row is of those that ran through several.
  std::atomic<long> codes[kPhaseKinds + 1][kCodes] = {};
  std::atomic<long long> wrong{0}, undeserved{0};
  static constexpr long kReports = 10;  // the first ones
  std::atomic<long> reports{0};
  char report[kReports][200] = {};
};

// The state of the run with this number, made by who comes first.
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

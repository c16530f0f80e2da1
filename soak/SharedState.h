// What the conductor and the clients of an endurance run tell each other, in memory that they
// share.
#pragma once

#include <windows.h>

#include <atomic>
#include <string>

namespace soak {

constexpr int kBrokers = 2;
constexpr int kClients = 2;
constexpr int kThreads = 4;  // of each client

// The scene of a broker: everything in it bears the broker's letter, so that an answer which
// reaches the wrong caller shows.
constexpr int kElements = 6;
inline std::wstring Letter(int broker) {
  return std::wstring(1, static_cast<wchar_t>(L'A' + broker));
}
inline std::wstring SceneAddress(int broker, DWORD run) {
  return L"http://" + Letter(broker) + std::to_wstring(run) + L".example/";
}
inline std::wstring ElementId(int broker, int element) {
  return Letter(broker) + L"-" + std::to_wstring(element);
}
inline std::wstring ElementName(int broker, int element) {
  return L"Größe 東京 " + ElementId(broker, element);
}
inline RECT ElementRect(int element) {
  return {element * 50, 0, element * 50 + 40, 30};  // element 0 is the page behind all
}

// Codes of calls, from -20 to 119; what is beyond counts as a wrong answer.
constexpr int kLowestCode = -20;
constexpr int kCodes = 140;

struct SharedState {
  std::atomic<long> ready{0}, stop{0}, pause{0}, parked{0};
  std::atomic<long long> calls{0}, wrong{0}, exceptions{0};
  std::atomic<long> codes[kCodes] = {};
  struct Broker {
    std::atomic<DWORD> process{0};
    std::atomic<HWND> window{nullptr};
  } brokers[kBrokers];
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

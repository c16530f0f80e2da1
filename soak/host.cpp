// soak_host MINUTES SEED tests the host channel. MINUTES includes the warm-up. Clients without the
// module misuse the channel, while another thread closes it at random moments. The exit code is 0
// if every call ended and no resource was lost.
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Deadline.h"
#include "ProcessCounters.h"
#include "TesselHost.h"
#include "wire/Addresses.h"

namespace {

// How often each kind of wrong use is tried before the resources are counted for the first time.
constexpr int kWarmUpRounds = 4;
// In ms. A round opens, misuses and closes the channel once. If it takes longer, a call hangs.
constexpr ULONGLONG kRoundLimit = 20000;
const std::wstring kAddress = L"http://soak" + std::to_wstring(::GetCurrentProcessId());
const std::wstring kPipe = wire::PipeName(SL_TAILORED_URI, kAddress);

std::atomic<ULONGLONG> roundStart{0};
std::atomic<long> codes[32];
std::atomic<long> undeserved{0}, wrong{0};

constexpr std::size_t kHugeBytes = 64u << 20;

void Judge(const char* operation, int code, std::initializer_list<int> deserved) {
  ++codes[-code & 31];
  if (std::find(deserved.begin(), deserved.end(), code) != deserved.end()) return;
  if (++undeserved <= 10) std::printf("\n! %s ended with %d\n", operation, code);
}

// Returns whether one of the clients sends this text as a request.
bool IsRequest(const std::wstring& text) {
  return text == L"[1]" || text == L"[1" || text.empty() ||
         text == std::wstring(kHugeBytes / sizeof(wchar_t), L'x' << 8 | L'x');
}

// Serves until the channel is closed.
void Serve() {
  std::vector<wchar_t> buffer(1000);
  int code = 0;
  do {
    auto size = static_cast<unsigned long>(buffer.size());
    code = ReadMessage(buffer.data(), &size);
    // All these codes are allowed, because at any moment the client may leave or be disconnected,
    // and the channel may be closed.
    Judge("ReadMessage", code,
          {SL_CHANNEL_SUCCESS, SL_CHANNEL_NOT_INITIALIZED, SL_CHANNEL_BUFFER_TOO_SMALL,
           SL_CHANNEL_CLOSED, SL_CHANNEL_CANNOT_READ});
    if (code == SL_CHANNEL_BUFFER_TOO_SMALL) buffer.resize(size);
    if (code != SL_CHANNEL_SUCCESS) continue;
    if (!IsRequest(buffer.data())) ++wrong;
    Judge("WriteMessage", WriteMessage(L"[0,\"answer\"]"),
          {SL_CHANNEL_SUCCESS, SL_CHANNEL_NOT_INITIALIZED, SL_CHANNEL_CLOSED,
           SL_CHANNEL_CANNOT_WRITE});
  } while (code != SL_CHANNEL_CLOSED && code != SL_CHANNEL_NOT_INITIALIZED);
}

HANDLE Connect() {
  for (int i = 0; i < 20; ++i) {
    const HANDLE pipe = ::CreateFileW(kPipe.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
    if (pipe != INVALID_HANDLE_VALUE) return pipe;
    ::Sleep(1);
  }
  return INVALID_HANDLE_VALUE;
}

// What a client does with the channel. kNone sends a right request.
enum class Misuse { kSilent, kHalf, kClosesAtOnce, kEmpty, kOdd, kHuge, kFlood, kNone, kCount };

void Misbehave(Misuse misuse, unsigned random) {
  static const std::vector<char> huge(kHugeBytes, 'x');
  const HANDLE pipe = Connect();
  if (pipe == INVALID_HANDLE_VALUE) return;
  OVERLAPPED overlapped = {};
  overlapped.hEvent = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  const auto send = [&](const char* bytes, std::size_t size, DWORD wait) {
    if (!::WriteFile(pipe, bytes, static_cast<DWORD>(size), nullptr, &overlapped) &&
        ::GetLastError() != ERROR_IO_PENDING)
      return;
    if (::WaitForSingleObject(overlapped.hEvent, wait) == WAIT_TIMEOUT) ::CancelIo(pipe);
    DWORD done = 0;
    ::GetOverlappedResult(pipe, &overlapped, &done, TRUE);
  };
  static const char request[] = "[\0001\0]\0";
  switch (misuse) {
    case Misuse::kSilent:
      ::Sleep(random % 30);
      break;
    case Misuse::kHalf:
      send(request, 4, 50);
      break;
    case Misuse::kEmpty:
      send(request, 0, 50);
      break;
    case Misuse::kOdd:
      send(request, 5, 50);
      break;
    case Misuse::kHuge:
      send(huge.data(), huge.size(), 2000);
      break;
    case Misuse::kFlood:
      for (int i = 0; i < 50; ++i) send(request, sizeof(request) - 1, 20);
      break;
    case Misuse::kNone:
      send(request, sizeof(request) - 1, 100);
      ::Sleep(random % 5);
      break;
    default:
      break;
  }
  ::CloseHandle(pipe);
  ::CloseHandle(overlapped.hEvent);
}

void Watch() {
  for (;;) {
    ::Sleep(500);
    const ULONGLONG start = roundStart;
    if (start != 0 && ::GetTickCount64() - start > kRoundLimit) {
      std::printf("\na call hangs\n");
      std::fflush(stdout);
      ::TerminateProcess(::GetCurrentProcess(), 3);
    }
  }
}

// Returns a random misuse. kHuge sends 64 MiB, which takes long. So kHuge is replaced by
// kClosesAtOnce in 59 of 60 cases.
Misuse DrawMisuse(std::minstd_rand& random) {
  const auto misuse = static_cast<Misuse>(random() % static_cast<int>(Misuse::kCount));
  return misuse == Misuse::kHuge && random() % 60 != 0 ? Misuse::kClosesAtOnce : misuse;
}

// Opens the channel and closes it again while a client misuses it. Returns false if the channel
// cannot be opened or closed.
bool RunRound(Misuse misuse, std::minstd_rand& random) {
  roundStart = ::GetTickCount64();
  int opened = 0;
  for (int i = 0; i < 200 && (opened = InitComm(SL_TAILORED_URI, INFINITE, kAddress.c_str())) != 0;
       ++i)
    ::Sleep(1);
  if (opened != 0) return false;
  std::thread host(Serve);
  std::thread client([misuse, draw = static_cast<unsigned>(random())] { Misbehave(misuse, draw); });
  // The delay before UninitComm, in microseconds. Serving a client takes a few hundred
  // microseconds, so UninitComm is called while the client is served, or afterwards.
  const auto delay = random() % 4000;
  LARGE_INTEGER frequency, start, now;
  ::QueryPerformanceFrequency(&frequency);
  ::QueryPerformanceCounter(&start);
  do {
    ::QueryPerformanceCounter(&now);
  } while ((now.QuadPart - start.QuadPart) * 1000000 / frequency.QuadPart <
           static_cast<LONGLONG>(delay));
  const int closed = UninitComm();
  client.join();
  host.join();
  return closed == 0;
}

}  // namespace

int main(int count, char** arguments) {
  const ULONGLONG start = ::GetTickCount64();
  const double minutes = count > 1 ? std::atof(arguments[1]) : 2;
  const unsigned seed =
      count > 2 ? static_cast<unsigned>(std::strtoul(arguments[2], nullptr, 10)) : 1;
  std::minstd_rand random(seed + 1);
  if (!soak::CountersSeeLeaks()) {
    std::printf("host: a counter does not see a planted leak\n");
    return 1;
  }
  std::thread(Watch).detach();
  // The first output allocates a buffer, so print something before the counting begins.
  std::printf("host: warming up\n");
  bool good = true;
  const auto before = soak::CountWhenSettled([&](int) {
    for (int i = 0; i < kWarmUpRounds * static_cast<int>(Misuse::kCount) && good; ++i)
      good = RunRound(static_cast<Misuse>(i % static_cast<int>(Misuse::kCount)), random);
  });
  if (!before) {
    std::printf("host: holds more and more: %s\nverdict of the host: LOST\n",
                soak::ToText(soak::CountProcess()).c_str());
    return 1;
  }
  const ULONGLONG end = soak::EndOfRun(start, minutes);
  int rounds = 0;
  for (; ::GetTickCount64() < end && good; ++rounds) {
    good = RunRound(DrawMisuse(random), random);
    if (rounds % 100 == 0) {
      std::printf("\rhost: %d rounds, about %llu s left   ", rounds,
                  (end - std::min(end, ::GetTickCount64())) / 1000);
      std::fflush(stdout);
    }
  }
  const soak::ProcessCounters after = soak::CountProcess();
  roundStart = 0;
  std::printf("\rhost: %d channels closed by another thread; codes:", rounds);
  for (int i = 0; i < 32; ++i) {
    if (codes[i] != 0) std::printf(" %d:%ld", -i, codes[i].load());
  }
  std::printf("\nhost: before: %s; after: %s\n", soak::ToText(*before).c_str(),
              soak::ToText(after).c_str());
  std::printf("host: wrong requests %ld, undeserved codes %ld\n", wrong.load(), undeserved.load());
  good = good && *before == after && wrong == 0 && undeserved == 0;
  std::printf("verdict of the host: %s\n", good ? "nothing lost" : "LOST");
  return good ? 0 : 1;
}

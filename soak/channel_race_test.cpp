// Calls UninitComm at every moment of another thread's ReadMessage and WriteMessage. Each round
// opens a channel and must end. If a round hangs, the whole program ends.
#include <gmock/gmock.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "TesselHost.h"
#include "support/LogCapture.h"
#include "support/RawClient.h"

namespace {

const std::wstring kAddress = L"http://race" + std::to_wstring(::GetCurrentProcessId());
const std::wstring kPipe = wire::PipeName(SL_TAILORED_URI, kAddress);

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::microseconds;

constexpr int kRounds = 1500;           // per log level
constexpr int kRoundsWithClient = 200;  // per log level
constexpr int kSweep = 50;              // delays of 0 to 49 steps
constexpr Microseconds kStep(40);

void Spin(Microseconds time) {
  for (const auto end = Clock::now() + time; Clock::now() < end;) ::YieldProcessor();
}

constexpr Clock::time_point kNotEntered;

// The host's thread. After Start it serves until the channel is closed.
class Host {
 public:
  Host() : thread_([this] { Run(); }) {}
  ~Host() {
    go_ = -1;
    thread_.join();
  }

  void Start() { go_ = 1; }
  Clock::time_point EnteredAt() const { return entered_; }

  // Waits for the end of the round and returns its codes: one for each read, and after a successful
  // read the code of the write.
  std::vector<int> Finish() {
    for (int i = 0; go_ == 1; ++i) {
      if (i > 10000) {
        std::fputs("the host's call hangs\n", stderr);
        ::TerminateProcess(::GetCurrentProcess(), 1);
      }
      ::Sleep(1);
    }
    entered_ = kNotEntered;
    return std::move(codes_);
  }

 private:
  void Run() {
    for (;;) {
      while (go_ == 0) ::YieldProcessor();
      if (go_ == -1) return;
      codes_.clear();
      entered_ = Clock::now();
      int code = 0;
      do {
        wchar_t request[100];
        DWORD size = 100;
        code = ReadMessage(request, &size);
        codes_.push_back(code);
        if (code == 0) codes_.push_back(code = WriteMessage(L"[0]"));
      } while (code == 0 || code == SL_CHANNEL_CANNOT_READ || code == SL_CHANNEL_CANNOT_WRITE);
      go_ = 0;
    }
  }

  std::atomic<int> go_{0};
  std::atomic<Clock::time_point> entered_{kNotEntered};
  std::vector<int> codes_;
  std::thread thread_;
};

// Retries, because a call of the round before may keep the pipe for a moment.
void OpenChannel() {
  int code = 0;
  for (int i = 0; i < 100 && (code = InitComm(SL_TAILORED_URI, INFINITE, kAddress.c_str())) == -4;
       ++i) {
    ::Sleep(1);
  }
  ASSERT_EQ(code, 0);
}

std::atomic<Microseconds> holdTime;
void HoldBeforeTheWait(const char* line) {
  if (std::strstr(line, "] Wait client to connect") != nullptr) Spin(holdTime);
}

struct Counts {
  int waiting = 0;     // the call had been waiting for some time
  int notWaiting = 0;  // the call had not begun or had just begun
  int vanished = 0;
};

// A client that connects, sends a request in every second round, and leaves after a short time.
void ComeAndVanish(int round) {
  RawClient client(kPipe, 1 /*try*/);
  if (round % 2 == 0) client.Send(L"[1]");
  Spin(Microseconds(round % 7 * 30));
}

void RunRound(Host& host, int round, bool withClient, Counts& counts) {
  OpenChannel();
  // The rounds take turns. 0: the shutdown begins after the call. 1: the same, but the log line
  // just before the wait holds the call. 2: the call begins after the delay.
  const Microseconds delay = round / 3 % kSweep * kStep;
  holdTime = round % 3 == 1 ? delay / 4 : Microseconds(0);
  std::thread client;
  if (withClient) client = std::thread([round] { ComeAndVanish(round); });
  if (round % 3 == 2) {
    Spin(delay);
    host.Start();
  } else {
    host.Start();
    while (host.EnteredAt() == kNotEntered) ::YieldProcessor();
    if (round % 3 == 0) Spin(delay);
  }
  const auto entered = host.EnteredAt();
  const auto running = entered == kNotEntered ? Clock::duration(0) : Clock::now() - entered;
  if (running < Microseconds(10)) ++counts.notWaiting;
  if (running > Microseconds(800)) ++counts.waiting;
  EXPECT_EQ(UninitComm(), 0);
  if (client.joinable()) client.join();

  for (const int code : host.Finish()) {
    const bool clientsFault = code == SL_CHANNEL_CANNOT_READ || code == SL_CHANNEL_CANNOT_WRITE;
    EXPECT_TRUE(clientsFault ? withClient : code == 0 || code == -1 || code == -3)
        << "code " << code << " round " << round;
    counts.vanished += clientsFault;
  }
}

TEST(ChannelRace, EveryCallEnds) {
  const LogCapture capture(LogCapture::Level::kAsItStands);
  LogCapture::pause = &HoldBeforeTheWait;
  for (const char* level : {"none", "VERBOSE"}) {
    LogCapture::SetLevel(level);
    ::Sleep(3100);  // the log reads its level every 3 s
    Host host;
    Counts plain, withClient;
    for (int round = 0; round < kRounds; ++round) {
      RunRound(host, round, false, plain);
      if (round % 100 == 0) LogCapture::Reset();
    }
    for (int round = 0; round < kRoundsWithClient; ++round) RunRound(host, round, true, withClient);

    std::printf("%s: waiting %d, not yet %d of %d; -6 and -7 %d of %d\n", level, plain.waiting,
                plain.notWaiting, kRounds, withClient.vanished, kRoundsWithClient);
    EXPECT_GT(plain.waiting, kRounds / 10);
    EXPECT_GT(plain.notWaiting, kRounds / 10);
    EXPECT_GT(withClient.vanished, 0);
  }
}

}  // namespace

// The host channel through the module's exports, against clients that open the pipe themselves.
#include <gmock/gmock.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <thread>

#include "TesselHost.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/RawClient.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Texts = std::vector<std::string>;

constexpr DWORD kTailored = 4;
constexpr DWORD kLimit = 20000;  // for what must happen: far longer than it takes

const LogCapture capture;
const std::wstring kHost = L"chan" + std::to_wstring(::GetCurrentProcessId());
const std::wstring kAddress = L"http://" + kHost;
const std::wstring kPipe = kTailoredPipe + L"http___" + kHost;

class Channel : public testing::Test {
 protected:
  ~Channel() override { UninitComm(); }

  static void Open(DWORD connectTimeout = kLimit) {
    ASSERT_EQ(InitComm(kTailored, connectTimeout, kAddress.c_str()), 0);
    LogCapture::Reset();
  }

  static bool PipeExists(const std::wstring& name) {
    return ::WaitNamedPipeW(name.c_str(), 1) || ::GetLastError() == ERROR_SEM_TIMEOUT;
  }

  // The next request, or its code in brackets.
  static std::wstring Read() {
    wchar_t buffer[300];
    DWORD size = 300;
    const int code = ReadMessage(buffer, &size);
    return code == 0 ? buffer : L"<" + std::to_wstring(code) + L">";
  }

  // A whole exchange works.
  static void ExpectService() {
    std::wstring reply;
    std::thread client([&] {
      RawClient raw(kPipe);
      raw.Send(L"[1,\"\u00e9\U0001F600\"]");
      reply = raw.Receive();
    });
    EXPECT_EQ(Read(), L"[1,\"\u00e9\U0001F600\"]");
    EXPECT_EQ(WriteMessage(L"[0]"), 0);
    client.join();
    EXPECT_EQ(reply, L"[0]");
  }
};

TEST_F(Channel, RefusesCallsThatCannotWork) {
  DWORD size = 0;
  wchar_t buffer[4];
  const struct {
    const char* name;
    std::function<int()> call;
    int code;
    Texts errors;
  } kCases[] = {
      {"read", [&] { return ReadMessage(buffer, &size); }, -1, {"ERROR Pipe not initialized"}},
      {"write",
       [] { return WriteMessage(L"x"); },
       -1,
       {"ERROR WriteMessage - Pipe not initialized"}},
      {"uninit", [] { return UninitComm(); }, -1, {"ERROR Server pipe not init"}},
      {"no scheme",
       [] { return InitComm(0, 0, kAddress.c_str()); },
       -3,
       {"ERROR Invalid URI scheme", "ERROR Cannot get pipe name"}},
      {"unknown scheme",
       [] { return InitComm(5, 0, nullptr); },
       -3,
       {"ERROR Invalid URI scheme", "ERROR Cannot get pipe name"}},
      {"still closed", [] { return UninitComm(); }, -1, {"ERROR Server pipe not init"}},
      {"init", [] { return InitComm(kTailored, 50, kAddress.c_str()); }, 0, {}},
      {"no size", [&] { return ReadMessage(buffer, nullptr); }, -5, {"ERROR Invalid arguments"}},
      {"no message",
       [] { return WriteMessage(nullptr); },
       -5,
       {"ERROR WriteMessage - Invalid arguments"}},
      {"nobody to answer",
       [] { return WriteMessage(L"x"); },
       -3,
       {"ERROR WriteMessage - PipeException: 'Invalid state in WriteBuffer'"}},
      {"nobody comes", [&] { return ReadMessage(buffer, &size); }, -15, {}},
      {"uninit once", [] { return UninitComm(); }, 0, {}},
  };
  for (const auto& test : kCases) {
    LogCapture::Reset();
    EXPECT_EQ(test.call(), test.code) << test.name;
    EXPECT_EQ(LogCapture::Messages(), test.errors) << test.name;
  }
}

TEST_F(Channel, NamesThePipeByTheSource) {
  const struct {
    DWORD scheme;
    const wchar_t* source;
    std::wstring pipe;
  } kCases[] = {{kTailored, kAddress.c_str(), kPipe},
                {kTailored, nullptr, kTailoredPipe},
                {kTailored, MAKEINTRESOURCEW(77), kTailoredPipe},  // no such string resource
                {kTailored, L"", kTailoredPipe}};
  for (const auto& test : kCases) {
    EXPECT_EQ(InitComm(test.scheme, 0, test.source), 0);
    EXPECT_TRUE(PipeExists(test.pipe));
    EXPECT_EQ(UninitComm(), 0);
    EXPECT_FALSE(PipeExists(test.pipe));
  }
}

TEST_F(Channel, KeepsTheRequestUntilTheBufferFits) {
  Open();
  RawClient client(kPipe);
  client.Send(L"abc");
  wchar_t buffer[5] = L"????";
  DWORD size = 0;
  EXPECT_EQ(ReadMessage(nullptr, &size), -2);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(ReadMessage(nullptr, &size), -5);
  size = 3;
  EXPECT_EQ(ReadMessage(buffer, &size), -2);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(LogCapture::Count("Start reading"), 1u);  // the pipe is read once
  EXPECT_EQ(ReadMessage(buffer, &size), 0);
  EXPECT_STREQ(buffer, L"abc");
  EXPECT_EQ(LogCapture::Messages(), Texts{"ERROR Invalid buffer"});

  EXPECT_EQ(Read(), L"<-3>");  // the reply is due
  EXPECT_THAT(LogCapture::Messages(),
              ElementsAre("ERROR Invalid buffer",
                          "ERROR PipeException: 'Invalid state in WaitClientToConnect'",
                          "ERROR Cannot read from pipe"));
  // The reply is waited for until the client has read it.
  std::thread reader([&] { EXPECT_EQ(client.Receive(), L"[0]"); });
  EXPECT_EQ(WriteMessage(L"[0]"), 0);
  reader.join();
  client.Leave();
  ExpectService();
}

TEST_F(Channel, TellsItsStepsInOrder) {
  Open();
  ExpectService();
  Texts steps = LogCapture::Messages("INFO");
  EXPECT_THAT(steps, ElementsAre("INFO ReadMessage - Wait client to connect",
                                 "INFO ReadMessage - Client connected",
                                 "INFO ReadMessage - Message received",
                                 "INFO WriteMessage - prepare to write to pipe",
                                 "INFO WriteMessage - prepare to pipe->DisconnectClient",
                                 "INFO WriteMessage - exit with success"));
  for (const std::string& line : LogCapture::Lines()) {
    if (line.find("Message - ") != std::string::npos) {
      EXPECT_THAT(line, HasSubstr("TesselSLB.cpp("));
    }
  }
}

TEST_F(Channel, GoesOnAfterClientsThatFail) {
  Open(50);
  EXPECT_EQ(Read(), L"<-15>");
  EXPECT_THAT(LogCapture::Messages("INFO"),
              ElementsAre("INFO ReadMessage - Wait client to connect",
                          "INFO ReadMessage - WaitClientToConnect timedout",
                          "INFO Timeout at reading from pipe"));
  Open();
  {
    RawClient silent(kPipe);  // says nothing for 3 s
    EXPECT_EQ(Read(), L"<-6>");
  }
  EXPECT_THAT(LogCapture::Messages(),
              testing::Contains(
                  "ERROR ReadMessage - ReadString failed, prepare to pipe->DisconnectClient"));
  Open();
  { RawClient gone(kPipe); }
  EXPECT_EQ(Read(), L"<-6>");
  EXPECT_EQ(LogCapture::Count("The pipe is being closed; continue"), 1u);
  EXPECT_EQ(LogCapture::Messages(), Texts{"ERROR Cannot read from pipe"});
  ExpectService();

  auto leaving = std::async([] {
    auto client = std::make_unique<RawClient>(kPipe);
    client->Send(L"[7]");
    return client;
  });
  EXPECT_EQ(Read(), L"[7]");
  leaving.get().reset();
  LogCapture::Reset();
  EXPECT_EQ(WriteMessage(L"[0]"), -7);
  EXPECT_THAT(LogCapture::Messages(),
              ElementsAre("ERROR WriteBuffer failed", "ERROR WriteMessage - Cannot write to pipe"));
  ExpectService();
}

TEST_F(Channel, LetsTheClientGoThoughTheReplyIsEmpty) {
  Open();
  RawClient client(kPipe);
  client.Send(L"[7]");
  EXPECT_EQ(Read(), L"[7]");
  EXPECT_EQ(WriteMessage(L""), -7);
  EXPECT_EQ(client.Receive(), L"");
  client.Leave();
  ExpectService();
}

TEST_F(Channel, HasNoPlaceBesideAnotherProcess) {
  {
    ChildProcess broker(TestFolder() + L"test_parts.exe broker 4 " + kAddress + L" [0]");
    ASSERT_EQ(broker.ReadLine(), "InitComm 0");
    LogCapture::Reset();
    EXPECT_EQ(InitComm(kTailored, 0, kAddress.c_str()), -4);
    EXPECT_THAT(LogCapture::Messages(), testing::Contains("ERROR Cannot create pipe"));
    EXPECT_EQ(Read(), L"<-3>");
    LogCapture::Reset();
    EXPECT_EQ(UninitComm(), -3);
    EXPECT_THAT(LogCapture::Messages("INFO"),
                ElementsAre("INFO UninitComm PipeException: 'Shutdown can be called only for "
                            "server pipe'"));
  }
  Open();  // takes the place of the channel that failed
  ExpectService();
}

TEST_F(Channel, AnotherInitStartsAfresh) {
  Open();
  RawClient old(kPipe);
  old.Send(L"old");
  DWORD size = 0;
  EXPECT_EQ(ReadMessage(nullptr, &size), -2);
  Open();  // closes the first one, whose request is not handed out
  EXPECT_EQ(old.Receive(), L"");
  old.Leave();
  ExpectService();
}

// Holds ReadMessage behind its look at the shutdown, before its wait.
std::atomic<bool> held{false}, released{false};
void HoldBeforeTheWait(const char* line) {
  if (std::strstr(line, "] Wait client to connect") == nullptr) return;
  held = true;
  while (!released) ::Sleep(1);
}

TEST_F(Channel, UninitReachesAReadThatDoesNotWaitYet) {
  for (const bool used : {false, true}) {
    Open(INFINITE);
    // On a fresh pipe the knock comes and goes; on a used one nobody can connect before the wait.
    if (used) ExpectService();
    held = released = false;
    LogCapture::Pause() = &HoldBeforeTheWait;
    auto read = std::async(std::launch::async, Read);
    while (!held) ::Sleep(1);
    LogCapture::Pause() = nullptr;
    EXPECT_EQ(UninitComm(), 0);
    released = true;
    ASSERT_EQ(read.wait_for(std::chrono::seconds(20)), std::future_status::ready) << used;
    EXPECT_EQ(read.get(), L"<-3>") << used;
  }
}

TEST_F(Channel, UninitWakesAReadThatWaitsWithoutLimit) {
  Open(INFINITE);
  std::wstring read;
  std::thread reader([&] { read = Read(); });
  while (LogCapture::Count("Wait client to connect") == 0) ::Sleep(1);
  ::Sleep(20);
  EXPECT_EQ(UninitComm(), 0);
  reader.join();
  EXPECT_EQ(read, L"<-3>");
  EXPECT_EQ(LogCapture::Count("Pipe shotdown"), 1u);
}

}  // namespace

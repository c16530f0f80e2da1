// The host channel through the module's exports, against clients that open the pipe themselves.
#include <gmock/gmock.h>

#include <cstring>
#include <functional>
#include <future>

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

struct Channel : testing::Test {
  ~Channel() override { UninitComm(); }

  static void Open(DWORD connectTimeout = kLimit) {
    ASSERT_EQ(InitComm(kTailored, connectTimeout, kAddress.c_str()), 0);
    LogCapture::Reset();
  }

  // The next request, or its code in brackets.
  static std::wstring Read() {
    wchar_t buffer[300];
    DWORD size = 300;
    const int code = ReadMessage(buffer, &size);
    return code == 0 ? buffer : L"<" + std::to_wstring(code) + L">";
  }

  // Receives a request and leaves it there: its size.
  static DWORD Size() {
    DWORD size = 0;
    EXPECT_EQ(ReadMessage(nullptr, &size), -2);
    return size;
  }

  // The reply is waited for until the client has read it.
  static void Answer(RawClient& client) {
    auto reply = std::async(std::launch::async, [&] { return client.Receive(); });
    EXPECT_EQ(WriteMessage(L"[0]"), 0);
    EXPECT_EQ(reply.get(), L"[0]");
  }

  // A whole exchange works.
  static void ExpectService() {
    auto reply = std::async(std::launch::async, [] {
      RawClient client(kPipe);
      client.Send(L"[1,\"\u00e9\U0001F600\"]");
      return client.Receive();
    });
    EXPECT_EQ(Read(), L"[1,\"\u00e9\U0001F600\"]");
    EXPECT_EQ(WriteMessage(L"[0]"), 0);
    EXPECT_EQ(reply.get(), L"[0]");
  }
};

TEST_F(Channel, RefusesCallsThatCannotWork) {
  DWORD size = 0;
  const auto read = [&] { return ReadMessage(nullptr, &size); };
  const auto write = [] { return WriteMessage(L"x"); };
  const auto init = [](DWORD scheme) { return InitComm(scheme, 50, kAddress.c_str()); };
  const std::string misuse = "ERROR WriteMessage - PipeException: 'Invalid state in WriteBuffer'";
  const struct {
    std::function<int()> call;
    int code;
    Texts errors;
  } kCases[] = {
      {read, -1, {"ERROR Pipe not initialized"}},
      {write, -1, {"ERROR WriteMessage - Pipe not initialized"}},
      {UninitComm, -1, {"ERROR Server pipe not init"}},
      {[&] { return init(0); }, -3, {"ERROR Invalid URI scheme", "ERROR Cannot get pipe name"}},
      {[&] { return init(5); }, -3, {"ERROR Invalid URI scheme", "ERROR Cannot get pipe name"}},
      {UninitComm, -1, {"ERROR Server pipe not init"}},
      {[&] { return init(kTailored); }, 0, {}},
      {[] { return ReadMessage(nullptr, nullptr); }, -5, {"ERROR Invalid arguments"}},
      {[] { return WriteMessage(nullptr); }, -5, {"ERROR WriteMessage - Invalid arguments"}},
      {write, -3, {misuse}},
      {read, -15, {}},
      {UninitComm, 0, {}},
  };
  for (const auto& test : kCases) {
    LogCapture::Reset();
    EXPECT_EQ(test.call(), test.code) << "row " << &test - kCases;
    EXPECT_EQ(LogCapture::Messages(), test.errors) << "row " << &test - kCases;
  }
}

TEST_F(Channel, TakesNoSourceForAnEmptyOne) {
  const wchar_t* const kSources[] = {nullptr, L"", MAKEINTRESOURCEW(77) /*no such resource*/};
  const auto pipeExists = [] {
    return ::WaitNamedPipeW(kTailoredPipe.c_str(), 1) || ::GetLastError() == ERROR_SEM_TIMEOUT;
  };
  for (const wchar_t* source : kSources) {
    EXPECT_EQ(InitComm(kTailored, 0, source), 0);
    EXPECT_TRUE(pipeExists());
    EXPECT_EQ(UninitComm(), 0);
    EXPECT_FALSE(pipeExists());
  }
}

TEST_F(Channel, KeepsTheRequestUntilTheBufferFits) {
  Open();
  RawClient client(kPipe);
  client.Send(L"abc");
  wchar_t buffer[5] = L"????";
  DWORD size = Size();
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(ReadMessage(nullptr, &size), -5);
  EXPECT_EQ(ReadMessage(buffer, &--size), -2);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(LogCapture::Count("Start reading"), 1u);  // the pipe is read once
  EXPECT_EQ(ReadMessage(buffer, &size), 0);
  EXPECT_STREQ(buffer, L"abc");
  EXPECT_EQ(Read(), L"<-3>");  // the reply is due
  EXPECT_THAT(LogCapture::Messages(),
              ElementsAre("ERROR Invalid buffer",
                          "ERROR PipeException: 'Invalid state in WaitClientToConnect'",
                          "ERROR Cannot read from pipe"));
  Answer(client);
  client.Leave();
  ExpectService();
}

TEST_F(Channel, AnAnswerOrAnotherInitDropsARequestThatNobodyTook) {
  Open(300);
  {
    RawClient client(kPipe);
    client.Send(L"abc");
    EXPECT_EQ(Size(), 4u);
    Answer(client);
  }
  EXPECT_EQ(Read(), L"<-15>");
  Open();
  RawClient old(kPipe);
  old.Send(L"old");
  EXPECT_EQ(Size(), 4u);
  Open();  // closes the one before
  EXPECT_EQ(old.Receive(), L"");
  old.Leave();
  ExpectService();
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
  ExpectService();
  Open();
  { RawClient gone(kPipe); }
  EXPECT_EQ(Read(), L"<-6>");
  EXPECT_EQ(LogCapture::Count("The pipe is being closed; continue"), 1u);
  EXPECT_EQ(LogCapture::Messages(), Texts{"ERROR Cannot read from pipe"});
  ExpectService();

  std::promise<void> leave;  // a thread that ends takes its unread message with it
  auto leaving = std::async(std::launch::async, [&] {
    RawClient client(kPipe);
    client.Send(L"[7]");
    leave.get_future().wait();
  });
  EXPECT_EQ(Read(), L"[7]");
  leave.set_value();
  leaving.get();
  LogCapture::Reset();
  EXPECT_EQ(WriteMessage(L"[0]"), -7);
  EXPECT_THAT(LogCapture::Messages(),
              ElementsAre("ERROR WriteBuffer failed", "ERROR WriteMessage - Cannot write to pipe"));
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

// Holds ReadMessage behind its look at the shutdown, before its wait.
std::atomic<bool> held, released;
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
    LogCapture::pause = &HoldBeforeTheWait;
    auto read = std::async(std::launch::async, Read);
    while (!held) ::Sleep(1);
    LogCapture::pause = nullptr;
    EXPECT_EQ(UninitComm(), 0);
    released = true;
    ASSERT_EQ(read.wait_for(std::chrono::seconds(20)), std::future_status::ready) << used;
    EXPECT_EQ(read.get(), L"<-3>") << used;
  }
}

}  // namespace

// Tests the host channel: calls the module's exports, with clients that open the pipe themselves.
#include <gtest/gtest.h>

#include <future>

#include "TesselHost.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"
#include "support/RawClient.h"

namespace {

const LogCapture capture;
const std::wstring kAddress = L"http://chan" + std::to_wstring(::GetCurrentProcessId());
const std::wstring kPipe = kTailoredPipe + L"http___" + kAddress.substr(7);

// Returns the code of a call, followed by the errors that were logged since the last reset of the
// log: "CODE, ERROR ..., ERROR ...". Resets the log.
std::string Told(int code) {
  std::string told = std::to_string(code);
  for (const std::string& error : LogCapture::Messages()) told += ", " + error;
  LogCapture::Reset();
  return told;
}

int Open(DWORD timeout = 20000) { return InitComm(4 /*tailored*/, timeout, kAddress.c_str()); }

// Sends a request as a client, on another thread. The future holds the answer, or an empty text if
// the server disconnects.
std::future<std::wstring> Ask(const std::wstring& request) {
  return std::async(std::launch::async, [request] {
    RawClient client(kPipe);
    client.Send(request);
    return client.Receive();
  });
}

struct Channel : testing::Test {
  ~Channel() override { Told(UninitComm()); }

  int Read(DWORD room = 300) { return ReadMessage(buffer, &(size = room)); }

  void ExpectService(const wchar_t* request = L"[1,\"\u00e9\U0001F600\"]") {
    auto reply = Ask(request);
    EXPECT_EQ(Told(Read()), "0");
    EXPECT_STREQ(buffer, request);
    EXPECT_EQ(Told(WriteMessage(L"[0]")), "0");
    EXPECT_EQ(reply.get(), L"[0]");
  }

  wchar_t buffer[300];
  DWORD size = 0;
};

TEST_F(Channel, RefusesCallsThatCannotWork) {
  EXPECT_EQ(Told(Read()), "-1, ERROR Pipe not initialized");
  EXPECT_EQ(Told(WriteMessage(L"x")), "-1, ERROR WriteMessage - Pipe not initialized");
  EXPECT_EQ(Told(InitComm(0, 0, L"")), "-3, ERROR Invalid URI scheme, ERROR Cannot get pipe name");
  EXPECT_EQ(Told(InitComm(4, 50, MAKEINTRESOURCEW(77) /*no such string resource*/)), "0");
  EXPECT_EQ(Told(ReadMessage(nullptr, nullptr)), "-5, ERROR Invalid arguments");
  EXPECT_EQ(Told(WriteMessage(nullptr)), "-5, ERROR WriteMessage - Invalid arguments");
  EXPECT_EQ(Told(WriteMessage(L"x")),
            "-3, ERROR WriteMessage - PipeException: 'Invalid state in WriteBuffer'");
  EXPECT_EQ(Told(Read()), "-15");
  EXPECT_EQ(Told(UninitComm()), "0");
  EXPECT_EQ(Told(UninitComm()), "-1, ERROR Server pipe not init");
}

TEST_F(Channel, KeepsARequestUntilItIsReadOrAnsweredOrTheChannelReopens) {
  EXPECT_EQ(Told(Open()), "0");
  auto reply = Ask(L"abc");
  EXPECT_EQ(Told(Read(0)), "-2");
  EXPECT_EQ(Told(ReadMessage(nullptr, &size)), "-5, ERROR Invalid buffer");
  EXPECT_EQ(Told(Read(3)), "-2");
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(Told(Read(4)), "0");
  EXPECT_STREQ(buffer, L"abc");
  EXPECT_EQ(Told(Read()),
            "-3, ERROR PipeException: 'Invalid state in WaitClientToConnect', "
            "ERROR Cannot read from pipe");
  EXPECT_EQ(Told(WriteMessage(L"[0]")), "0");
  for (const bool answered : {true, false}) {
    reply = Ask(L"old");
    EXPECT_EQ(Told(Read(0)), "-2");
    EXPECT_EQ(Told(answered ? WriteMessage(L"[1]") : Open()), "0");
    EXPECT_EQ(reply.get(), answered ? L"[1]" : L"");
    ExpectService();
  }
}

TEST_F(Channel, ServesAgainAfterClientsThatFail) {
  // One client disconnects before the server waits for it. The other client sends nothing for 3 s.
  for (const bool silent : {false, true}) {
    EXPECT_EQ(Told(Open()), "0");
    RawClient client(kPipe);
    if (!silent) client.Leave();
    EXPECT_EQ(Read(), -6);
    EXPECT_EQ(LogCapture::Count(
                  silent ? "ReadMessage - ReadString failed, prepare to pipe->DisconnectClient"
                         : "The pipe is being closed; continue"),
              1u);
    EXPECT_EQ(LogCapture::Messages().back(), "ERROR Cannot read from pipe");
    LogCapture::Reset();
    ExpectService();
  }
  EXPECT_EQ(Told(Open()), "0");
  RawClient client(kPipe);
  client.Send(L"[7]");
  EXPECT_EQ(Told(Read()), "0");
  client.Leave();
  EXPECT_EQ(Told(WriteMessage(L"[0]")),
            "-7, ERROR WriteBuffer failed, ERROR WriteMessage - Cannot write to pipe");
  ExpectService();
}

TEST_F(Channel, CannotServeThePipeOfAnotherProcess) {
  ChildProcess broker(TestFolder() + L"test_parts.exe broker 4 " + kAddress + L" [0]");
  ASSERT_EQ(broker.ReadLine(), "InitComm 0");
  EXPECT_EQ(Open(), -4);
  EXPECT_EQ(LogCapture::Messages().back(), "ERROR Cannot create pipe");
  EXPECT_EQ(Read(), -3);
  EXPECT_EQ(UninitComm(), -3);
}

TEST_F(Channel, UninitEndsAReadThatIsAboutToWait) {
  for (const bool used : {true, false}) {
    EXPECT_EQ(Open(INFINITE), 0);  // replaces the channel of the previous pass
    // UninitComm ends the wait of ReadMessage: it connects to the pipe as a client. Before the
    // first client, the pipe accepts this connection at any time. After the first client, it
    // accepts the connection only while ReadMessage waits.
    if (used) ExpectService();
    LogCapture::pause = [](const char* line) {
      if (std::string(line).find("] Wait client to connect") == std::string::npos) return;
      LogCapture::pause = nullptr;
      EXPECT_EQ(UninitComm(), 0);
    };
    EXPECT_EQ(Read(), -3) << used;
  }
}

}  // namespace

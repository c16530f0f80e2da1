#include <aclapi.h>
#include <gmock/gmock.h>
#include <sddl.h>
#include <winternl.h>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <functional>
#include <thread>

#include "UTILITY/JbPipe.h"
#include "UTILITY/TimedRetry.h"
#include "UTILITY/VistaSpecific.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"

namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Texts = std::vector<std::string>;
using Bytes = std::vector<BYTE>;

const std::string kOwnId = std::to_string(::GetCurrentProcessId());

std::wstring Wide(const std::string& ascii) { return std::wstring(ascii.begin(), ascii.end()); }

// Each test serves a name of its own.
std::wstring Name() {
  const auto* info = testing::UnitTest::GetInstance()->current_test_info();
  return L"\\\\.\\pipe\\pipe_test." + Wide(info->name()) + L"." + Wide(kOwnId) + L".";
}

// An endpoint that is driven by texts, in this process or in a child.
struct Endpoint {
  explicit Endpoint(const std::wstring& base = Name()) : name(base) {
    pipe.SetPipeName(base);
    pipe.SetTimeout(30000);
  }

  // The answer of the operation: "yes", "no", "=" and the text read, what it throws.
  std::string Do(const std::string& step) try {
    const std::size_t space = std::min(step.find(' '), step.size());
    const std::string verb = step.substr(0, space);
    const std::string rest = step.substr(std::min(space + 1, step.size()));
    const auto number = static_cast<std::uint32_t>(std::strtoll(rest.c_str(), nullptr, 10));
    const auto told = [](bool done) { return done ? "yes" : "no"; };
    std::uint32_t timedOut = 9;
    std::wstring text = L"old";
    Bytes bytes;
    if (verb == "create") return told(pipe.CreateServerPipe(number, true));
    if (verb == "wait") {
      const std::string answer = told(pipe.WaitClientToConnect(number, &timedOut));
      return answer + Late(timedOut);
    }
    if (verb == "disconnect") return told(pipe.DisconnectClient());
    if (verb == "connect") return told(pipe.ConnectToServerPipe(number));
    if (verb == "attach") return told(pipe.AttachToServerPipe(ULongToHandle(number)));
    if (verb == "exists") return told(pipe.ServerPipeExists(number, 0));
    if (verb == "write") return told(pipe.WriteString(Wide(rest)));
    if (verb == "read") {
      if (!pipe.ReadString(text)) return "no" + std::string(text.begin(), text.end());
      return "=" + std::string(text.begin(), text.end());
    }
    if (verb == "readbytes") return told(pipe.ReadBuffer(bytes));
    if (verb == "writebytes") return told(pipe.WriteBuffer(Bytes(number, 'x')));
    if (verb == "shutdown") pipe.Shutdown(number);
    if (verb == "close") pipe.Close();
    if (verb == "hold") ::Sleep(INFINITE);
    if (verb == "echo") Echo(number);
    return "done";
  } catch (const PipeException& exception) {
    return exception.Message();
  } catch (const PipeShutdownException&) {
    return "shut down";
  }

  void Expect(const std::vector<std::pair<std::string, std::string>>& steps) {
    for (const auto& [step, answer] : steps) EXPECT_EQ(Do(step), answer) << step;
  }

  const std::wstring name;
  CJbPipe pipe;

 private:
  static std::string Late(std::uint32_t timedOut) {
    return timedOut == 0 ? "" : timedOut == 1 ? ", timed out" : ", time-out not told";
  }

  // A client that knows nothing of the endpoint; sends each message back until the server goes.
  void Echo(std::uint32_t server) const {
    const HANDLE raw =
        ::CreateFileW((name + std::to_wstring(server)).c_str(), GENERIC_READ | GENERIC_WRITE,
                      0 /*sharing*/, nullptr, OPEN_EXISTING, 0 /*flags*/, nullptr);
    DWORD mode = PIPE_READMODE_MESSAGE;
    ::SetNamedPipeHandleState(raw, &mode, nullptr, nullptr);
    Bytes buffer(8 << 20);
    DWORD size = 0;
    while (::ReadFile(raw, buffer.data(), static_cast<DWORD>(buffer.size()), &size, nullptr)) {
      ::WriteFile(raw, buffer.data(), size, &size, nullptr);
    }
    ::CloseHandle(raw);
  }
};

// A process of its own that takes these steps and prints their answers.
class Peer : public ChildProcess {
 public:
  explicit Peer(const Texts& steps) : ChildProcess(CommandLine(steps)) {}

  Texts Answers(std::size_t count) {
    Texts lines;
    while (lines.size() < count) lines.push_back(ReadLine());
    return lines;
  }

 private:
  static std::wstring CommandLine(const Texts& steps) {
    std::wstring line = TestFolder() + L"pipe_test.exe peer " + Name();
    for (const std::string& step : steps) line += L" \"" + Wide(step) + L"\"";
    return line;
  }
};

int TakeSteps(int count, char** arguments) {
  Endpoint endpoint(Wide(arguments[0]));
  for (int i = 1; i < count; ++i) {
    std::printf("%s\n", endpoint.Do(arguments[i]).c_str());
    std::fflush(stdout);
  }
  return 0;
}

class Pipe : public testing::Test {
 protected:
  void SetUp() override { LogCapture::Reset(); }
  const LogCapture capture;
};

const std::string kConnect = "connect " + kOwnId;

TEST_F(Pipe, LifeOfAServer) {
  Endpoint server;
  server.Expect({{"disconnect", "Cannot call DisconnectClient for client pipe"},
                 {"wait 0", "Cannot call WaitClientToConnect for client pipe"},
                 {"create 0", "yes"},
                 {"read", "Invalid state in ReadBuffer"},
                 {"disconnect", "Invalid state in DisconnectClient"}});
  LogCapture::Reset();
  Peer client({kConnect, "write ping", "read", "read", "close", kConnect, "write two", "hold"});
  server.Expect({{"wait -1", "yes"},
                 {"wait 0", "Invalid state in WaitClientToConnect"},
                 {"read", "=ping"},
                 {"write pong", "yes"},
                 {"disconnect", "yes"},
                 {"write more", "Invalid state in WriteBuffer"},
                 {"wait -1", "yes"},
                 {"read", "=two"},
                 {"close", "done"},
                 {"read", "Invalid state in ReadBuffer"},
                 {"shutdown 0", "Shutdown can be called only for server pipe"},
                 {"create 0", "yes"}});
  EXPECT_THAT(client.Answers(7), ElementsAre("yes", "yes", "=pong", "no", "done", "yes", "yes"));
}

TEST_F(Pipe, LifeOfAClient) {
  Peer server({"create 0", "wait -1", "read", "write pong", "disconnect", "wait -1", "close"});
  ASSERT_EQ(server.ReadLine(), "yes");
  const std::string connect = "connect " + std::to_string(server.Id());
  Endpoint client;
  client.Expect({{"exists " + std::to_string(server.Id()), "yes"},
                 {"read", "Invalid state in ReadBuffer"},
                 {connect, "yes"},
                 {"wait 0", "Cannot call WaitClientToConnect for client pipe"},
                 {"write ping", "yes"},
                 {"read", "=pong"},
                 {"close", "done"},
                 {"write ping", "Invalid state in WriteBuffer"},
                 {connect, "yes"}});
  EXPECT_THAT(server.Answers(6), ElementsAre("yes", "=ping", "yes", "yes", "yes", "done"));
}

TEST_F(Pipe, EachOperationLogsItsStartAndItsEnd) {
  Endpoint server;
  server.Do("create 0");
  Peer client({"echo " + kOwnId});
  server.Expect({{"wait -1", "yes"}, {"write x", "yes"}, {"read", "=x"}, {"disconnect", "yes"}});
  Endpoint missing(Name() + L"missing.");
  missing.Expect({{"exists 1", "no"}, {"close", "done"}});
  Texts lines = LogCapture::Messages("VERBOSE1");
  std::erase(lines, "VERBOSE1 Pipe client already connected");  // as it happens
  const char* const expected[] = {"CreateServerPipe: start",
                                  "CreateServerPipe: end",
                                  "Wait client to connect",
                                  "Client connected",
                                  "Start writing",
                                  "End writing",
                                  "Start reading",
                                  "End reading",
                                  "Start DisconnectClient",
                                  "End DisconnectClient",
                                  "Start ServerPipeExists",
                                  "Timeout",
                                  "End ServerPipeExists",
                                  "Start Close",
                                  "End Close"};
  ASSERT_EQ(lines.size(), std::size(expected));
  for (std::size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(lines[i], std::string("VERBOSE1 ") + expected[i]);
  }
}

TEST_F(Pipe, MisuseAndFailuresAreToldExactly) {
  const std::string kInvalid = "Invalid state in ", kMissing = "connect 1";
  const std::string kNoFile = "ERROR Cannot open server pipe: ERROR_FILE_NOT_FOUND";
  const std::string kNothing = "ERROR Nothing to write", kUnsent = "ERROR WriteBuffer failed";
  struct Case {
    Texts before;
    std::string step, answer;
    Texts log;
  } const cases[] = {
      {{}, "attach 0", "Invalid pipe handle", {}},
      {{}, "readbytes", kInvalid + "ReadBuffer", {}},
      {{}, "writebytes 1", kInvalid + "WriteBuffer", {}},
      {{}, "write", "no", {kNothing, kUnsent}},
      {{}, "writebytes 0", "no", {kNothing}},
      {{}, "shutdown 0", "Shutdown can be called only for server pipe", {}},
      {{}, kMissing, "no", {kNoFile}},
      {{kMissing}, kMissing, kInvalid + "CreateServerPipe", {kNoFile}},
      {{kMissing}, "create 0", kInvalid + "CreateServerPipe", {kNoFile}},
      {{kMissing}, "attach 4", kInvalid + "AttachToServerPipe", {kNoFile}},
      {{kMissing}, "exists 1", kInvalid + "CreateServerPipe", {kNoFile}},
      {{kMissing, "close"}, "create 0", "yes", {kNoFile}},
      {{"create 0"}, "create 0", kInvalid + "CreateServerPipe", {}},
      {{"create 0"}, kConnect, kInvalid + "CreateServerPipe", {}},
      {{"create 0"}, "attach 4", kInvalid + "AttachToServerPipe", {}},
      {{"create 0"}, "exists 1", kInvalid + "CreateServerPipe", {}},
      {{"create 0"}, "wait 30", "no, timed out", {}},
      {{"create 0", "wait 0"}, "wait 30", "no, timed out", {}},
      {{"create 0", "shutdown 0"}, "create 0", "shut down", {}},
      {{"create 0", "shutdown 0"}, "wait -1", "shut down", {}},
      {{"create 0", "shutdown 0"}, "read", "shut down", {}},
      {{"create 0", "shutdown 0"}, "readbytes", "shut down", {}},
      {{"create 0", "shutdown 0"}, "write", "shut down", {}},
      {{"create 0", "shutdown 0"}, "writebytes 0", "shut down", {}},
      {{"create 0", "shutdown 0"}, "disconnect", kInvalid + "DisconnectClient", {}},
      {{"create 0", "shutdown 0", "close"}, "create 0", "yes", {}},
  };
  for (const Case& row : cases) {
    LogCapture::Reset();
    Endpoint endpoint;
    std::string how;
    for (const std::string& step : row.before) how += step + ": " + endpoint.Do(step) + "; ";
    EXPECT_EQ(endpoint.Do(row.step), row.answer) << how << row.step;
    EXPECT_EQ(LogCapture::Messages("WARNING"), row.log) << how << row.step;
  }
  LogCapture::Reset();
  Endpoint unnamed(L"no pipe's name ");
  unnamed.Expect({{"create 0", "no"}});
  EXPECT_THAT(LogCapture::Messages("WARNING"),
              ElementsAre("ERROR CreateServerPipe: cannot create pipe! errCode=123",
                          "ERROR CreateServerPipe: could not create pipe"));
}

TEST_F(Pipe, MessagesOfAnySizeCrossUnchanged) {
  Endpoint server;
  server.Do("create 0");
  Peer client({"echo " + kOwnId});
  ASSERT_EQ(server.Do("wait -1"), "yes");
  for (std::size_t size : {1, 2, 3, 254, 255, 256, 257, 258, 4094, 4095, 4096, 4097, 4098, 65536,
                           65537, 1 << 20, (1 << 20) + 1, 5000001}) {
    Bytes sent(size), read = {1, 2, 3};
    for (std::size_t i = 0; i < size; ++i) sent[i] = static_cast<BYTE>(i * 7 + i / 251);
    EXPECT_TRUE(server.pipe.WriteBuffer(sent)) << size;
    EXPECT_TRUE(server.pipe.ReadBuffer(read)) << size;
    EXPECT_TRUE(read == sent) << size << " bytes became " << read.size();
  }
  Bytes bytes;
  EXPECT_TRUE(server.pipe.WriteString(L"a\u20AC\xD83D\xDE00"));
  EXPECT_TRUE(server.pipe.ReadBuffer(bytes));
  EXPECT_EQ(bytes, Bytes({'a', 0, 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE}));
  const std::pair<Bytes, std::wstring> texts[] = {{{'a', 0, 0, 0, 'b', 0}, L"a"},
                                                  {{0, 0, 'b', 0}, L""},
                                                  {{'a', 0, 'b'}, L"ab"},
                                                  {{0xAC, 0x20}, L"\u20AC"}};
  for (const auto& [sent, expected] : texts) {
    std::wstring text = L"old";
    EXPECT_TRUE(server.pipe.WriteBuffer(sent));
    EXPECT_TRUE(server.pipe.ReadString(text));
    EXPECT_EQ(text, expected);
  }
}

TEST_F(Pipe, WhatTakesTooLongIsCancelledAndTheEndpointStaysUsable) {
  Endpoint server;
  server.Do("create 0");
  Peer client({kConnect, "write early", "hold"});
  ASSERT_EQ(server.Do("wait -1"), "yes");
  ASSERT_EQ(server.Do("read"), "=early");
  server.pipe.SetTimeout(50);
  LogCapture::Reset();
  for (const bool pump : {false, true}) {
    server.pipe.SetPumpMessages(pump);
    server.Expect({{"read", "no"}, {"writebytes 3000000", "no"}});
  }
  const std::string late = "ERROR WaitForSingleObject timeout or failed";
  const Texts once = {late + " (258)", "ERROR GetOverlappedResult failed",
                      "ERROR ReadBuffer failed", late};
  Texts twice = once;
  twice.insert(twice.end(), once.begin(), once.end());
  EXPECT_EQ(LogCapture::Messages(), twice);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc > 2 && std::strcmp(argv[1], "peer") == 0) return TakeSteps(argc - 2, argv + 2);
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}

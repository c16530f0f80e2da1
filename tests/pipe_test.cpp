// Tests the pipe between two endpoints, in one process and in two. Also tests TimedRetry.
#include <aclapi.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <regex>
#include <thread>

#include "UTILITY/JbPipe.h"
#include "UTILITY/TimedRetry.h"
#include "UTILITY/VistaSpecific.h"
#include "soak/ProcessCounters.h"
#include "support/ChildProcess.h"
#include "support/LogCapture.h"

namespace {

using Bytes = std::vector<BYTE>;
thread_local std::size_t refusedSize = 0;  // operator new fails for this number of bytes

DWORD testId = ::GetCurrentProcessId();  // in a child process, the id of the test process
std::string Ascii(const std::wstring& wide) { return std::string(wide.begin(), wide.end()); }

// An endpoint of a pipe that obeys text commands, in this process or in a child process.
struct Endpoint {
  Endpoint() {
    pipe.SetPipeName(L"\\\\.\\pipe\\pipe_test." + std::to_wstring(testId) + L'.');
    pipe.SetTimeout(30000);
  }

  // Runs "operation argument". If a number is missing, takes it from the text that was read last,
  // so that "attach" can use a handle from a message. Returns "yes", "no", "=" and the text read,
  // or the message of the exception. "Invalid state in X" is shortened to "!X".
  std::string Do(const std::string& step) try {
    const auto [verb, rest] = Cut(step, " ");
    const DWORD number = std::strtoll((rest.empty() ? Ascii(text) : rest).c_str(), nullptr, 10);
    std::uint32_t late = 9;
    Bytes bytes;
    bool done = true;
    if (verb == "create") done = pipe.CreateServerPipe(number, true);
    if (verb == "wait") done = pipe.WaitClientToConnect(number, &late);
    if (verb == "disconnect") done = pipe.DisconnectClient();
    if (verb == "connect") done = pipe.ConnectToServerPipe(server);
    if (verb == "exists") done = pipe.ServerPipeExists(server, number);
    if (verb == "attach") done = pipe.AttachToServerPipe(LongToHandle(number));
    if (verb == "readbytes") done = pipe.ReadBuffer(bytes);
    if (verb == "write") done = pipe.WriteString(std::wstring(rest.begin(), rest.end()));
    if (verb == "writebytes") done = pipe.WriteBuffer(Bytes(number, 'x'));
    if (verb == "read") done = pipe.ReadString(text);
    if (verb == "read") return (done ? "=" : "no") + Ascii(text);
    if (verb == "shutdown") pipe.Shutdown(number);
    if (verb == "close") pipe.Close();
    if (verb == "timeout") pipe.SetTimeout(number);
    if (verb == "pump") pipe.SetPumpMessages(number != 0);
    if (verb == "to") server = number;
    if (verb == "bare") pipe.SetAppendProcessId(false);
    while (verb == "echo" && pipe.ReadBuffer(bytes)) pipe.WriteBuffer(bytes);
    return std::string(done ? "yes" : "no") + (late == 1 ? ", timed out" : "");
  } catch (const PipeException& exception) {
    const std::string message = exception.Message();
    return message.starts_with("Invalid state in ") ? "!" + message.substr(17) : message;
  } catch (const PipeShutdownException&) {
    return "shut down";
  }
  DWORD server = testId;
  std::wstring text = L"old";
  CJbPipe pipe;
};

// A child process that runs "operation; operation; ..." and prints the results. By default it
// connects to the pipe of this process.
struct Peer : ChildProcess {
  explicit Peer(const std::string& script)
      : ChildProcess(TestFolder() + L"pipe_test.exe peer " + std::to_wstring(testId) + L" \"" +
                     std::wstring(script.begin(), script.end()) + L"\"") {}
};

long OpenHandles() { return soak::CountProcess().handles; }

const std::string kId = std::to_string(testId);
const std::string kBusy = "CreateServerPipe: sPipeName='\\\\.\\pipe\\pipe_test." + kId + "." + kId +
                          "' is busy; retrying...";

Texts Log() { return LogCapture::Messages("WARNING"); }

struct Pipe : testing::Test {
  // Runs a script. Its form is "endpoint operation > expected result; ...".
  void Expect(const std::string& script) {
    for (const std::string& line : Split(script, "; ")) {
      const auto [step, result] = Cut(line, " > ");
      EXPECT_EQ(ends[line[0]].Do(step.substr(2)), result) << line << " in: " << script;
    }
  }
  // Runs the script. Meanwhile another thread runs the action: after `line` was logged, or at once
  // if `line` is empty.
  void Meanwhile(const std::string& line, const std::string& script, std::function<void()> action) {
    LogCapture::Reset();
    const std::jthread other([&] {
      while (!line.empty() && LogCapture::Count(line) == 0) ::Sleep(1);
      ::Sleep(line.empty() ? 0 : 50);
      action();
    });
    Expect(script);
  }
  const LogCapture capture;
  // The endpoints in a script, by their letters. In most scripts, `s` is a server, `c` and `d` are
  // its clients, `p` is a client of the peer process, and `m` is never connected.
  std::map<char, Endpoint> ends;
};

// Runs the conversations of pipe.txt. A line is one operation of an endpoint with its result, or a
// line that this process must log. The peer process receives all its operations at the start, and
// runs them at its own pace.
TEST_F(Pipe, ConversationsMatchTheTranscriptsAndLeakNoHandle) {
  const std::string text = FileText(TESSEL_TRANSCRIPTS "/pipe.txt");
  const Texts conversations = Split(std::regex_replace(text, std::regex("ID"), kId), "\n\n");
  ASSERT_NE(text, "");
  long before = 0;
  // The first pass opens some handles that stay open. So the count is compared only before and
  // after the second pass.
  for (int pass = 0; pass < 2; ++pass) {
    before = OpenHandles();
    for (const std::string& conversation : conversations) {
      const Texts lines = Split(conversation, "\n");
      SCOPED_TRACE(lines[0]);
      std::string told, answers;
      Texts log;
      for (const std::string& line : lines) {
        const auto [step, result] = Cut(line, " > ");
        if (line.starts_with("log ")) log.push_back(line.substr(4));
        if (!line.starts_with("peer ")) continue;
        told += step.substr(5) + "; ";
        answers += result + "; ";
      }
      LogCapture::Reset();
      Peer peer(told);
      Expect("p to " + std::to_string(peer.Id()) + " > yes");
      for (const std::string& line : lines) {
        if (line[1] == ' ' && line[0] != '#') Expect(line);
      }
      EXPECT_EQ(Log(), log);
      ends.clear();
      EXPECT_EQ(peer.ReadToEnd(), answers);
    }
  }
  EXPECT_EQ(OpenHandles(), before);
}

TEST_F(Pipe, MessagesOfAnySizePassADuplicatedHandle) {
  Peer heir("exists 20000; connect; read; close; attach; echo");
  Expect("s create 0 > yes; s wait -1 > yes; d bare > yes; d create 0 > yes; c bare > yes");
  Expect("c connect > yes; d wait 0 > yes");
  const HANDLE handle = ends['c'].pipe.DuplicatePipeHandle(heir.Id());
  EXPECT_EQ(ends['c'].pipe.DuplicatePipeHandle(3), nullptr) << "no such process";
  Expect("c close > yes; s write " + std::to_string(HandleToULong(handle)) + " > yes");
  EXPECT_EQ(ends['c'].pipe.DuplicatePipeHandle(heir.Id()), nullptr) << "no pipe";
  auto& [id, text, pipe] = ends['d'];
  Bytes read;
  for (int size : {1, 2, 254, 255, 256, 257, 258, 4094, 4095, 4096, 4097, 4098, 65537, 5000001}) {
    Bytes sent(size);
    for (int i = 0; i < size; ++i) sent[i] = static_cast<BYTE>(i * 7 + i / 251);
    EXPECT_TRUE(pipe.WriteBuffer(sent) && pipe.ReadBuffer(read) && read == sent) << size;
  }
  EXPECT_TRUE(pipe.WriteString(L"a\u20AC\xD83D\xDE00") && pipe.ReadBuffer(read));
  EXPECT_EQ(read, Bytes({'a', 0, 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE}));
  EXPECT_TRUE(pipe.WriteBuffer({'a', 0, 0, 0, 'b', 0}) && pipe.ReadString(text) && text == L"a");
  EXPECT_TRUE(pipe.WriteBuffer({'a', 0, 'b'}) && pipe.ReadString(text) && text == L"ab");
}

TEST_F(Pipe, AnotherThreadOrProcessEndsAWait) {
  Expect("s create 0 > yes; c connect > yes; s wait 0 > yes; d exists 0 > yes");
  ::DisconnectNamedPipe(SafeHandle(ends['s'].pipe.DuplicatePipeHandle(testId)).Get());
  Expect("s disconnect > no; c close > yes; s wait 0 > no, timed out");
  Expect("c connect > yes; s wait 0 > yes");
  EXPECT_EQ(LogCapture::Count("Pipe client already connected"), 2u);
  EXPECT_EQ(LogCapture::Count("WaitClientToConnect timeout"), 1u);
  Meanwhile("", "d connect > yes; d write here > yes",
            [&] { Expect("s disconnect > yes; s wait -1 > yes; s read > =here"); });
  const HWND window = ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, 0, 0, 0);
  MSG posted;
  // During a read, a window receives sent messages only if the read pumps messages. The first pass
  // reads without pumping, so SendMessageTimeoutW fails. The second pass reads with pumping.
  for (const UINT limit : {200u, 20000u}) {
    ::PostMessageW(window, WM_APP, 0, 0);
    Meanwhile("Start reading", "d read > =go on; d pump 1 > yes", [&] {
      EXPECT_EQ(::SendMessageTimeoutW(window, WM_NULL, 0, 0, SMTO_NORMAL, limit, nullptr) != 0,
                limit > 200);
      Expect("s write go on > yes");
    });
    EXPECT_TRUE(::PeekMessageW(&posted, window, WM_APP, WM_APP, PM_REMOVE))
        << "the read leaves posted messages in the queue";
  }
  Meanwhile(kBusy, "c close > yes; c create 30000 > yes", [&] { Expect("s close > yes"); });
  Peer peer("connect; read");
  Expect("c wait -1 > yes");
  Meanwhile("Start reading", "c read > no; c write x > no", [&] { peer.Kill(); });
  EXPECT_EQ(Log().at(1) + Log().at(2), "ERROR ReadBuffer failedERROR WriteBuffer failed");
  // Shutdown must end waits that already run, and waits that are about to begin.
  for (int i = 0; i < 100; ++i) {
    Expect("c close > yes; c create 0 > yes");
    Meanwhile(i % 10 == 0 ? "Wait client to connect" : "", "c wait -1 > shut down",
              [&] { Expect("c shutdown 30000 > yes"); });
  }
}

TEST_F(Pipe, ReadFailsWhenMemoryIsExhausted) {
  // Let the allocation of the read buffer fail (65536 bytes). Then let the allocation of the
  // caller's copy of the message fail (5000 bytes).
  for (const std::size_t size : {65536, 5000}) {
    Expect("s create 0 > yes; c connect > yes; s wait 0 > yes");
    refusedSize = size;
    Meanwhile("Start reading", "s readbytes > no; s close > yes",
              [&] { ends['c'].Do("writebytes 5000"); });
    refusedSize = 0;
    EXPECT_EQ(Log().at(0), "ERROR Failed to allocate " + std::to_string(size) + " bytes");
    Expect("c close > yes");
  }
}

TEST_F(Pipe, EveryoneMayOpenItFromLowIntegrityUp) {
  Expect("s create 0 > yes");
  const SafeHandle pipe(ends['s'].pipe.DuplicatePipeHandle(testId));
  PACL access = nullptr, labels = nullptr;
  ::GetSecurityInfo(pipe.Get(), SE_KERNEL_OBJECT,
                    DACL_SECURITY_INFORMATION | LABEL_SECURITY_INFORMATION, nullptr, nullptr,
                    &access, &labels, nullptr);
  const auto ace = [](PACL list) {  // returns the list's only entry: type, flags, size, mask, SID
    const BYTE* bytes = reinterpret_cast<BYTE*>(list);
    return bytes && list->AceCount == 1 ? Bytes(bytes + 8, bytes + 28) : Bytes();
  };
  EXPECT_EQ(ace(access), Bytes({0, 0, 20, 0, 255, 1, 31, 0, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0}));
  EXPECT_EQ(ace(labels), Bytes({17, 0, 20, 0, 1, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 16, 0, 16, 0, 0}));
  SECURITY_ATTRIBUTES* const attributes = GetPipeSecurityAttributes();
  EXPECT_EQ(attributes->nLength, 24u);
  std::thread([&] { EXPECT_EQ(GetPipeSecurityAttributes(), attributes); }).join();
}

TEST(TimedRetry, EndsOnSuccessCancellationOrTimeOut) {
  const auto run = [](int timeout, int successAt, int cancelAt) {
    int attempts = 0;
    const TimedRetry retry(timeout, [&] { return attempts == cancelAt; });
    return std::pair<unsigned, int>{retry.Run([&] { return ++attempts == successAt; }), attempts};
  };
  EXPECT_EQ(run(30000, 3, 0), std::pair(0u, 3));
  EXPECT_EQ(run(30000, 0, 2), std::pair(0x80040225, 2));
  EXPECT_EQ(run(-1, 0, 1), std::pair(0x80040225, 1));
  EXPECT_EQ(run(-1, 0, 0), std::pair(0x80040226, 1));
}

TEST(SafeObject, OwnsOneHandleAndKeepsTheLastError) {
  const LogCapture capture;
  const long before = OpenHandles();
  const auto event = [] { return ::CreateEventW(nullptr, TRUE, FALSE, nullptr); };
  SafeHandle first(event()), second(event()), &itself = first;
  first = std::move(second);
  first = std::move(itself);
  EXPECT_TRUE(first && !second);
  EXPECT_EQ(OpenHandles(), before + 1);
  ::SetLastError(77);
  { const SafeHandle last(std::move(first)), never(ULongToHandle(0x7FFFFFF0)); }
  EXPECT_EQ(::GetLastError(), 77u);
  EXPECT_EQ(OpenHandles(), before);
  EXPECT_EQ(Log().at(0), "WARNING Closing safe handle failed, last error=6");
}

}  // namespace

void* operator new(std::size_t size) {
  void* const block = size == refusedSize && size != 0 ? nullptr : std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
// Not inlined, because GCC 12 would warn that std::free does not match operator new.
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept { std::free(block); }

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (argc != 4) return RUN_ALL_TESTS();
  testId = std::stoul(argv[2]);
  Endpoint endpoint;
  for (const auto& step : Split(argv[3], "; ")) std::printf("%s; ", endpoint.Do(step).c_str());
}

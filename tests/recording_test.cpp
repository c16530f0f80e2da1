// Tests recordings of requests and answers. SceneBroker writes them, and so does `tessel tap` (the
// tap), which stands between clients and a broker. SceneBroker also serves recordings again.
#include <gmock/gmock.h>

#include "support/Tools.h"
#include "tools/recording/Recording.h"

namespace {

using testing::HasSubstr;

// The second request and the fifth are not well-formed UTF-16. '?' stands for the process id.
const std::vector<std::wstring> kRequests = {L"[14,?,\"\"]",
                                             L"[10,?,\"user\",\"\xD800\"]",
                                             L"[12,?,\"user\",\"Größe 𝄞\"]",
                                             L"[10,?,\"user\",\"value\"]",
                                             L"[" + std::wstring(9000, L' ') + L"\xDC00",
                                             L"[10,?,\"user\",\"name\"]"};
constexpr wchar_t kRelease[] = L"[3,?,\"user\"]";

// Returns "-" if the server disconnects without an answer.
std::wstring Ask(const SceneBroker& broker, const std::wstring& request, std::string pipe = "") {
  if (pipe.empty()) pipe = broker.Fact("pipe");
  RawClient client(tessel::Wide(pipe));
  client.Send(
      std::regex_replace(request, std::wregex(L"[?]"), tessel::Wide(broker.Fact("process"))));
  const std::wstring answer = client.Receive();
  const DWORD error = ::GetLastError();
  const bool isLost = error == ERROR_BROKEN_PIPE || error == ERROR_PIPE_NOT_CONNECTED;
  return answer.empty() && isLost ? L"-" : answer;
}

// A recording of kRequests, of a release before the last of them, and of their answers.
struct Session {
  explicit Session(const std::string& name) : file(name) {
    SceneBroker broker(TESSEL_SCENES "/login.json", L" --record" + Quoted(file.Name()));
    for (const std::wstring& request : kRequests) {
      if (request == kRequests.back()) {
        EXPECT_EQ(Ask(broker, kRelease), L"[0,true]");
      }
      answers.push_back(Ask(broker, request));
      // SceneBroker writes a request and its answer to the file before the client gets the answer.
      const auto exchanges = tools::ReadRecording(file.path).exchanges;
      EXPECT_EQ(exchanges.empty() ? L"" : exchanges.back().answer, answers.back());
    }
    broker.Kill();
  }
  const NewFile file;
  std::vector<std::wstring> answers;
};

TEST(RecordingTest, IsServedAgain) {
  Session session("again");
  SceneBroker broker("--replay=" + session.file.Name());
  EXPECT_EQ(broker.Fact("exchanges"), "7");
  for (std::size_t i = 0; i < kRequests.size(); ++i) {
    // This release is in the recording only once, before the last request. But releases may come
    // at any time, and more often than in the recording.
    EXPECT_EQ(Ask(broker, kRelease), L"[0,true]");
    EXPECT_EQ(Ask(broker, kRequests[i]), session.answers[i]) << i;
  }
  EXPECT_THAT(broker.CloseAndRead(0), testing::EndsWith("replayed: 6\nleft: 0\n"));
}

TEST(RecordingTest, ReportsTheFirstDeviation) {
  // Each row changes a recording: it has a regular expression and the text that replaces its
  // matches. Then come the number of requests that SceneBroker still answers from the changed
  // recording, and the deviation that it reports.
  const std::tuple<const char*, const char*, int, std::string> kCases[] = {
      {"value", "valve", 3,
       "line 5\nexpected: [10,?,\"user\",\"valve\"]\nactual: [10,?,\"user\",\"value\"]\n"},
      {"d800", "d801", 1, "line 3\n"},
      {"\"name\\\\\"]\",\"answer\".*\n", "\"na", 5,
       "line 8\nexpected: no request: the recording ends here\nactual: [10,?,\"user\",\"name\"]\n"},
  };
  for (const auto& [text, replacement, step, report] : kCases) {
    SCOPED_TRACE(replacement);
    Session session("changed");
    const std::string changed = std::regex_replace(FileText(session.file.path, std::ios::binary),
                                                   std::regex(text), replacement);
    std::ofstream(session.file.path, std::ios::binary) << changed;
    SceneBroker broker("--replay=" + session.file.Name());
    for (int i = 0; i < static_cast<int>(kRequests.size()); ++i) {
      EXPECT_EQ(Ask(broker, kRequests[i]), i < step ? session.answers[i] : L"[104]") << i;
    }
    EXPECT_EQ(Ask(broker, kRelease), L"[0,true]");
    const std::string output = broker.CloseAndRead(3);
    EXPECT_THAT(output, HasSubstr("deviation: " + report));
    EXPECT_EQ(output.find("deviation: "), output.rfind("deviation: "));
  }
}

TEST(RecordingTest, IsRefusedWithLineAndSolution) {
  const std::string header =
      R"({"format":"tessel recording","version":1,"address":"a","scheme":"http","title":""})"
      "\n";
  const std::pair<std::string, std::string> kCases[] = {
      {"", "the file has no whole line; record again"},
      {"{\"format\":", "the file has no whole line; record again"},
      {"{\"version\":1}\n", "line 1: the file is not a recording; name a file"},
      {std::regex_replace(header, std::regex("1"), "2"), "line 1: only version 1 is known; use"},
      {std::regex_replace(header, std::regex("http"), "ftp"), "line 1: \"scheme\" must be"},
      {header + "nonsense\n{}\n", "line 2: the line is not JSON; correct or remove it"},
      {header + "{\"answer\":\"\"}", "line 2: \"request\" must be a text, or"},
      {header + "{\"request\":{\"utf16\":\"d8000\"}}", "line 2: \"request\" must be a text, or"},
  };
  for (const auto& [text, message] : kCases) {
    const SceneFile file(text);
    RunTool(L"SceneBroker.exe --replay" + Quoted(tessel::Narrow(file.path.wstring())), 1,
            tessel::Narrow(file.path.wstring()) + ": " + message);
  }
}

TEST(RecordingTest, SaysHowToSolveAnError) {
  const std::string orders = TESSEL_SCENES "/orders.json";
  const SceneFile existing("keep me");
  const std::wstring record = L" --record" + Quoted(tessel::Narrow(existing.path.wstring()));
  const std::wstring tap = L"tessel.exe tap --address http://tap.example/" + record + L" --scheme ";
  RunTool(L"SceneBroker.exe", 2, "a scene file, or --replay with a recording");
  RunTool(L"SceneBroker.exe --replay x" + Quoted(orders), 2, "excludes");
  RunTool(L"SceneBroker.exe --replay x", 1, "x: cannot read the file; check the path");
  RunTool(L"SceneBroker.exe" + Quoted(orders) + record, 1, "the file exists; remove it, or choose");
  RunTool(tap + L"tailored", 2, "would ask itself; start the broker with the scheme http");
  RunTool(tap + L"file", 3, "start the broker first");
  EXPECT_EQ(FileText(existing.path), "keep me");
}

TEST(RecordingTest, IsMadeByATap) {
  const NewFile file("tap");
  SceneBroker broker(TESSEL_SCENES "/login.json", L" --scheme http");
  const std::string pipe =
      tessel::Narrow(wire::PipeName(SL_TAILORED_URI, tessel::Wide(broker.Fact("address"))));
  std::vector<std::wstring> answers;
  {
    Tap tap(broker, file);
    RunTool(L"tessel.exe tap --scheme http --record x --address" + Quoted(broker.Fact("address")),
            5, "already serves the pipe " + pipe + "; end it first");
    for (const std::wstring& request : kRequests) {
      if (request == kRequests.back()) broker.Kill();  // the tap gets no answer to the last request
      answers.push_back(Ask(broker, request, pipe));
    }
  }
  EXPECT_EQ(answers.front(), L"[0,\"user\"]");
  EXPECT_EQ(answers.back(), L"-");
  SceneBroker replay("--replay=" + file.Name());
  EXPECT_EQ(replay.Fact("title"), broker.Fact("title"));
  EXPECT_EQ(replay.Fact("pipe"), pipe);
  for (std::size_t i = 0; i < kRequests.size(); ++i) {
    EXPECT_EQ(Ask(replay, kRequests[i]), answers[i]) << i;
  }
  EXPECT_THAT(replay.CloseAndRead(0), testing::EndsWith("replayed: 6\nleft: 0\n"));
}

// The answer is so long that the tap must read it in several parts.
TEST(RecordingTest, HoldsALongAnswerOfATap) {
  const NewFile file("long");
  SceneBroker broker(TESSEL_SCENES "/login.json", L" --scheme http --fault long=200000@command=10");
  {
    Tap tap(broker, file);
    RunTool(broker.InspectorLine("get value --find ,,user"), 0, "zoë");
  }
  const std::wstring answer = tools::ReadRecording(file.path).exchanges.at(1).answer;
  EXPECT_GT(answer.size(), 200000u);
  EXPECT_TRUE(answer.ends_with(L"\"]"));
}

}  // namespace

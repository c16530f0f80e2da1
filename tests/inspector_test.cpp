// Runs the inspector as a process, as a user does, and checks its output and exit code.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "TesselHost.h"
#include "TesselSilverlight.h"
#include "support/Elements.h"
#include "support/TestWindow.h"
#include "support/Tools.h"
#include "wire/Addresses.h"

namespace {

using tessel::Narrow;
using tessel::Wide;
using testing::HasSubstr;

void ExpectAllReleased(SceneBroker& broker) {
  const std::string summary = broker.CloseAndReadSummary();
  const std::regex even("handed out: ([1-9]\\d*)\nundelivered: 0\nreleased: \\1\nstill held: 0\n");
  EXPECT_TRUE(std::regex_match(summary, even)) << summary;
}

// Runs each command of a transcript file. Expects the output and the exit code that follow the
// command in the file. `run` runs one command, and returns its exit code and its output.
template <class Run>
void ExpectTranscript(const std::string& name, Run run) {
  std::ifstream transcript(std::string(TESSEL_TRANSCRIPTS "/inspector-") + name + ".txt");
  std::string expected, actual;
  for (std::string line; std::getline(transcript, line); expected += line + '\n') {
    if (!line.starts_with("$ tessel ")) continue;
    const auto& [code, output] = run(line.substr(9));
    actual += line + '\n' + output;
    if (code != 0) actual += "exit " + std::to_string(code) + '\n';
  }
  EXPECT_EQ(actual, expected) << name;
}

std::string TwinWindow() {
  return tessel::HandleText(
      ::CreateWindowW(L"STATIC", L"twins", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, 0));
}

// A transcript holds command lines, their output, and their exit code if it is not 0. PROCESS and
// WINDOW stand for the broker's process id and window, OWN and TWIN for two windows of this process
// that have the title "twins". The commands run in order, so each command sees the changes of
// earlier commands.
void PlayTranscript(const char* name, const SceneBroker& broker) {
  static std::map<std::string, std::string> handles = {{"OWN", TwinWindow()},
                                                       {"TWIN", TwinWindow()}};
  handles["WINDOW"] = broker.Fact("window");
  // Replaces the process id only after "process", because other numbers may be equal to it.
  const std::regex process("(process\"?: )" + broker.Fact("process") + "\\b");
  ExpectTranscript(name, [&](const std::string& line) {
    const std::string command = std::regex_replace(line, std::regex("OWN"), handles["OWN"]);
    auto [code, output] = ToolOutput(broker.InspectorLine(command));
    for (const auto& [word, handle] : handles)
      output = std::regex_replace(output, std::regex(handle + "\\b"), word);
    return std::pair(code, std::regex_replace(output, process, "$1PROCESS"));
  });
}

// Serves a recording with SceneBroker. The commands of the transcript must then print the same as
// with the broker that was recorded.
void ExpectReplay(const char* name, const NewFile& recording) {
  SceneBroker replay("--replay=" + recording.Name());
  PlayTranscript(name, replay);
  EXPECT_THAT(replay.CloseAndRead(0), testing::EndsWith("\nleft: 0\n")) << name;
}

TEST(InspectorTest, PrintsWhatTheTranscriptsSay) {
  const std::tuple<const char*, std::string, const wchar_t*> kCases[] = {
      {"login", TESSEL_SCENES "/login.json", L""},
      {"orders", TESSEL_SCENES "/orders.json", L" --scheme https"},
      {"odd", TESSEL_TRANSCRIPTS "/odd.json", L""},
      {"desk", TESSEL_TRANSCRIPTS "/desk.json", L""},
  };
  for (const auto& [name, scene, options] : kCases) {
    const NewFile recording("session");
    SceneBroker broker(scene, options + (L" --record" + Quoted(recording.Name())));
    PlayTranscript(name, broker);
    ExpectAllReleased(broker);
    ExpectReplay(name, recording);
  }
  ExpectTranscript("alone",
                   [](const std::string& line) { return ToolOutput(L"tessel.exe " + Wide(line)); });
}

// These outputs are not in a transcript, because they contain times, or windows that do not belong
// to the test.
TEST(InspectorTest, CountsCallsAndFindsServedWindows) {
  SceneBroker broker(TESSEL_SCENES "/login.json");
  const std::string time = "[0-9.]+ ms";
  const std::pair<std::wstring, std::string> kCases[] = {
      {broker.InspectorLine("find ,,branch --stats"),
       "\ncalls: 2, " + time + ", longest: \\w+, " + time + "\n  FindCollection: 1, " + time +
           ", longest: " + time + "\n  ReleaseObj: 1, "},
      {broker.InspectorLine("at 1,1 --scheme http --stats"),
       "^calls: 1, [^]*\ntessel: cannot find the element"},
      {broker.InspectorLine("at 1,-1 --json --stats"),
       "^[{]\"stats\":[{]\"calls\":1,.*\n[{]\"error\":[{]\"code\":null,.*\"exit\":1[}][}]\n$"},
      {L"tessel.exe windows --address" + Quoted(broker.Fact("address")),
       "\n  " + broker.Fact("window") + ' ' + broker.Fact("process") +
           " SceneBroker[.]exe \"Café Größe – Sign in\" served by: tailored\n[^]*\npipes: 1\n"},
  };
  for (const auto& [line, output] : kCases) {
    const std::string actual = ToolOutput(line).second;
    EXPECT_TRUE(std::regex_search(actual, std::regex(output))) << Narrow(line) << '\n' << actual;
  }
  ExpectAllReleased(broker);
}

// Returns whether the sources log a text that ends with `text`, with this level: by the macro
// LOG_LEVEL, or by the function LogErrorAt.
bool AreLogged(const std::string& sources, const std::string& level, const std::string& text) {
  for (std::size_t at = 0; (at = sources.find(text + '"', at)) != sources.npos; ++at) {
    const std::size_t macro = sources.rfind("LOG_", at),
                      function = sources.rfind("LogErrorAt(", at);
    const bool isMacro = function == sources.npos || (macro != sources.npos && macro > function);
    if (isMacro ? sources.substr(macro).starts_with("LOG_" + level + '(') : level == "ERROR") {
      return true;
    }
  }
  return false;
}

// Each log line "LEVEL TEXT" that `explain` shows must come from the sources of the module.
TEST(InspectorTest, ExplainsWithLinesThatTheModuleLogs) {
  std::string sources;
  for (const auto& file : std::filesystem::recursive_directory_iterator(TESSEL_SOURCE "/Common")) {
    if (file.path().extension() == ".cpp") sources += FileText(file.path().string());
  }
  const auto explained =
      nlohmann::json::parse(ToolOutput(L"tessel.exe explain --json").second, nullptr, false);
  int lines = 0;
  for (const auto& code : explained.at("codes")) {
    for (const std::string line : code.at("log")) {
      const auto [level, text] = Cut(line, " ");
      EXPECT_TRUE(AreLogged(sources, level, text)) << line;
      ++lines;
    }
  }
  EXPECT_GT(lines, 50);
}

// Another program serves the pipe, and clients may only write to it.
TEST(InspectorTest, ShowsThePipeThatItCannotUse) {
  const std::wstring pipe = wire::PipeName(SL_TAILORED_URI, L"http://foreign");
  const HANDLE server =
      ::CreateNamedPipeW(pipe.c_str(), PIPE_ACCESS_INBOUND, PIPE_TYPE_MESSAGE, 1 /*instances*/,
                         0 /*out*/, 0 /*in*/, 0 /*default time-out*/, nullptr /*security*/);
  RunTool(L"tessel.exe at 1,2 --address http://foreign --window " +
              Wide(tessel::HandleText(::GetDesktopWindow())),
          6, "\n  pipe:    " + Narrow(pipe) + " (exists)\n  pipe:    ");
  ::CloseHandle(server);
}

// The broker of the first address answers nonsense. No broker serves the second address. The
// window makes sure that the first broker is asked.
TEST(InspectorTest, SaysWhyNoWindowIsServed) {
  const TestWindow window;
  const ScriptedBroker broker(SL_TAILORED_URI, L"http://nonsense", {"*[0,7]"});
  const std::wstring windows = L"tessel.exe windows --address http://";
  RunTool(
      windows + L"nonsense", 0,
      "TAILOREDhttp___nonsense failed: -12\nto do: no broker serves a window; see tessel doctor\n");
  RunTool(windows + L"nobody", 0, "\npipes: 0\nto do: no broker of this address runs");
}

// Runs tessel without the module. A command that needs the module must name the missing file. All
// other commands must work.
TEST(InspectorTest, NamesTheMissingModule) {
  const auto folder = std::filesystem::temp_directory_path() / "tessel-alone";
  std::filesystem::create_directories(folder);
  std::filesystem::copy_file(TestFolder() + L"tessel.exe", folder / "tessel.exe",
                             std::filesystem::copy_options::overwrite_existing);
  const std::tuple<std::string, DWORD, std::string> kCases[] = {
      {"explain -9", 0, "SL_BROKER_NOT_STARTED"},
      {"windows", 0, "windows: "},
      {"--version", 0, "cannot load TesselSLB_x64.dll"},
      {"tree --window x --address y", 5,
       "tessel: cannot load TesselSLB_x64.dll: there is no such file; put it beside tessel.exe\n"
       "  looked in: " +
           Narrow(folder.wstring()) + ", "},
  };
  for (const auto& [command, code, output] : kCases) {
    ChildProcess tessel((folder / "tessel.exe ").wstring() + Wide(command));
    EXPECT_THAT(tessel.ReadToEnd(), HasSubstr(output)) << command;
    EXPECT_EQ(tessel.Wait(), code) << command;
  }
  std::filesystem::remove_all(folder);
}

TEST(InspectorTest, PrintsTheSameThroughATap) {
  const NewFile recording("tapped");
  SceneBroker broker(TESSEL_SCENES "/login.json", L" --scheme http");
  {
    Tap tap(broker, recording);
    PlayTranscript("login", broker);
  }
  ExpectAllReleased(broker);
  broker.Kill();
  ExpectReplay("login", recording);
}

// Each row has a command, the notice that tessel prints while it waits (or ""), the broker's
// answer, the exit code, and a part of the output. This process is the broker, because SceneBroker
// does not send such answers. An empty answer disconnects the client. The address has no scheme, so
// a search asks only this broker. The window is destroyed when the request has arrived, so that a
// later injection fails. The broker ends after its answer.
TEST(InspectorTest, ReportsEveryKindOfAnswer) {
  const std::tuple<std::string, std::string, const wchar_t*, DWORD, std::string> kCases[] = {
      {"at 1,2 --scheme tailored",
       "tessel: waiting for the broker to find the element at 1,2 (at most 70 s)", L"[0,7]", 5,
       "-12 (SL_ARCHIVE_FAILURE)"},
      {"at 1,2", "", L"[4711]", 4, "4711 (the broker's own status)"},
      {"at 1,2", "", L"[-8]", 2, "-5 (SL_INVALID_ARGUMENT)"},  // the injection finds no window
      {"find ,,", "", L"[0,2000000000]", 5, "cannot find: memory is exhausted; check the broker"},
      {"at 1,2", "", L"", 7, "-6 (SL_CANNOT_READ)"},
  };
  for (const auto& [command, notice, answer, code, output] : kCases) {
    SCOPED_TRACE(output);
    const HWND window =
        ::CreateWindowW(L"STATIC", L"", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, 0);
    ASSERT_EQ(InitComm(SL_TAILORED_URI, INFINITE, L"tools"), SL_CHANNEL_SUCCESS);
    ChildProcess tessel(TestFolder() + L"tessel.exe " + Wide(command) +
                        L" --address tools --window" + Quoted(tessel::HandleText(window)));
    wchar_t request[100];
    DWORD size = 100;
    EXPECT_EQ(ReadMessage(request, &size), SL_CHANNEL_SUCCESS);
    ::DestroyWindow(window);
    if (!notice.empty()) {
      EXPECT_EQ(tessel.ReadLine(), notice);
    }
    EXPECT_EQ(WriteMessage(answer), *answer ? SL_CHANNEL_SUCCESS : SL_CHANNEL_CANNOT_WRITE);
    EXPECT_EQ(UninitComm(), SL_CHANNEL_SUCCESS);
    EXPECT_THAT(tessel.ReadToEnd(), HasSubstr(output));
    EXPECT_EQ(tessel.Wait(), code);
  }
}

// Serves each scene, dumps it with "tree --json", serves the dump, and dumps the served dump, too.
// The scene and both dumps must be equal. odd.json contains texts that wrong escaping would damage.
TEST(InspectorTest, DumpsTheSceneThatIsServed) {
  std::string command = "tree --json";
  for (const char* name :
       {"name", "type", "tool tip", "{}", "[x,y]", "-a \"b\"\\", "Größe 𝄞\t,=", "\\"}) {
    command += Narrow(Quoted("--attr=" + std::string(name)));
  }
  for (const char* path : {TESSEL_SCENES "/login.json", TESSEL_SCENES "/orders.json",
                           TESSEL_TRANSCRIPTS "/odd.json"}) {
    // Compare parsed values, to ignore the order of fields.
    const auto scene = nlohmann::json::parse(FileText(path));
    std::string served = scene.dump();
    for (int round = 1; round <= 2; ++round) {
      const SceneFile file(served);
      SceneBroker broker(Narrow(file.path.wstring()));
      DWORD code = 0;
      std::tie(code, served) = ToolOutput(broker.InspectorLine(command));
      ASSERT_EQ(code, 0u) << served;
      const auto dumped = nlohmann::json::parse(served, nullptr, false);
      EXPECT_EQ(dumped, scene) << nlohmann::json::diff(scene, dumped).dump(2);
      ExpectAllReleased(broker);
    }
  }
}

// `tree` reads only one of these two states, to save calls.
TEST(InspectorTest, ReadsCheckedOrSelected) {
  const SceneFile file(R"({"version": 1, "address": "desk", "title": "t", "elements": [
      {"id": "l", "rect": [0, 0, 9, 9], "items": ["x"],
       "states": {"checked": true, "selected": "x", "value": "v"}}]})");
  const SceneBroker broker(Narrow(file.path.wstring()));
  for (const auto& [read, states] : std::initializer_list<std::pair<std::string, std::string>>{
           {"", R"({"selected":"x","value":"v"})"},
           {" --read states", R"({"checked":true,"value":"v"})"}}) {
    const auto [code, output] = ToolOutput(broker.InspectorLine("tree --json" + read));
    EXPECT_EQ(nlohmann::json::parse(output)["elements"][0]["states"].dump(), states) << output;
  }
}

std::ptrdiff_t CountServed(const std::string& brokerOutput) {
  const std::regex served("^served: ", std::regex::multiline);
  return std::distance(std::sregex_iterator(brokerOutput.begin(), brokerOutput.end(), served), {});
}

// Each row has options of `tree`, and the number of calls for the 8 elements of the login scene:
// one root, and one list with items. SceneBroker must be able to serve each result.
TEST(InspectorTest, MakesTheseCallsToReadATree) {
  const std::pair<std::string, std::ptrdiff_t> kCases[] = {
      {"", 62},
      {"--read parents", 22},
      {"--read attributes", 27},
      {"--read attributes --attr name", 19},
      {"--read items", 19},
      {"--read states", 27},
      {"--read items,states", 35},
  };
  for (const auto& [options, calls] : kCases) {
    SceneBroker broker(TESSEL_SCENES "/login.json");
    const auto [code, output] = ToolOutput(broker.InspectorLine("tree --json " + options));
    EXPECT_EQ(code, 0u) << output;
    EXPECT_EQ(CountServed(broker.CloseAndRead(0)), calls) << options;
    const SceneFile tree(output);
    EXPECT_EQ(SceneBroker(Narrow(tree.path.wstring())).Fact("focus"), "user") << options;
  }
}

// This process is a broker. Its element "a" contains "b", and "b" contains "c". Each row has the
// broker's answers to two searches of one level (the first in the whole content, the second below
// "a"), and the number of requests that the broker receives.
TEST(InspectorTest, AsksForParentsThatSearchesDoNotFind) {
  using Json = nlohmann::json;
  const Json all = {0, 3, "a", 0, 0, 9, 9, "b", 0, 0, 8, 8, "c", 0, 0, 7, 7};
  const std::tuple<Json, Json, int> kCases[] = {
      {{103}, {}, 11},
      {{0, 1, "a", 0, 0, 9, 9}, {103}, 12},
      {all, {}, 14},
      {{0, 2, "a", 0, 0, 9, 9, "b", 0, 0, 8, 8}, {0, 2, "b", 0, 0, 8, 8, "c", 0, 0, 7, 7}, 16},
  };
  for (const auto& [roots, belowA, count] : kCases) {
    ASSERT_EQ(InitComm(SL_TAILORED_URI, 30000, L"tools"), SL_CHANNEL_SUCCESS);
    ChildProcess tessel(TestFolder() + L"tessel.exe tree --read parents --address tools --window " +
                        Wide(tessel::HandleText(::GetDesktopWindow())));
    for (int i = 0; i < count; ++i) {
      wchar_t text[200];
      DWORD size = 200;
      ASSERT_EQ(ReadMessage(text, &size), SL_CHANNEL_SUCCESS) << i;
      const Json request = Json::parse(Narrow(text));
      const std::string id = request[2];
      Json answer = {0, true};
      if (request[0] == 14) answer = {0, ""};
      if (request[0] == 6) answer = {0, id == "a" ? "" : id == "b" ? "a" : "b"};
      if (request[0] == 9) answer = request[6] == 0 ? all : id.empty() ? roots : belowA;
      EXPECT_EQ(WriteMessage(Wide(answer.dump()).c_str()), SL_CHANNEL_SUCCESS);
    }
    EXPECT_THAT(tessel.ReadToEnd(), HasSubstr("  \"a\" [0, 0, 9, 9]\n    \"b\" [0, 0, 8, 8]\n"
                                              "      \"c\" [0, 0, 7, 7]\n"));
    EXPECT_EQ(UninitComm(), SL_CHANNEL_SUCCESS);
  }
}

// The picture of the login scene is the one in the README.
TEST(InspectorTest, DrawsThePictureOfTheReadme) {
  const SceneFile picture("the file is replaced");
  const std::string command = "tree --json --svg" + Narrow(Quoted(Narrow(picture.path.wstring())));
  SceneBroker broker(TESSEL_SCENES "/login.json");
  RunTool(broker.InspectorLine(command), 0, "\"elements\": 8\n}");
  EXPECT_EQ(FileText(picture.path), FileText(TESSEL_SOURCE "/docs/login.svg"));
  EXPECT_EQ(CountServed(broker.CloseAndRead(0)), 19);
}

TEST(InspectorTest, DrawsAnyText) {
  const SceneFile file(R"({"version": 1, "address": "desk", "title": "<&>", "elements": [
      {"id": "<b>&amp;]]>\u0001\u2028", "rect": [-3, 5, -3, 5], "attributes": {"name": "𝄞"}}]})");
  SceneBroker broker(Narrow(file.path.wstring()));
  RunTool(broker.InspectorLine("tree --svg" + Narrow(Quoted(Narrow(file.path.wstring())))), 0,
          "elements: 1\n");
  const std::string svg = FileText(file.path);
  EXPECT_THAT(svg, HasSubstr("viewBox=\"-3 5 1 1\""));
  EXPECT_THAT(svg, HasSubstr("<title>&lt;&amp;&gt;</title>"));
  EXPECT_THAT(svg, HasSubstr(R"(<title>&lt;b&gt;&amp;amp;]]&gt;\x01\u2028: 𝄞</title>)"));
}

}  // namespace

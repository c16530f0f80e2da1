// Runs the inspector as a process, as a user does, and checks its output and exit code.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "TesselHost.h"
#include "TesselSilverlight.h"
#include "support/Tools.h"

namespace {

using tessel::Narrow;
using tessel::Wide;
using testing::HasSubstr;

void ExpectAllReleased(SceneBroker& broker) {
  const std::string summary = broker.CloseAndReadSummary();
  const std::regex even("handed out: ([1-9]\\d*)\nundelivered: 0\nreleased: \\1\nstill held: 0\n");
  EXPECT_TRUE(std::regex_match(summary, even)) << summary;
}

// A transcript holds command lines, their output, and their exit code if it is not 0. PROCESS and
// WINDOW stand for the broker's process id and window, OWN and TWIN for two windows of this process
// that have the title "twins". The commands run in order, so each command sees the changes of
// earlier commands.
TEST(InspectorTest, PrintsWhatTheTranscriptsSay) {
  const std::tuple<const char*, std::string, const wchar_t*> kCases[] = {
      {"login", TESSEL_SCENES "/login.json", L""},
      {"orders", TESSEL_SCENES "/orders.json", L" --scheme https"},
      {"odd", TESSEL_TRANSCRIPTS "/odd.json", L""},
      {"desk", TESSEL_TRANSCRIPTS "/desk.json", L""},
  };
  std::map<std::string, std::string> handles;
  for (const char* name : {"OWN", "TWIN"}) {
    handles[name] = tessel::HandleText(
        ::CreateWindowW(L"STATIC", L"twins", 0, 0, 0, 9, 9, nullptr, nullptr, nullptr, 0));
  }
  for (const auto& [name, scene, options] : kCases) {
    SceneBroker broker(scene, options);
    handles["WINDOW"] = broker.Fact("window");
    // Replaces the process id only after "process", because other numbers may be equal to it.
    const std::regex process("(process\"?: )" + broker.Fact("process") + "\\b");
    std::ifstream transcript(std::string(TESSEL_TRANSCRIPTS "/inspector-") + name + ".txt");
    std::string expected, actual;
    for (std::string line; std::getline(transcript, line); expected += line + '\n') {
      if (!line.starts_with("$ tessel ")) continue;
      const std::string command =
          std::regex_replace(line.substr(9), std::regex("OWN"), handles["OWN"]);
      auto [code, output] = ToolOutput(broker.InspectorLine(command));
      for (const auto& [word, handle] : handles)
        output = std::regex_replace(output, std::regex(handle + "\\b"), word);
      output = std::regex_replace(output, process, "$1PROCESS");
      actual += line + '\n' + output;
      if (code != 0) actual += "exit " + std::to_string(code) + '\n';
    }
    EXPECT_EQ(actual, expected) << name;
    ExpectAllReleased(broker);
  }
}

// Each row has a command, its notice or "", the broker's answer, the exit code, and a part of the
// output. This process is the broker, because SceneBroker does not send the answers in the table.
// The address has no scheme, so a search asks no other broker. The window is destroyed when the
// request has arrived, so that a later injection fails.
TEST(InspectorTest, ReportsEveryKindOfAnswer) {
  const std::tuple<std::string, std::string, const wchar_t*, DWORD, std::string> kCases[] = {
      {"at 1,2 --scheme tailored",
       "tessel: waiting for the broker to find the element at 1,2 (at most 70 s)", L"[0,7]", 5,
       "-12 (SL_ARCHIVE_FAILURE)"},
      {"at 1,2", "", L"[4711]", 4, "4711 (the broker's own status)"},
      {"at 1,2", "", L"[-8]", 2, "-5 (SL_INVALID_ARGUMENT)"},  // the injection finds no window
      {"find ,,", "", L"[0,2000000000]", 5, "cannot find: "},
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
    EXPECT_EQ(WriteMessage(answer), SL_CHANNEL_SUCCESS);
    EXPECT_THAT(tessel.ReadToEnd(), HasSubstr(output));
    EXPECT_EQ(tessel.Wait(), code);
    EXPECT_EQ(UninitComm(), SL_CHANNEL_SUCCESS);
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

}  // namespace

// Tests scene files, and runs SceneBroker as a process, as a user does.
#include <gmock/gmock.h>

#include <climits>
#include <random>

#include "TesselHost.h"
#include "support/Tools.h"
#include "tessel/Client.h"
#include "tools/scenebroker/SceneMap.h"
#include "tools/scenebroker/SceneReader.h"

namespace {

using testing::HasSubstr;

// Each line of refused-scenes.txt is a scene and a part of the expected message. In a scene, ^
// stands for a line break and ~ for a byte that UTF-8 never has.
TEST(SceneFileTest, IsRefusedWithPlaceAndSolution) {
  const std::string cases = FileText(TESSEL_TRANSCRIPTS "/refused-scenes.txt");
  EXPECT_NE(cases, "");
  for (const std::string& line : Split(cases, "\n")) {
    auto [scene, message] = Cut(line, " -> ");
    std::ranges::replace(scene, '^', '\n');
    std::ranges::replace(scene, '~', '\xff');
    const SceneFile file(scene);
    const auto place = HasSubstr(tessel::Narrow(file.path.wstring()) + ": " + message);
    EXPECT_THAT([&] { ReadSceneFile(file.path.wstring()); },
                testing::ThrowsMessage<std::exception>(testing::AllOf(place, HasSubstr("; "))))
        << line;
  }
}

TEST(SceneBrokerTest, SaysHowToSolveAnError) {
  const std::string orders = TESSEL_SCENES "/orders.json";
  const SceneBroker running(orders);
  const std::wstring start = L"SceneBroker.exe" + Quoted(orders);
  RunTool(start + L" --scheme ftp", 2, "ftp not in {tailored,http,https,file}");
  RunTool(start + L" --additional-windows 11", 2, "11 not in range 0 to 10");
  RunTool(L"SceneBroker.exe no.json", 1, "no.json: cannot read the file; check the path");
  RunTool(start, 1,
          "another program serves it; tessel doctor names it; end that program, or choose another "
          "--scheme");
  RunTool(start + L" --dll kernel32.dll", 1, "has no InitComm; name TesselSLB_x64.dll with --dll");
  RunTool(start + L" --dll nothing.dll", 1, "cannot load nothing.dll (error 126); put it beside");
}

TEST(SceneMapTest, FindsTheSameElementAsALinearSearch) {
  std::mt19937 random(7);
  const auto number = [&](int bound) { return static_cast<LONG>(random() % bound); };
  for (const int size : {0, 1, 40, 400}) {
    Scene scene;
    for (int i = 0; i <= size; ++i) {
      const LONG left = number(300) - 150, top = number(300) - 150;
      const LONG width = number(i % 7 == 0 ? 200 : 30);
      SceneElement element;
      element.id = std::to_string(i);
      element.rect = {left, top, left + width, top + number(90)};
      if (i == size) element.rect = {LONG_MIN, 3, LONG_MIN + 2, LONG_MAX};
      scene.Add(element);
    }
    const SceneMap map(scene.Elements());
    for (LONG x : {LONG_MIN, LONG_MIN + 1, LONG_MIN + 2, LONG_MAX, -151L, 0L, 17L, 60L, 230L}) {
      for (LONG y = -160; y < 250; ++y) {
        const SceneElement* expected = nullptr;
        for (const SceneElement& element : scene.Elements()) {
          if (element.Contains({x, y})) expected = &element;
        }
        EXPECT_EQ(map.At({x, y}), expected) << size << " elements, at " << x << ',' << y;
      }
    }
  }
}

// A transcript holds each request with its answer, followed by the lines that the broker prints for
// its additional windows. After an empty line it holds the summary. '?' stands for the broker's
// process id.
TEST(SceneBrokerTest, AnswersAsTheTranscriptsSay) {
  const std::tuple<const char*, std::string, const wchar_t*> kCases[] = {
      {"orders", TESSEL_SCENES "/orders.json", L" --scheme file"},
      {"login", TESSEL_SCENES "/login.json", L" --additional-windows 2"},
      {"tree", TESSEL_TRANSCRIPTS "/tree.json", L""},
  };
  for (const auto& [name, scene, options] : kCases) {
    SCOPED_TRACE(name);
    SceneBroker broker(scene, options);
    std::ifstream transcript(std::string(TESSEL_TRANSCRIPTS "/") + name + ".txt");
    for (std::string line; std::getline(transcript, line) && !line.empty();) {
      if (const auto [request, answer] = Cut(line, " -> "); !answer.empty()) {
        EXPECT_EQ(broker.Ask(request), answer) << line;
        line = tessel::Printable("served: " + broker.Request(line));
      }
      EXPECT_EQ(broker.ReadLine(), line);
    }
    const std::string summary(std::istreambuf_iterator<char>(transcript), {});
    EXPECT_EQ(broker.CloseAndReadSummary(), summary);
  }
}

// In each round, `content` finds elements and releases them all. Then `client` asks for three
// elements and disconnects without reading the answer, so these objects count as undelivered.
TEST(SceneBrokerTest, CountsTheObjectsThatClientsHold) {
  SceneBroker broker(TESSEL_SCENES "/login.json");
  tessel::Content content(tools::HandleFromText(broker.Fact("window")),
                          tessel::Wide(broker.Fact("address")));
  for (int round = 0; round < 5; ++round) {
    for (tessel::Element& element : content.Find({})) {
      element = std::move(element.Selector().back());
      (void)element.Ancestors();
      (void)element.Parent();
      (void)content.Focused();
    }
    RawClient client(tessel::Wide(broker.Fact("pipe")));
    // Sends a request and waits until the broker has printed it. The module never writes a space
    // before "user", so no other request looks the same.
    client.Send(tessel::Wide(broker.Request(R"([8,?, "user"])")));
    while (broker.ReadLine().find(", \"user\"] -> ") == std::string::npos)
      ASSERT_EQ(broker.Wait(0), STILL_ACTIVE);
  }
  const std::regex form("handed out: (\\d+)\nundelivered: 15\nreleased: (\\d+)\nstill held: 0\n");
  const std::string summary = broker.CloseAndReadSummary();
  std::smatch counts;
  ASSERT_TRUE(std::regex_match(summary, counts, form)) << summary;
  EXPECT_EQ(std::stoi(counts[1]), std::stoi(counts[2]) + 15) << summary;
  EXPECT_GT(std::stoi(counts[2]), 100);
}

// The test process and the broker both have an additional window with the index 1. A message that
// the test posts to its own window must not reach the broker.
TEST(SceneBrokerTest, IsNotifiedByOtherProcesses) {
  SceneBroker broker(TESSEL_SCENES "/login.json", L" --additional-windows 2");
  const std::string second = broker.Fact("additional window");
  EXPECT_TRUE(second.starts_with("#1 ")) << second;
  const HWND window = tools::HandleFromText(second.substr(3));
  wchar_t name[100] = {};
  ::GetClassNameW(window, name, 100);
  EXPECT_EQ(name, L"SL_Additional_Wnd_Class_pid" + tessel::Wide(broker.Fact("process")) + L"_");
  ASSERT_NE(AdditionalWindow_Create(1), nullptr);
  EXPECT_TRUE(AdditionalWindow_PostMessage(1, WM_APP + 5, 0, 0));
  // The broker ignores messages outside the WM_APP range.
  for (const UINT message : {WM_APP - 1u, WM_APP + 7u, 0xC000u, WM_APP + 0x3FFFu}) {
    ::PostMessageW(window, message, 0, 0);
  }
  EXPECT_EQ(broker.ReadLine(), "notified: #1 command 7");
  EXPECT_EQ(broker.ReadLine(), "notified: #1 command 16383");
  EXPECT_TRUE(AdditionalWindow_Destroy(1));
}

}  // namespace
